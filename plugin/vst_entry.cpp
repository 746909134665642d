// The module's exported entry points. A host loads the module and calls VSTPluginMain once per
// instance it wants; GetPluginFactory exists for hosts that probe for a VST3 factory, and
// answers that there is none.
#include <memory>
#include <mutex>
#include <new>

#include "plugin/instance_lock.h"
#include "plugin/vst_test.h"
#if defined(_WIN32)
#include "editor/win32/vst_test_editor.h"
#endif

VST_EXPORT vst2::AEffect* VSTPluginMain(vst2::AudioMasterCallback audioMaster) {
  if (audioMaster == nullptr) return nullptr;
  if (audioMaster(nullptr, vst2::audioMasterVersion, 0, 0, nullptr, 0.0f) == 0) return nullptr;

  std::lock_guard<std::mutex> lock(ziv::instanceLock());
  std::unique_ptr<ziv::SynthEngine> engine(new (std::nothrow) ziv::SynthEngine);
  if (!engine) return nullptr;
  ziv::VstTest* instance = new (std::nothrow) ziv::VstTest(audioMaster, std::move(engine));
  if (instance == nullptr) return nullptr;
#if defined(_WIN32)
  // Only the Windows plug-in draws an editor; elsewhere hosts show their generic controls.
  instance->attachEditor(
      std::unique_ptr<ziv::PluginEditor>(new (std::nothrow) ziv::VstTestEditor(*instance)));
#endif
  return instance->getAeffect();
}

VST_EXPORT void* GetPluginFactory() { return nullptr; }
