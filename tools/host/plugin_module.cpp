// Module loading for both platforms. Windows paths arrive as UTF-8 and are widened so that the
// host can load plug-ins from folders with non-ASCII names.
#include "tools/host/plugin_module.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace vrnhost {

namespace {

#if defined(_WIN32)
std::string lastSystemError() {
  char text[512] = {};
  DWORD code = GetLastError();
  DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0,
                                text, sizeof(text), nullptr);
  std::string message(text, length);
  while (!message.empty() && (message.back() == '\n' || message.back() == '\r' || message.back() == '.')) {
    message.pop_back();
  }
  return message.empty() ? "system error " + std::to_string(code) : message;
}
#endif

}  // namespace

PluginModule::~PluginModule() { unload(); }

bool PluginModule::load(const std::string& path, std::string& error) {
  unload();
#if defined(_WIN32)
  int wideLength = MultiByteToWideChar(CP_UTF8, 0, path.c_str(), -1, nullptr, 0);
  std::wstring widePath(wideLength > 0 ? wideLength : 1, L'\0');
  MultiByteToWideChar(CP_UTF8, 0, path.c_str(), -1, widePath.data(), wideLength);
  HMODULE module = LoadLibraryW(widePath.c_str());
  if (!module) {
    error = "cannot load '" + path + "': " + lastSystemError();
    return false;
  }
  handle_ = module;
  FARPROC symbol = GetProcAddress(module, "VSTPluginMain");
  if (!symbol) symbol = GetProcAddress(module, "main");
  entry_ = reinterpret_cast<vst2::PluginEntryProc>(reinterpret_cast<void*>(symbol));
#else
  // RTLD_LOCAL keeps the plug-in's symbols out of the host's namespace, as a DAW loads them.
  handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!handle_) {
    const char* reason = dlerror();
    error = "cannot load '" + path + "': " + (reason ? reason : "unknown reason");
    return false;
  }
  void* symbol = dlsym(handle_, "VSTPluginMain");
  if (!symbol) symbol = dlsym(handle_, "main");
  entry_ = reinterpret_cast<vst2::PluginEntryProc>(symbol);
#endif
  if (!entry_) {
    error = "'" + path + "' is not a VST 2.4 plug-in (no VSTPluginMain)";
    unload();
    return false;
  }
  return true;
}

void PluginModule::unload() {
  if (!handle_) return;
#if defined(_WIN32)
  FreeLibrary(static_cast<HMODULE>(handle_));
#else
  dlclose(handle_);
#endif
  handle_ = nullptr;
  entry_ = nullptr;
}

}  // namespace vrnhost
