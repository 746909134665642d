#include "sdk/vst2/audio_effect.h"

#include <cstring>

namespace vst2 {
namespace {

AudioEffect* effectOf(AEffect* e) { return e != nullptr ? static_cast<AudioEffect*>(e->object) : nullptr; }

// These four are the C boundary: an exception must never reach the host, which would die of it.
// Whatever escapes a call is dropped and the call answers as an unsupported one (0, nothing done).

VstIntPtr VST_CALLBACK dispatchEffect(AEffect* e, VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr,
                                      float opt) {
  AudioEffect* effect = effectOf(e);
  if (effect == nullptr) return 0;
  if (opcode == effClose) {
    // The host is done with the instance: it deletes itself, as VST 2.4 prescribes.
    try {
      effect->dispatcher(opcode, index, value, ptr, opt);
    } catch (...) {
    }
    delete effect;
    return 1;
  }
  try {
    return effect->dispatcher(opcode, index, value, ptr, opt);
  } catch (...) {
    return 0;
  }
}

void VST_CALLBACK processReplacingEffect(AEffect* e, float** inputs, float** outputs, VstInt32 frames) {
  AudioEffect* effect = effectOf(e);
  if (effect == nullptr) return;
  try {
    effect->processReplacing(inputs, outputs, frames);
  } catch (...) {
  }
}

void VST_CALLBACK setParameterEffect(AEffect* e, VstInt32 index, float value) {
  AudioEffect* effect = effectOf(e);
  if (effect == nullptr) return;
  try {
    effect->setParameter(index, value);
  } catch (...) {
  }
}

float VST_CALLBACK getParameterEffect(AEffect* e, VstInt32 index) {
  AudioEffect* effect = effectOf(e);
  if (effect == nullptr) return 0.0f;
  try {
    return effect->getParameter(index);
  } catch (...) {
    return 0.0f;
  }
}

}  // namespace

void copyString(char* destination, const char* source, std::size_t capacity) {
  if (destination == nullptr || capacity == 0) return;
  if (source == nullptr) source = "";
  std::size_t length = std::strlen(source);
  if (length > capacity - 1) length = capacity - 1;
  std::memcpy(destination, source, length);
  destination[length] = '\0';
}

AudioEffect::AudioEffect(AudioMasterCallback audioMaster, VstInt32 numPrograms, VstInt32 numParams)
    : audioMaster_(audioMaster), numPrograms_(numPrograms), numParams_(numParams) {
  std::memset(&cEffect_, 0, sizeof(cEffect_));
  cEffect_.magic = kEffectMagic;
  cEffect_.dispatcher = dispatchEffect;
  // Hosts old enough to call the accumulating process get the replacing one.
  cEffect_.process = processReplacingEffect;
  cEffect_.setParameter = setParameterEffect;
  cEffect_.getParameter = getParameterEffect;
  cEffect_.numPrograms = numPrograms;
  cEffect_.numParams = numParams;
  cEffect_.numInputs = 1;
  cEffect_.numOutputs = 2;
  cEffect_.ioRatio = 1.0f;
  cEffect_.object = this;
  cEffect_.uniqueID = fourCharCode('N', 'o', 'E', 'f');
  cEffect_.version = 1;
  cEffect_.processReplacing = processReplacingEffect;
}

AudioEffect::~AudioEffect() { delete editor_; }

void AudioEffect::setEditor(AEffEditor* editor) {
  delete editor_;
  editor_ = editor;
  setFlag(effFlagsHasEditor, editor != nullptr);
}

void AudioEffect::setFlag(VstInt32 flag, bool state) {
  if (state) {
    cEffect_.flags |= flag;
  } else {
    cEffect_.flags &= ~flag;
  }
}

VstIntPtr AudioEffect::callHost(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt) {
  return audioMaster_ != nullptr ? audioMaster_(&cEffect_, opcode, index, value, ptr, opt) : 0;
}

VstInt32 AudioEffect::getMasterVersion() {
  const VstIntPtr version = callHost(audioMasterVersion);
  return version != 0 ? static_cast<VstInt32>(version) : 0;
}

void AudioEffect::setParameterAutomated(VstInt32 index, float value) {
  setParameter(index, value);
  callHost(audioMasterAutomate, index, 0, nullptr, value);
}

void AudioEffect::getParameterLabel(VstInt32 index, char* label) {
  (void)index;
  copyString(label, "", kVstMaxParamStrLen + 1);
}

void AudioEffect::getParameterDisplay(VstInt32 index, char* text) {
  (void)index;
  copyString(text, "", kVstMaxParamStrLen + 1);
}

void AudioEffect::getParameterName(VstInt32 index, char* text) {
  (void)index;
  copyString(text, "", kVstMaxParamStrLen + 1);
}

VstIntPtr AudioEffect::dispatcher(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt) {
  char* text = static_cast<char*>(ptr);
  switch (opcode) {
    case effOpen:
      open();
      return 0;
    case effClose:
      close();
      return 0;
    case effSetProgram:
      setProgram(static_cast<VstInt32>(value));
      return 0;
    case effGetProgram:
      return getProgram();
    case effSetProgramName:
      if (text != nullptr) setProgramName(text);
      return 0;
    case effGetProgramName:
      if (text != nullptr) getProgramName(text);
      return 0;
    case effGetParamLabel:
      if (text != nullptr) getParameterLabel(index, text);
      return 0;
    case effGetParamDisplay:
      if (text != nullptr) getParameterDisplay(index, text);
      return 0;
    case effGetParamName:
      if (text != nullptr) getParameterName(index, text);
      return 0;
    case effSetSampleRate:
      setSampleRate(opt);
      return 0;
    case effSetBlockSize:
      setBlockSize(static_cast<VstInt32>(value));
      return 0;
    case effMainsChanged:
      if (value != 0) {
        resume();
      } else {
        suspend();
      }
      return 0;
    case effEditGetRect:
      if (editor_ == nullptr || ptr == nullptr) return 0;
      return editor_->getRect(static_cast<ERect**>(ptr)) ? 1 : 0;
    case effEditOpen:
      return editor_ != nullptr && editor_->open(ptr) ? 1 : 0;
    case effEditClose:
      if (editor_ != nullptr) editor_->close();
      return 0;
    case effEditIdle:
      if (editor_ != nullptr) editor_->idle();
      return 0;
    case effGetChunk:
      if (ptr == nullptr) return 0;
      return getChunk(static_cast<void**>(ptr), index != 0);
    case effSetChunk:
      return setChunk(ptr, static_cast<VstInt32>(value), index != 0);
    default:
      return 0;
  }
}

AudioEffectX::AudioEffectX(AudioMasterCallback audioMaster, VstInt32 numPrograms, VstInt32 numParams)
    : AudioEffect(audioMaster, numPrograms, numParams) {}

bool AudioEffectX::getOutputProperties(VstInt32 index, VstPinProperties* properties) {
  (void)index;
  (void)properties;
  return false;
}

VstPlugCategory AudioEffectX::getPlugCategory() {
  return (cEffect_.flags & effFlagsIsSynth) != 0 ? kPlugCategSynth : kPlugCategUnknown;
}

VstIntPtr AudioEffectX::dispatcher(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt) {
  char* text = static_cast<char*>(ptr);
  switch (opcode) {
    case effProcessEvents:
      return ptr != nullptr ? processEvents(static_cast<VstEvents*>(ptr)) : 0;
    case effCanBeAutomated:
      return canParameterBeAutomated(index) ? 1 : 0;
    case effGetProgramNameIndexed:
      return getProgramNameIndexed(static_cast<VstInt32>(value), index, text) ? 1 : 0;
    case effGetOutputProperties:
      return ptr != nullptr && getOutputProperties(index, static_cast<VstPinProperties*>(ptr)) ? 1 : 0;
    case effGetPlugCategory:
      return getPlugCategory();
    case effGetEffectName:
      return getEffectName(text) ? 1 : 0;
    case effGetVendorString:
      return getVendorString(text) ? 1 : 0;
    case effGetProductString:
      return getProductString(text) ? 1 : 0;
    case effGetVendorVersion:
      return getVendorVersion();
    case effVendorSpecific:
      return vendorSpecific(index, value, ptr, opt);
    case effCanDo:
      return text != nullptr ? canDo(text) : 0;
    case effGetTailSize:
      return getGetTailSize();
    case effGetCurrentMidiProgram:
      return getCurrentMidiProgram(index, ptr);
    case effGetVstVersion:
      return getVstVersion();
    case effBeginSetProgram:
      return beginSetProgram() ? 1 : 0;
    case effEndSetProgram:
      return endSetProgram() ? 1 : 0;
    case effStartProcess:
      return startProcess();
    case effStopProcess:
      return stopProcess();
    default:
      return AudioEffect::dispatcher(opcode, index, value, ptr, opt);
  }
}

VstTimeInfo* AudioEffectX::getTimeInfo(VstInt32 filter) {
  return reinterpret_cast<VstTimeInfo*>(callHost(audioMasterGetTime, 0, filter));
}

bool AudioEffectX::ioChanged() { return callHost(audioMasterIOChanged) != 0; }

bool AudioEffectX::updateDisplay() { return callHost(audioMasterUpdateDisplay) != 0; }

bool AudioEffectX::beginEdit(VstInt32 index) { return callHost(audioMasterBeginEdit, index) != 0; }

bool AudioEffectX::endEdit(VstInt32 index) { return callHost(audioMasterEndEdit, index) != 0; }

}  // namespace vst2
