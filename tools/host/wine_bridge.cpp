// Process handling for the wine path. The child's stdout is a pipe read line by line (progress
// arrives while it renders); its stderr goes to a file, whose last line becomes our error message
// if it fails, so wine's own chatter never reaches the user on success.
#include "tools/host/wine_bridge.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <ostream>
#include <sstream>

extern char** environ;

namespace vrnhost {

namespace {

bool isRegularFile(const std::string& path) {
  struct stat info {};
  return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

std::string directoryOf(const std::string& path) {
  std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

// Removes the temporary folder and its files when the run is over, however it ends.
class TempFolder {
 public:
  TempFolder() {
    const char* base = std::getenv("TMPDIR");
    std::string pattern = std::string(base && *base ? base : "/tmp") + "/vrnhost.XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    if (mkdtemp(buffer.data())) path_ = buffer.data();
  }
  ~TempFolder() {
    if (path_.empty()) return;
    for (const char* name : {"job.txt", "out.raw", "stderr.txt", "script.txt"}) {
      std::remove((path_ + "/" + name).c_str());
    }
    rmdir(path_.c_str());
  }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

std::string lastNonEmptyLine(const std::string& path) {
  std::ifstream in(path);
  std::string line, last;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.find_first_not_of(" \t") != std::string::npos) last = line;
  }
  return last;
}

}  // namespace

std::string toWineDrivePath(const std::string& absolutePath) {
  std::string path = "Z:" + absolutePath;
  for (char& c : path) {
    if (c == '/') c = '\\';
  }
  return path;
}

std::string locateWindowsHost(const std::string& option, const std::string& pluginPath, std::string& error) {
  std::string candidate = option.empty() ? directoryOf(pluginPath) + "/vrnhost.exe" : option;
  if (!isRegularFile(candidate)) {
    struct stat info {};
    if (stat(candidate.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) candidate += "/vrnhost.exe";
  }
  if (!isRegularFile(candidate)) {
    error = "Windows host '" + candidate + "' not found (build it with the mingw toolchain or pass --win-host)";
    return "";
  }
  return candidate;
}

namespace {

// Runs `wine windowsHost args...`, handing each stdout line (without its end) to onLine. Its
// stderr goes to errPath; a failure's last line there becomes the error.
bool runWindowsHost(const WineSettings& settings, const std::vector<std::string>& hostArgs,
                    const std::string& errPath, const std::function<void(const std::string&)>& onLine,
                    std::string& error) {
  // Quiet wine unless the user asked for its debug channels, and keep a fresh prefix from trying
  // to install .NET and HTML engines, which the host never needs.
  setenv("WINEDEBUG", "-all", 0);
  setenv("WINEDLLOVERRIDES", "mscoree,mshtml=", 0);

  int pipeEnds[2];
  if (pipe(pipeEnds) != 0) {
    error = "cannot create a pipe";
    return false;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addclose(&actions, pipeEnds[0]);
  posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], STDOUT_FILENO);
  posix_spawn_file_actions_addclose(&actions, pipeEnds[1]);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                   0600);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);

  std::vector<std::string> args = {settings.wine, settings.windowsHost};
  args.insert(args.end(), hostArgs.begin(), hostArgs.end());
  std::vector<char*> argv;
  for (std::string& arg : args) argv.push_back(arg.data());
  argv.push_back(nullptr);
  pid_t child = 0;
  int spawnError = posix_spawnp(&child, settings.wine.c_str(), &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(pipeEnds[1]);
  if (spawnError != 0) {
    close(pipeEnds[0]);
    error = "cannot run '" + settings.wine + "': " + std::strerror(spawnError);
    return false;
  }

  FILE* lines = fdopen(pipeEnds[0], "r");
  // Lines may be long (a saved bank is one line of about 94 000 hexadecimal digits).
  char* buffer = nullptr;
  std::size_t capacity = 0;
  while (getline(&buffer, &capacity, lines) >= 0) {
    std::string line(buffer);
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
    onLine(line);
  }
  std::free(buffer);
  std::fclose(lines);
  int status = 0;
  waitpid(child, &status, 0);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    std::string reason = lastNonEmptyLine(errPath);
    if (reason.empty()) {
      reason =
          WIFEXITED(status) ? "exit status " + std::to_string(WEXITSTATUS(status)) : "killed by a signal";
    }
    // The Windows host words its own failures like ours ("error: ..."); anything else came from
    // wine or a crash and is labelled as such.
    const std::string kPrefix = "error: ";
    error = reason.compare(0, kPrefix.size(), kPrefix) == 0 ? reason.substr(kPrefix.size())
                                                            : "Windows host failed: " + reason;
    return false;
  }
  return true;
}

}  // namespace

bool runJobUnderWine(const RenderJob& job, const WineSettings& settings, RenderResult& result,
                     std::string& error, const ProgressFn& progress) {
  TempFolder temp;
  if (temp.path().empty()) {
    error = "cannot create a temporary folder";
    return false;
  }
  const std::string jobPath = temp.path() + "/job.txt";
  const std::string rawPath = temp.path() + "/out.raw";
  {
    RenderJob windowsJob = job;
    windowsJob.pluginPath = toWineDrivePath(job.pluginPath);
    std::ofstream out(jobPath);
    writeJob(windowsJob, out);
    if (!out) {
      error = "cannot write '" + jobPath + "'";
      return false;
    }
  }

  result = RenderResult{};
  auto onLine = [&](const std::string& line) {
    long long done = 0, total = 0;
    if (std::sscanf(line.c_str(), "progress %lld %lld", &done, &total) == 2) {
      if (progress) progress(done, total);
    } else {
      readResultLine(line, result);
    }
  };
  if (!runWindowsHost(settings,
                      {"--job", toWineDrivePath(jobPath), "--raw", toWineDrivePath(rawPath), "--progress"},
                      temp.path() + "/stderr.txt", onLine, error)) {
    return false;
  }

  if (job.frames > 0) {
    std::ifstream raw(rawPath, std::ios::binary);
    result.samples.assign(static_cast<std::size_t>(job.frames) * 2, 0.0f);
    raw.read(reinterpret_cast<char*>(result.samples.data()),
             static_cast<std::streamsize>(result.samples.size() * sizeof(float)));
    if (!raw || raw.peek() != std::char_traits<char>::eof() || result.frames != job.frames) {
      error = "Windows host returned " + std::to_string(result.frames) + " frames instead of " +
              std::to_string(job.frames);
      return false;
    }
  }
  return true;
}

bool runEditorUnderWine(const std::string& pluginPath, const std::string& script,
                        const WineSettings& settings, std::ostream& out, std::string& error) {
  TempFolder temp;
  if (temp.path().empty()) {
    error = "cannot create a temporary folder";
    return false;
  }
  const std::string scriptPath = temp.path() + "/script.txt";
  {
    std::ofstream scriptFile(scriptPath);
    scriptFile << script;
    if (!scriptFile) {
      error = "cannot write '" + scriptPath + "'";
      return false;
    }
  }
  auto onLine = [&out](const std::string& line) { out << line << std::endl; };
  return runWindowsHost(settings, {"--editor", toWineDrivePath(scriptPath), toWineDrivePath(pluginPath)},
                        temp.path() + "/stderr.txt", onLine, error);
}

}  // namespace vrnhost
