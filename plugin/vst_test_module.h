// The plug-in's module base: a VST 2.4 effect that owns a synth engine, answers the host's
// parameter questions from the engine's table, and hears every parameter change the engine
// reports. Both host bindings drive the instance through these operations.
//
// Threads: the parameter operations may be called from any thread (the host's and the
// editor's); they only store and read the engine's atomic values.
#pragma once

#include <memory>

#include "engine/machine_listener.h"
#include "engine/synth_engine.h"
#include "sdk/vst2/audio_effect.h"

namespace ziv {

class VstTestModule : public vst2::AudioEffectX, private MachineListener {
 public:
  VstTestModule(vst2::AudioMasterCallback audioMaster, int numPrograms, std::unique_ptr<SynthEngine> engine);
  ~VstTestModule() override;

  SynthEngine& engine() { return *engine_; }

  void setParameter(vst2::VstInt32 index, float value) override;
  float getParameter(vst2::VstInt32 index) override;
  void getParameterName(vst2::VstInt32 index, char* text) override;
  void getParameterDisplay(vst2::VstInt32 index, char* text) override;
  void getParameterLabel(vst2::VstInt32 index, char* label) override;
  bool canParameterBeAutomated(vst2::VstInt32 index) override;

 protected:
  bool isHostParameter(vst2::VstInt32 index) const { return index >= 0 && index < engine_->parameterCount(); }

 private:
  std::unique_ptr<SynthEngine> engine_;
};

}  // namespace ziv
