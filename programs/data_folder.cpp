#include "programs/data_folder.h"

#include <cstdlib>

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#include <shlobj.h>
#include <windows.h>
#else
#include <dirent.h>
#include <sys/stat.h>
#endif

namespace ziv {
namespace {

constexpr const char* kDataFolderName = "/quorvantis";
constexpr const char* kSettingsFileName = "/Vrn ZIV.cfg";
constexpr const char* kFactoryPresetSuffix = "/presets/Vrn1/Factory Presets";

bool isSeparator(char c) {
  return c == '/' || c == '\\';
}

#ifdef _WIN32

// The ProgramData known folder in the ANSI code page, or empty.
std::string platformDataRoot() {
  PWSTR wide = nullptr;
  std::string root;
  if (SUCCEEDED(SHGetKnownFolderPath(FOLDERID_ProgramData, KF_FLAG_CREATE | KF_FLAG_INIT, nullptr, &wide))) {
    const int length = WideCharToMultiByte(CP_ACP, 0, wide, -1, nullptr, 0, nullptr, nullptr);
    if (length > 1) {
      root.resize(static_cast<std::size_t>(length));
      WideCharToMultiByte(CP_ACP, 0, wide, -1, root.data(), length, nullptr, nullptr);
      root.resize(static_cast<std::size_t>(length - 1));
    }
  }
  CoTaskMemFree(wide);
  return root;
}

void makeFolder(const std::string& path) {
  CreateDirectoryA(path.c_str(), nullptr);
}

#else

// $XDG_DATA_HOME, or $HOME/.local/share when that is unset or not absolute; empty without either.
std::string platformDataRoot() {
  const char* xdg = std::getenv("XDG_DATA_HOME");
  if (xdg != nullptr && xdg[0] == '/') return xdg;
  const char* home = std::getenv("HOME");
  if (home != nullptr && home[0] == '/') return std::string(home) + "/.local/share";
  return {};
}

void makeFolder(const std::string& path) {
  mkdir(path.c_str(), 0755);
}

#endif

// Creates every missing folder along `path`; failures (a folder that exists, a drive name, no
// rights) are left to the file calls that follow, which then fail quietly.
void makeFolders(const std::string& path) {
  for (std::size_t i = 1; i <= path.size(); ++i) {
    if (i == path.size() || isSeparator(path[i])) makeFolder(path.substr(0, i));
  }
}

std::string inDataFolder(const char* suffix) {
  return dataFolder().empty() ? std::string() : dataFolder() + suffix;
}

}  // namespace

const std::string& dataFolder() {
  static const std::string folder = [] {
    const std::string root = platformDataRoot();
    if (root.empty()) return std::string();
    std::string path = root + kDataFolderName;
    // Made here so that the first learned controller can be written on a fresh machine.
    makeFolders(path);
    return path;
  }();
  return folder;
}

const std::string& settingsFilePath() {
  static const std::string path = inDataFolder(kSettingsFileName);
  return path;
}

const std::string& factoryPresetFolder() {
  static const std::string path = inDataFolder(kFactoryPresetSuffix);
  return path;
}

std::vector<std::string> listFolder(const std::string& path) {
  std::vector<std::string> entries;
  if (path.empty()) return entries;
#ifdef _WIN32
  WIN32_FIND_DATAA found;
  const HANDLE search = FindFirstFileA((path + "\\*").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return entries;
  do {
    entries.emplace_back(found.cFileName);
  } while (FindNextFileA(search, &found));
  FindClose(search);
#else
  DIR* folder = opendir(path.c_str());
  if (folder == nullptr) return entries;
  while (const dirent* entry = readdir(folder)) entries.emplace_back(entry->d_name);
  closedir(folder);
#endif
  return entries;
}

std::vector<std::string> factoryBankNames(const std::vector<std::string>& entries) {
  const std::string extension = kFactoryBankExtension;
  std::vector<std::string> names;
  for (const std::string& entry : entries) {
    if (entry.size() >= extension.size() &&
        entry.compare(entry.size() - extension.size(), extension.size(), extension) == 0) {
      names.push_back(entry.substr(0, entry.size() - extension.size()));
    }
  }
  return names;
}

}  // namespace ziv
