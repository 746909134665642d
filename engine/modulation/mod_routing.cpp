// Target lists and the rules for adding modulation; see mod_routing.h.
#include "engine/modulation/mod_routing.h"

#include <algorithm>
#include <cmath>

namespace ziv {
namespace {

// Every list is a head of this one.
constexpr int kTargets[] = {
    kNoModTarget,
    // Voice LFO: the sound of one voice.
    kVoicePitch, kVoiceGain, kGlideTime, kOsc1Gain, kOsc1Shape, kOsc1Sync, kOsc1Pitch, kOsc2Gain, kOsc2Shape,
    kOsc2Sync, kOsc2Pitch, kSubGain, kSubShape, kSubPitch, kFilter1Cutoff, kFilter1Q, kFilter1EnvAmt,
    kShaperDrive, kShaperMix, kFilter2Cutoff, kFilter2Q, kFilter2EnvAmt,
    // Mod envelope: also the voice LFO.
    kVoiceLfoDepth, kVoiceLfoRate, kVoiceLfoPhase,
    // Velocity: also the envelopes.
    kAmpEnvAttack, kAmpEnvDecay, kAmpEnvSustain, kAmpEnvRelease, kFilterEnvAttack, kFilterEnvDecay,
    kFilterEnvSustain, kFilterEnvRelease, kModEnvAttack, kModEnvDecay, kModEnvSustain, kModEnvRelease,
    kModEnvDepth,
    // Global LFO: also the effects.
    kChorusDelay, kChorusDepth, kChorusRate, kChorusWidth, kChorusMix, kDelayFeedback, kDelaySend,
    // Mod wheel: also the global LFO.
    kGlobalLfoDepth, kGlobalLfoRate};

constexpr int kVoiceLfoTargets = 23;
constexpr int kModEnvelopeTargets = 26;
constexpr int kVelocityTargets = 39;
constexpr int kGlobalLfoTargets = 46;
constexpr int kModWheelTargets = 48;
static_assert(sizeof(kTargets) / sizeof(kTargets[0]) == kModWheelTargets,
              "the mod wheel list is the whole list");

struct SourceInfo {
  int firstSelector;  // the slot k selector is firstSelector + 2k, its amount the entry after it
  int targetCount;
  bool bipolar;
  bool amountFromVoice;
};

SourceInfo sourceInfo(ModSource source) {
  switch (source) {
    case ModSource::kModWheel:
      return {kModWheelTarget1, kModWheelTargets, true, false};
    case ModSource::kGlobalLfo:
      return {kGlobalLfoTarget1, kGlobalLfoTargets, true, false};
    case ModSource::kVelocity:
      return {kVelocityTarget1, kVelocityTargets, false, true};
    case ModSource::kModEnvelope:
      return {kModEnvTarget1, kModEnvelopeTargets, false, true};
    case ModSource::kVoiceLfo:
    default:
      return {kVoiceLfoTarget1, kVoiceLfoTargets, true, true};
  }
}

bool isPitch(int index) {
  return index == kVoicePitch || index == kOsc1Pitch || index == kOsc2Pitch || index == kSubPitch;
}

bool isGainLike(int index) {
  return index == kVoiceGain || index == kModEnvDepth;
}

}  // namespace

ModTargetList modTargets(ModSource source) {
  return {kTargets, sourceInfo(source).targetCount};
}

bool selectorTargets(int parameterIndex, ModTargetList& list) {
  for (ModSource source : {ModSource::kModWheel, ModSource::kGlobalLfo, ModSource::kVelocity,
                           ModSource::kModEnvelope, ModSource::kVoiceLfo}) {
    const int first = sourceInfo(source).firstSelector;
    for (int slot = 0; slot < kModSlots; ++slot) {
      if (parameterIndex == first + 2 * slot) {
        list = modTargets(source);
        return true;
      }
    }
  }
  return false;
}

int modTargetPosition(float selectorValue, int listCount) {
  return static_cast<int>(std::floor(selectorValue * static_cast<float>(listCount - 1) + 0.5f));
}

void applyModulation(Parameter* params, int target, float source, float amount, bool bipolarSource,
                     ModStage stage) {
  if (target < 0 || target >= kParamCount) return;
  float& value = stage == ModStage::kGlobal ? params[target].globalValue : params[target].voiceValue;
  if (isPitch(target)) {
    const double a = amount;
    value += static_cast<float>(a * a * a * source);
  } else if (isGainLike(target)) {
    value += bipolarSource ? amount * source : amount * source - std::max(amount, 0.0f);
  } else {
    value = std::clamp(value + amount * source, 0.0f, 1.0f);
  }
}

void applyModSource(Parameter* params, ModSource source, float value, ModStage stage) {
  const SourceInfo info = sourceInfo(source);
  for (int slot = 0; slot < kModSlots; ++slot) {
    const Parameter& selector = params[info.firstSelector + 2 * slot];
    const int position = modTargetPosition(selector.baseValue(), info.targetCount);
    if (position <= 0 || position >= info.targetCount) continue;
    const Parameter& amountParam = params[info.firstSelector + 2 * slot + 1];
    const float amount =
        amountParam.physical(info.amountFromVoice ? amountParam.voiceValue : amountParam.globalValue);
    applyModulation(params, kTargets[position], value, amount, info.bipolar, stage);
  }
}

}  // namespace ziv
