// A loaded plug-in module file and its VST 2.4 entry point. This is the only place where the host
// touches the operating system's module loader (dlopen on Linux, LoadLibrary on Windows); the rest
// of the host sees a function pointer.
#pragma once

#include <string>

#include "sdk/vst2/aeffect.h"

namespace vrnhost {

class PluginModule {
 public:
  PluginModule() = default;
  ~PluginModule();
  PluginModule(const PluginModule&) = delete;
  PluginModule& operator=(const PluginModule&) = delete;

  // Loads the file and looks up VSTPluginMain (or the older "main" alias). On failure returns false
  // and leaves a one-line reason in error.
  bool load(const std::string& path, std::string& error);
  void unload();

  vst2::PluginEntryProc entry() const { return entry_; }

 private:
  void* handle_ = nullptr;
  vst2::PluginEntryProc entry_ = nullptr;
};

}  // namespace vrnhost
