#include "sdk/aax/aax_adapter.h"

#include <cmath>
#include <cstdio>
#include <cstring>

#include "sdk/aax/parameter_id.h"
#include "sdk/aax/value_text.h"

#if defined(_WIN32)
#include <windows.h>
#endif

// The plug-in's VST 2.4 entry point: the adapter creates its instance the way any VST host does.
VST_EXPORT vst2::AEffect* VSTPluginMain(vst2::AudioMasterCallback audioMaster);

namespace ziv::aax {

namespace {

constexpr const char* kProductString = "AAX";

// Tells a debugger which host requests the adapter leaves unanswered.
void traceUnansweredOpcode(vst2::VstInt32 opcode) {
#if defined(_WIN32)
  char text[64];
  std::snprintf(text, sizeof text, "Plugin requested value of opcode %d\n", static_cast<int>(opcode));
  OutputDebugStringA(text);
#else
  (void)opcode;
#endif
}

}  // namespace

Adapter::~Adapter() {
  closeInstance();
}

void Adapter::closeInstance() {
  if (effect_ == nullptr) return;
  effect_->dispatcher(effect_, vst2::effMainsChanged, 0, 0, nullptr, 0.0f);
  effect_->dispatcher(effect_, vst2::effClose, 0, 0, nullptr, 0.0f);
  effect_ = nullptr;
  instance_ = nullptr;
}

bool Adapter::createInstance(double sampleRate) {
  closeInstance();
  time_ = vst2::VstTimeInfo{};
  time_.sampleRate = sampleRate > 0.0 ? sampleRate : kUnknownSampleRate;

  vst2::AEffect* effect = VSTPluginMain(&Adapter::hostCallback);
  if (effect == nullptr) return false;
  effect->resvd1 = reinterpret_cast<vst2::VstIntPtr>(this);
  effect_ = effect;
  instance_ = static_cast<VstTest*>(static_cast<vst2::AudioEffect*>(effect->object));

  effect->dispatcher(effect, vst2::effOpen, 0, 0, nullptr, 0.0f);
  if (sampleRate > 0.0) {
    effect->dispatcher(effect, vst2::effSetSampleRate, 0, 0, nullptr, static_cast<float>(sampleRate));
  }
  effect->dispatcher(effect, vst2::effMainsChanged, 0, 1, nullptr, 0.0f);
  return true;
}

std::optional<Result> Adapter::resetFieldData(std::int32_t field, void* data, std::uint32_t size) const {
  const void* pointer = nullptr;
  if (field == kFieldInstance) {
    pointer = instance_;
  } else if (field == kFieldTimeInfo) {
    pointer = &time_;
  } else {
    return std::nullopt;
  }
  if (data == nullptr || size != kPrivateDataSize) return kInvalidFieldIndex;
  std::memcpy(data, &pointer, sizeof pointer);
  return kSuccess;
}

void Adapter::applyHostValue(const char* id, double value) {
  const std::optional<std::int32_t> index = parseParameterId(id);
  if (instance_ != nullptr && index && std::isfinite(value))
    instance_->setParameter(*index, constrainNormalised(value));
}

Result Adapter::updateRelative(const char* id, double delta) {
  const std::optional<std::int32_t> index = parseParameterId(id);
  if (!index) return kInvalidParameterId;
  if (instance_ == nullptr || !std::isfinite(delta)) return kSuccess;
  const float value = constrainNormalised(instance_->getParameter(*index) + delta);
  instance_->setParameter(*index, value);
  parameters_.setNormalised(id, value);
  return kSuccess;
}

vst2::VstIntPtr Adapter::hostCallback(vst2::AEffect* effect, vst2::VstInt32 opcode, vst2::VstInt32 index,
                                      vst2::VstIntPtr value, void* ptr, float opt) {
  (void)value;
  if (opcode == vst2::audioMasterVersion) return kHostVersion;
  if (opcode == vst2::audioMasterGetProductString && ptr != nullptr) {
    vst2::copyString(static_cast<char*>(ptr), kProductString, vst2::kVstMaxProductStrLen);
  }
  Adapter* adapter = effect != nullptr ? reinterpret_cast<Adapter*>(effect->resvd1) : nullptr;
  return adapter != nullptr ? adapter->answer(opcode, index, opt) : 0;
}

vst2::VstIntPtr Adapter::answer(vst2::VstInt32 opcode, vst2::VstInt32 index, float opt) {
  switch (opcode) {
    case vst2::audioMasterAutomate:
      parameters_.setNormalised(parameterId(index).text, opt);
      return 0;
    case vst2::audioMasterGetTime:
      return reinterpret_cast<vst2::VstIntPtr>(&time_);
    case vst2::audioMasterBeginEdit:
      parameters_.touch(parameterId(index).text);
      return 0;
    case vst2::audioMasterEndEdit:
      parameters_.release(parameterId(index).text);
      return 0;
    default:
      traceUnansweredOpcode(opcode);
      return 0;
  }
}

}  // namespace ziv::aax
