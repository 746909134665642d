// vrnhost.exe, the Windows host: renders one job file through a Windows plug-in and writes the
// samples as raw interleaved 32-bit floats, or (with --editor) plays an editor script against the
// plug-in's editor. It is started by the Linux vrnhost under wine, which keeps the file formats;
// stdout carries result lines (and progress with --progress) or the editor script's report,
// stderr ends with "error: ..." when the job fails.
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "tools/host/editor_script.h"
#include "tools/host/editor_session.h"
#include "tools/host/render_job.h"
#include "tools/host/render_session.h"

namespace {

constexpr char kUsage[] =
    "usage: vrnhost.exe --job FILE --raw FILE [--progress]\n"
    "       vrnhost.exe --editor SCRIPT PLUGIN\n";

int fail(const std::string& message) {
  std::fprintf(stderr, "error: %s\n", message.c_str());
  return 1;
}

int runEditor(const std::string& scriptPath, const std::string& pluginPath) {
  std::ifstream scriptFile(scriptPath);
  if (!scriptFile) return fail("cannot read script '" + scriptPath + "'");
  std::vector<vrnhost::EditorStep> steps;
  std::string error;
  if (!vrnhost::parseEditorScript(scriptFile, steps, error)) return fail(error);
  const bool ok = vrnhost::runEditorScript(pluginPath, steps, std::cout, error);
  std::cout.flush();
  return ok ? 0 : fail(error);
}

}  // namespace

int main(int argc, char** argv) {
  std::string jobPath, rawPath, scriptPath, pluginPath;
  bool reportProgress = false;
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    if (arg == "--editor" && i + 2 < argc) {
      scriptPath = argv[++i];
      pluginPath = argv[++i];
    } else if ((arg == "--job" || arg == "--raw") && i + 1 < argc) {
      (arg == "--job" ? jobPath : rawPath) = argv[++i];
    } else if (arg == "--progress") {
      reportProgress = true;
    } else if (arg == "--help" || arg == "-h") {
      std::fputs(kUsage, stdout);
      return 0;
    } else {
      return fail("unknown argument '" + arg + "'");
    }
  }
  if (!scriptPath.empty()) return runEditor(scriptPath, pluginPath);
  if (jobPath.empty() || rawPath.empty()) return fail("both --job and --raw are needed");

  vrnhost::RenderJob job;
  std::string error;
  std::ifstream jobFile(jobPath);
  if (!jobFile) return fail("cannot read job '" + jobPath + "'");
  if (!vrnhost::readJob(jobFile, job, error)) return fail(error);

  // Progress goes out at most five times a second; the reader turns it into its own display.
  auto lastReport = std::chrono::steady_clock::now();
  vrnhost::ProgressFn progress = [&](std::int64_t done, std::int64_t total) {
    auto now = std::chrono::steady_clock::now();
    if (now - lastReport < std::chrono::milliseconds(200) && done < total) return;
    lastReport = now;
    std::printf("progress %lld %lld\n", static_cast<long long>(done), static_cast<long long>(total));
    std::fflush(stdout);
  };

  vrnhost::RenderResult result;
  if (!vrnhost::runRenderJob(job, result, error, reportProgress ? progress : vrnhost::ProgressFn{})) {
    return fail(error);
  }

  FILE* raw = std::fopen(rawPath.c_str(), "wb");
  if (!raw) return fail("cannot write '" + rawPath + "'");
  std::size_t written = std::fwrite(result.samples.data(), sizeof(float), result.samples.size(), raw);
  if (std::fclose(raw) != 0 || written != result.samples.size()) return fail("cannot write '" + rawPath + "'");

  vrnhost::writeResultText(result, std::cout);
  std::cout.flush();
  return 0;
}
