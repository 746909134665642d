// The host side of the VST 2.4 conversation: the callback answers and the order of operations.
#include "tools/host/plugin_driver.h"

#include <algorithm>
#include <cstring>

namespace vrnhost {

namespace {

// The plug-in may call back from inside VSTPluginMain, before the host could store its own
// pointer in AEffect::user; the driver being created is found through this instead.
thread_local PluginDriver* tDriverBeingCreated = nullptr;

// Hosts hand out buffers of varying sizes for names; a generous zeroed buffer protects us from
// plug-ins that write more than the nominal 8 characters (ours writes full parameter names).
constexpr int kTextBufferSize = 256;

std::string callForText(vst2::AEffect* effect, vst2::VstInt32 opcode, vst2::VstInt32 index) {
  char text[kTextBufferSize] = {};
  effect->dispatcher(effect, opcode, index, 0, text, 0.0f);
  text[kTextBufferSize - 1] = '\0';
  return text;
}

}  // namespace

PluginDriver::~PluginDriver() { close(); }

bool PluginDriver::load(const std::string& path, std::string& error) {
  if (!module_.load(path, error)) return false;
  tDriverBeingCreated = this;
  effect_ = module_.entry()(&PluginDriver::hostCallback);
  tDriverBeingCreated = nullptr;
  if (!effect_) {
    error = "'" + path + "' created no plug-in instance";
    return false;
  }
  if (effect_->magic != vst2::kEffectMagic || !effect_->dispatcher) {
    error = "'" + path + "' returned something that is not a VST 2.4 plug-in";
    effect_ = nullptr;
    return false;
  }
  if (!effect_->processReplacing || !(effect_->flags & vst2::effFlagsCanReplacing)) {
    error = "'" + path + "' does not support processReplacing";
    close();
    return false;
  }
  if (effect_->numOutputs < 1 || effect_->numInputs < 0) {
    error = "'" + path + "' has no audio outputs";
    close();
    return false;
  }
  effect_->user = this;
  return true;
}

void PluginDriver::open(int sampleRate, int maxBlockSize) {
  sampleRate_ = sampleRate;
  maxBlockSize_ = maxBlockSize;
  // The outputs get at least two buffers so that a mono plug-in still yields a stereo pair.
  inputs_.assign(effect_->numInputs, std::vector<float>(maxBlockSize, 0.0f));
  outputs_.assign(std::max(effect_->numOutputs, 2), std::vector<float>(maxBlockSize, 0.0f));
  inputPointers_.clear();
  outputPointers_.clear();
  for (auto& buffer : inputs_) inputPointers_.push_back(buffer.data());
  for (auto& buffer : outputs_) outputPointers_.push_back(buffer.data());
  timeInfo_ = vst2::VstTimeInfo{};
  timeInfo_.sampleRate = sampleRate;
  timeInfo_.tempo = 120.0;

  dispatch(vst2::effOpen);
  opened_ = true;
  dispatch(vst2::effSetSampleRate, 0, 0, nullptr, static_cast<float>(sampleRate));
  dispatch(vst2::effSetBlockSize, 0, maxBlockSize);
}

void PluginDriver::start() {
  dispatch(vst2::effMainsChanged, 0, 1);
  dispatch(vst2::effStartProcess);
  running_ = true;
}

void PluginDriver::stop() {
  if (!running_) return;
  dispatch(vst2::effStopProcess);
  dispatch(vst2::effMainsChanged, 0, 0);
  running_ = false;
}

void PluginDriver::close() {
  if (!effect_) return;
  stop();
  // effClose makes the plug-in delete itself, whether or not effOpen was sent.
  dispatch(vst2::effClose);
  effect_ = nullptr;
  opened_ = false;
  module_.unload();
}

std::string PluginDriver::parameterName(int index) { return callForText(effect_, vst2::effGetParamName, index); }

std::string PluginDriver::parameterDisplay(int index) {
  return callForText(effect_, vst2::effGetParamDisplay, index);
}

std::string PluginDriver::effectName() { return callForText(effect_, vst2::effGetEffectName, 0); }

std::string PluginDriver::codePath() {
  // Vrn ZIV answers this vendor-specific request with 1 (baseline) or 2 (AVX2/FMA).
  constexpr vst2::VstInt32 kCodePathCode = 0x7a495341;
  switch (dispatch(vst2::effVendorSpecific, kCodePathCode)) {
    case 1:
      return "baseline";
    case 2:
      return "AVX2/FMA";
    default:
      return "";
  }
}

void PluginDriver::setParameter(int index, float value) { effect_->setParameter(effect_, index, value); }

void PluginDriver::setProgram(int index) {
  dispatch(vst2::effBeginSetProgram);
  dispatch(vst2::effSetProgram, 0, index);
  dispatch(vst2::effEndSetProgram);
}

std::string PluginDriver::programName(int index) {
  return callForText(effect_, vst2::effGetProgramNameIndexed, index);
}

int PluginDriver::currentProgram() {
  return static_cast<int>(dispatch(vst2::effGetProgram));
}

std::string PluginDriver::currentProgramName() {
  return callForText(effect_, vst2::effGetProgramName, 0);
}

void PluginDriver::setCurrentProgramName(const std::string& name) {
  // The plug-in takes a writable buffer; names are at most 24 characters by the VST convention.
  char text[kTextBufferSize] = {};
  std::strncpy(text, name.c_str(), vst2::kVstMaxProgNameLen);
  dispatch(vst2::effSetProgramName, 0, 0, text);
}

void PluginDriver::beginSetProgram() {
  dispatch(vst2::effBeginSetProgram);
}

void PluginDriver::endSetProgram() {
  dispatch(vst2::effEndSetProgram);
}

std::vector<std::uint8_t> PluginDriver::chunk(bool program) {
  void* data = nullptr;
  const vst2::VstIntPtr size = dispatch(vst2::effGetChunk, program ? 1 : 0, 0, &data);
  if (data == nullptr || size <= 0) return {};
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  return std::vector<std::uint8_t>(bytes, bytes + size);
}

void PluginDriver::setChunk(bool program, const std::uint8_t* data, std::size_t size) {
  dispatch(vst2::effSetChunk, program ? 1 : 0, static_cast<vst2::VstIntPtr>(size),
           const_cast<std::uint8_t*>(data));
}

void PluginDriver::sendEvents(const std::vector<vst2::VstMidiEvent>& events) {
  if (events.empty()) return;
  // The plug-in may keep pointers only until the next processReplacing, so the events live in the
  // driver until then.
  pendingEvents_ = events;
  std::size_t bytes = sizeof(vst2::VstEvents) + events.size() * sizeof(vst2::VstEvent*);
  eventsStorage_.assign(bytes / sizeof(vst2::VstIntPtr) + 1, 0);
  auto* list = reinterpret_cast<vst2::VstEvents*>(eventsStorage_.data());
  list->numEvents = static_cast<vst2::VstInt32>(events.size());
  list->reserved = 0;
  for (std::size_t i = 0; i < pendingEvents_.size(); ++i) {
    list->events[i] = reinterpret_cast<vst2::VstEvent*>(&pendingEvents_[i]);
  }
  dispatch(vst2::effProcessEvents, 0, 0, list);
}

void PluginDriver::processReplacing(int frames) {
  for (auto& buffer : outputs_) std::fill(buffer.begin(), buffer.begin() + frames, 0.0f);
  effect_->processReplacing(effect_, inputPointers_.empty() ? nullptr : inputPointers_.data(),
                            outputPointers_.data(), frames);
  // A mono plug-in is heard on both sides.
  if (effect_->numOutputs == 1) std::copy_n(outputs_[0].begin(), frames, outputs_[1].begin());
}

std::vector<HostCallbackRecord> PluginDriver::takeCallbackRecords() {
  std::vector<HostCallbackRecord> taken;
  taken.swap(records_);
  return taken;
}

bool PluginDriver::editorRect(vst2::ERect& rect) {
  vst2::ERect* answer = nullptr;
  dispatch(vst2::effEditGetRect, 0, 0, &answer);
  if (answer == nullptr) return false;
  rect = *answer;
  return true;
}

bool PluginDriver::openEditor(void* parentWindow) {
  return dispatch(vst2::effEditOpen, 0, 0, parentWindow) != 0;
}

void PluginDriver::closeEditor() { dispatch(vst2::effEditClose); }

void PluginDriver::editorIdle() { dispatch(vst2::effEditIdle); }

vst2::VstIntPtr PluginDriver::dispatch(vst2::VstInt32 opcode, vst2::VstInt32 index, vst2::VstIntPtr value,
                                       void* ptr, float opt) {
  return effect_->dispatcher(effect_, opcode, index, value, ptr, opt);
}

vst2::VstIntPtr VST_CALLBACK PluginDriver::hostCallback(vst2::AEffect* effect, vst2::VstInt32 opcode,
                                                        vst2::VstInt32 index, vst2::VstIntPtr value,
                                                        void* ptr, float opt) {
  PluginDriver* driver = effect ? static_cast<PluginDriver*>(effect->user) : nullptr;
  if (!driver) driver = tDriverBeingCreated;
  if (opcode == vst2::audioMasterVersion) return kHostVstVersion;
  if (!driver) return 0;
  return driver->answer(opcode, index, value, ptr, opt);
}

vst2::VstIntPtr PluginDriver::answer(vst2::VstInt32 opcode, vst2::VstInt32 index, vst2::VstIntPtr /*value*/,
                                     void* ptr, float opt) {
  if (recording_ && (opcode == vst2::audioMasterAutomate || opcode == vst2::audioMasterBeginEdit ||
                     opcode == vst2::audioMasterEndEdit || opcode == vst2::audioMasterUpdateDisplay)) {
    records_.push_back(HostCallbackRecord{opcode, index, opt});
  }
  switch (opcode) {
    case vst2::audioMasterGetTime:
      ++counts_.getTime;
      return reinterpret_cast<vst2::VstIntPtr>(&timeInfo_);
    case vst2::audioMasterAutomate:
      ++counts_.automate;
      return 1;
    case vst2::audioMasterBeginEdit:
      ++counts_.beginEdit;
      return 1;
    case vst2::audioMasterEndEdit:
      ++counts_.endEdit;
      return 1;
    case vst2::audioMasterUpdateDisplay:
      ++counts_.updateDisplay;
      return 1;
    case vst2::audioMasterIOChanged:
      ++counts_.ioChanged;
      return 1;
    case vst2::audioMasterGetSampleRate:
      return sampleRate_;
    case vst2::audioMasterGetBlockSize:
      return maxBlockSize_;
    case vst2::audioMasterGetCurrentProcessLevel:
      // 4 = offline: the host renders faster than real time and never drops a block.
      return 4;
    case vst2::audioMasterGetAutomationState:
      return 1;  // automation off
    case vst2::audioMasterGetLanguage:
      return 1;  // English
    case vst2::audioMasterGetVendorString:
      if (ptr) std::strcpy(static_cast<char*>(ptr), "Vrn");
      return ptr ? 1 : 0;
    case vst2::audioMasterGetProductString:
      if (ptr) std::strcpy(static_cast<char*>(ptr), "vrnhost");
      return ptr ? 1 : 0;
    case vst2::audioMasterGetVendorVersion:
      return 1;
    case vst2::audioMasterCanDo: {
      const char* query = static_cast<const char*>(ptr);
      if (!query) return 0;
      for (const char* supported : {"sendVstEvents", "sendVstMidiEvent", "sendVstTimeInfo"}) {
        if (std::strcmp(query, supported) == 0) return 1;
      }
      return -1;
    }
    default:
      return 0;
  }
}

}  // namespace vrnhost
