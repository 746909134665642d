#include "plugin/vst_test_module.h"

#include "plugin/parameter_display.h"

namespace ziv {

VstTestModule::VstTestModule(vst2::AudioMasterCallback audioMaster, int numPrograms,
                             std::unique_ptr<SynthEngine> engine)
    : AudioEffectX(audioMaster, numPrograms, engine->parameterCount()), engine_(std::move(engine)) {
  engine_->setListener(this);
}

VstTestModule::~VstTestModule() { engine_->setListener(nullptr); }

void VstTestModule::setParameter(vst2::VstInt32 index, float value) {
  if (isHostParameter(index)) engine_->setParameter(index, value, false);
}

float VstTestModule::getParameter(vst2::VstInt32 index) {
  return isHostParameter(index) ? engine_->parameter(index).baseValue() : 0.0f;
}

void VstTestModule::getParameterName(vst2::VstInt32 index, char* text) {
  if (text == nullptr || !isHostParameter(index)) return;
  vst2::copyString(text, engine_->parameter(index).info->name, kParamTextCapacity);
}

void VstTestModule::getParameterDisplay(vst2::VstInt32 index, char* text) {
  if (text == nullptr || !isHostParameter(index)) return;
  engine_->parameterDisplay(index, text, kParamTextCapacity);
}

void VstTestModule::getParameterLabel(vst2::VstInt32 index, char* label) {
  (void)index;
  vst2::copyString(label, "", kParamTextCapacity);
}

bool VstTestModule::canParameterBeAutomated(vst2::VstInt32 index) {
  (void)index;
  return true;
}

}  // namespace ziv
