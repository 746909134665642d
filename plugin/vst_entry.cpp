// The module's exported entry points. A host loads the module and calls VSTPluginMain once per
// instance it wants; GetPluginFactory exists for hosts that probe for a VST3 factory, and
// answers that there is none.
#include <memory>
#include <mutex>

#include "plugin/instance_lock.h"
#include "plugin/vst_test.h"
#if defined(_WIN32)
#include "editor/win32/vst_test_editor.h"
#endif

VST_EXPORT vst2::AEffect* VSTPluginMain(vst2::AudioMasterCallback audioMaster) {
  if (audioMaster == nullptr) return nullptr;
  if (audioMaster(nullptr, vst2::audioMasterVersion, 0, 0, nullptr, 0.0f) == 0) return nullptr;

  // Any failure while creating (an allocation, above all) is a null instance for the host: no
  // exception crosses this boundary.
  try {
    std::lock_guard<std::mutex> lock(ziv::instanceLock());
    auto instance = std::make_unique<ziv::VstTest>(audioMaster, std::make_unique<ziv::SynthEngine>());
#if defined(_WIN32)
    // Only the Windows plug-in draws an editor; elsewhere hosts show their generic controls.
    instance->attachEditor(std::make_unique<ziv::VstTestEditor>(*instance));
#endif
    return instance.release()->getAeffect();
  } catch (...) {
    return nullptr;
  }
}

VST_EXPORT void* GetPluginFactory() { return nullptr; }
