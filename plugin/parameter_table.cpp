// The rows of the parameter table, written in panel order and stored at their fixed indices.
#include "plugin/parameter_table.h"

#include <cstring>

namespace ziv {
namespace {

const char* const kWaveforms[] = {"Saw", "Pulse", "Noise"};
const char* const kFilterModes[] = {"LP", "HP", "BP", "VOX"};
const char* const kShaperModes[] = {"Clip", "Sine", "Crush", "Fold"};
const char* const kDelaySyncModes[] = {"ms", "16th"};

template <int N>
constexpr ChoiceList choices(const char* const (&names)[N]) {
  return ChoiceList{names, N};
}

// The longest delay time in sixteenths: 3000 ms at the 0.008 sixteenths per ms of 120 BPM.
constexpr int kDelayTimeMax = static_cast<int>(3000 * 0.008 + 0.5);

ParamInfo continuous(int index, const char* name, int lo, int hi, float defaultValue,
                     DisplayRule display = DisplayRule::kPlain) {
  ParamInfo row;
  row.index = index;
  row.name = name;
  row.lo = lo;
  row.hi = hi;
  row.defaultValue = defaultValue;
  row.display = display;
  return row;
}

ParamInfo stepped(int index, const char* name, int lo, int hi, float defaultValue) {
  ParamInfo row = continuous(index, name, lo, hi, defaultValue, DisplayRule::kInteger);
  row.kind = ParamKind::kStepped;
  return row;
}

ParamInfo choice(int index, const char* name, ChoiceList list, int defaultChoice) {
  ParamInfo row = continuous(index, name, 0, list.count - 1, static_cast<float>(defaultChoice),
                             DisplayRule::kChoice);
  row.kind = ParamKind::kChoice;
  row.choices = list;
  return row;
}

ParamInfo withConstant(ParamInfo row, float constant) {
  row.constant = constant;
  return row;
}

// Every row, in the order the panel presents them.
const ParamInfo kRowsInPanelOrder[] = {
    choice(kOsc1Waveform, "OSC 1: Waveform", choices(kWaveforms), 0),
    continuous(kOsc1Gain, "OSC 1: Gain", 0, 1, 0.7f),
    continuous(kOsc1Shape, "OSC 1: Shape", -1, 1, 0.0f),
    stepped(kOsc1Octave, "OSC 1: Octave", -5, 5, 0.0f),
    stepped(kOsc1Semi, "OSC 1: Semi", -11, 11, 0.0f),
    stepped(kOsc1Cents, "OSC 1: Cents", -99, 99, 0.0f),
    continuous(kOsc1Sync, "OSC 1: Sync", 0, 30, 0.0f, DisplayRule::kSemitones),
    choice(kOsc2Waveform, "OSC 2: Waveform", choices(kWaveforms), 0),
    continuous(kOsc2Gain, "OSC 2: Gain", 0, 1, 0.0f),
    continuous(kOsc2Shape, "OSC 2: Shape", -1, 1, 0.0f),
    stepped(kOsc2Octave, "OSC 2: Octave", -5, 5, 0.0f),
    stepped(kOsc2Semi, "OSC 2: Semi", -11, 11, 0.0f),
    stepped(kOsc2Cents, "OSC 2: Cents", -99, 99, 0.0f),
    continuous(kOsc2Sync, "OSC 2: Sync", 0, 30, 0.0f, DisplayRule::kSemitones),
    continuous(kSubShape, "SUB: Shape", -1, 1, 0.0f),
    continuous(kSubGain, "SUB: Gain", 0, 1, 0.0f),
    stepped(kSubOctave, "SUB: Octave", -5, 5, -1.0f),
    continuous(kAmpEnvAttack, "AMP ENV: Attack", 0, 1, 0.1f),
    continuous(kAmpEnvDecay, "AMP ENV: Decay", 0, 1, 0.2f),
    continuous(kAmpEnvSustain, "AMP ENV: Sustain", 0, 1, 0.7f),
    continuous(kAmpEnvRelease, "AMP ENV: Release", 0, 1, 0.3f),
    continuous(kFilterEnvAttack, "FILTER ENV: Attack", 0, 1, 0.1f),
    continuous(kFilterEnvDecay, "FILTER ENV: Decay", 0, 1, 0.2f),
    continuous(kFilterEnvSustain, "FILTER ENV: Sustain", 0, 1, 0.7f),
    continuous(kFilterEnvRelease, "FILTER ENV: Release", 0, 1, 0.3f),
    continuous(kFilter1Cutoff, "FILTER 1: Cutoff", 0, 1, 0.5f),
    continuous(kFilter1Q, "FILTER 1: Q", 0, 1, 0.0f),
    continuous(kFilter1EnvAmt, "FILTER 1: Env Amt", -1, 1, 0.2f),
    choice(kFilter1Mode, "FILTER 1: Mode", choices(kFilterModes), 0),
    continuous(kFilter1KeyTracking, "FILTER 1: Key Tracking", -1, 1, 1.0f),
    choice(kShaperMode, "SHAPER: Mode", choices(kShaperModes), 0),
    continuous(kShaperDrive, "SHAPER: Drive", 0, 1, 0.5f),
    continuous(kShaperMix, "SHAPER: Mix", 0, 1, 0.0f),
    continuous(kFilter2Cutoff, "FILTER 2: Cutoff", 0, 1, 1.0f),
    continuous(kFilter2Q, "FILTER 2: Q", 0, 1, 0.0f),
    continuous(kFilter2EnvAmt, "FILTER 2: Env Amt", -1, 1, 0.0f),
    choice(kFilter2Mode, "FILTER 2: Mode", choices(kFilterModes), 0),
    continuous(kFilter2KeyTracking, "FILTER 2: Key Tracking", -1, 1, 0.0f),
    continuous(kModEnvAttack, "MOD ENV: Attack", 0, 1, 0.1f),
    continuous(kModEnvDecay, "MOD ENV: Decay", 0, 1, 0.2f),
    continuous(kModEnvSustain, "MOD ENV: Sustain", 0, 1, 0.7f),
    continuous(kModEnvRelease, "MOD ENV: Release", 0, 1, 0.3f),
    continuous(kModEnvDepth, "MOD ENV: Depth", 0, 2, 1.0f),
    continuous(kModEnvTarget1, "MOD ENV: Target 1", 0, 1, 0.0f),
    continuous(kModEnvAmt1, "MOD ENV: Amt 1", -1, 1, 0.5f),
    continuous(kModEnvTarget2, "MOD ENV: Target 2", 0, 1, 0.0f),
    continuous(kModEnvAmt2, "MOD ENV: Amt 2", -1, 1, 0.5f),
    continuous(kModEnvTarget3, "MOD ENV: Target 3", 0, 1, 0.0f),
    continuous(kModEnvAmt3, "MOD ENV: Amt 3", -1, 1, 0.5f),
    continuous(kVoiceLfoRate, "VOICE LFO: Rate", 0, 1, 0.5f, DisplayRule::kRate),
    continuous(kVoiceLfoDepth, "VOICE LFO: Depth", 0, 1, 0.5f),
    continuous(kVoiceLfoPhase, "VOICE LFO: Phase", -1, 1, 0.0f),
    continuous(kVoiceLfoWaveform, "VOICE LFO: Waveform", 0, 5, 0.0f),
    continuous(kVoiceLfoKeyTracking, "VOICE LFO: Key Tracking", -1, 1, 0.0f),
    continuous(kVoiceLfoTarget1, "VOICE LFO: Target 1", 0, 1, 0.0f),
    continuous(kVoiceLfoAmt1, "VOICE LFO: Amt 1", -1, 1, 0.5f),
    continuous(kVoiceLfoTarget2, "VOICE LFO: Target 2", 0, 1, 0.0f),
    continuous(kVoiceLfoAmt2, "VOICE LFO: Amt 2", -1, 1, 0.5f),
    continuous(kVoiceLfoTarget3, "VOICE LFO: Target 3", 0, 1, 0.0f),
    continuous(kVoiceLfoAmt3, "VOICE LFO: Amt 3", -1, 1, 0.5f),
    continuous(kGlobalLfoRate, "GLOBAL LFO: Rate", 0, 1, 0.5f, DisplayRule::kRate),
    continuous(kGlobalLfoDepth, "GLOBAL LFO: Depth", 0, 1, 0.5f),
    continuous(kGlobalLfoPhase, "GLOBAL LFO: Phase", -1, 1, 0.0f),
    continuous(kGlobalLfoWaveform, "GLOBAL LFO: Waveform", 0, 5, 0.0f),
    continuous(kGlobalLfoSync, "GLOBAL LFO: Sync", 0, 1, 0.0f),
    continuous(kGlobalLfoSampleHold, "GLOBAL LFO: S/H", 0, 1, 0.0f),
    continuous(kGlobalLfoTarget1, "GLOBAL LFO: Target 1", 0, 1, 0.0f),
    continuous(kGlobalLfoAmt1, "GLOBAL LFO: Amt 1", -1, 1, 0.5f),
    continuous(kGlobalLfoTarget2, "GLOBAL LFO: Target 2", 0, 1, 0.0f),
    continuous(kGlobalLfoAmt2, "GLOBAL LFO: Amt 2", -1, 1, 0.5f),
    continuous(kGlobalLfoTarget3, "GLOBAL LFO: Target 3", 0, 1, 0.0f),
    continuous(kGlobalLfoAmt3, "GLOBAL LFO: Amt 3", -1, 1, 0.5f),
    continuous(kModWheelTarget1, "MOD WHEEL: Target 1", 0, 1, 0.0f),
    continuous(kModWheelAmt1, "MOD WHEEL: Amt 1", -1, 1, 0.5f),
    continuous(kModWheelTarget2, "MOD WHEEL: Target 2", 0, 1, 0.0f),
    continuous(kModWheelAmt2, "MOD WHEEL: Amt 2", -1, 1, 0.5f),
    continuous(kModWheelTarget3, "MOD WHEEL: Target 3", 0, 1, 0.0f),
    continuous(kModWheelAmt3, "MOD WHEEL: Amt 3", -1, 1, 0.5f),
    continuous(kVelocityTarget1, "VELOCITY: Target 1", 0, 1, 0.0f),
    continuous(kVelocityAmt1, "VELOCITY: Amt 1", -1, 1, 0.5f),
    continuous(kVelocityTarget2, "VELOCITY: Target 2", 0, 1, 0.0f),
    continuous(kVelocityAmt2, "VELOCITY: Amt 2", -1, 1, 0.5f),
    continuous(kVelocityTarget3, "VELOCITY: Target 3", 0, 1, 0.0f),
    continuous(kVelocityAmt3, "VELOCITY: Amt 3", -1, 1, 0.5f),
    continuous(kChorusDelay, "CHORUS: Delay", 0, 1, 0.25f),
    continuous(kChorusRate, "CHORUS: Rate", 0, 1, 0.25f),
    continuous(kChorusDepth, "CHORUS: Depth", 0, 1, 0.25f),
    continuous(kChorusWidth, "CHORUS: Width", 0, 1, 0.25f),
    continuous(kChorusMix, "CHORUS: Mix", 0, 1, 0.0f),
    stepped(kDelayTime, "DELAY: Time", 1, kDelayTimeMax, 3.0f),
    continuous(kDelayFeedback, "DELAY: Feedback", 0, 1, 0.25f),
    continuous(kDelayWidth, "DELAY: Width", -1, 1, 0.0f),
    continuous(kDelaySend, "DELAY: Send", 0, 1, 0.0f),
    choice(kDelaySync, "DELAY: Sync", choices(kDelaySyncModes), 1),
    stepped(kPolyphony, "VOICE: Polyphony", 1, 24, 1.0f),
    stepped(kUnisonVoices, "VOICE: Unison Voices", 1, 8, 1.0f),
    continuous(kUnisonDetune, "VOICE: Unison Detune", 0, 100, 3.0f),
    continuous(kUnisonWidth, "VOICE: Unison Width", 0, 2, 0.25f),
    continuous(kGlideTime, "VOICE: Glide Time", 0, 1, 0.0f),
    continuous(kLegatoMode, "VOICE: Legato Mode", 0, 1, 0.0f),
    continuous(kAutoGlide, "VOICE: Auto Glide", 0, 1, 1.0f),
    stepped(kPitchBendRange, "VOICE: Pitch Bend Range", -24, 24, 5.0f),
    continuous(kMasterGain, "MASTER: Gain", 0, 1, 0.81632656f),
    continuous(kMasterLimiter, "MASTER: Limiter", 0, 1, 0.0f),
    continuous(kMasterEqGainLow, "MASTER: EQ Gain Low", -1, 1, 0.0f),
    continuous(kMasterEqGainHigh, "MASTER: EQ Gain High", -1, 1, 0.0f),
    withConstant(continuous(kMasterEqFreqLow, "MASTER: EQ Freq Low", 0, 1, 0.5f), 0.5f),
    withConstant(continuous(kMasterEqFreqHigh, "MASTER: EQ Freq High", -1, 0, -0.5f), -0.5f),
    continuous(kUnusedInternal, "", 0, 1, 0.0f),
    continuous(kVoiceGain, "VOICE: Gain", 0, 2, 1.0f),
    continuous(kVoicePitch, "VOICE: Pitch", -1, 1, 0.0f),
    continuous(kOsc1Pitch, "OSC 1: Pitch", -1, 1, 0.0f),
    continuous(kOsc2Pitch, "OSC 2: Pitch", -1, 1, 0.0f),
    continuous(kSubPitch, "SUB: Pitch", -1, 1, 0.0f, DisplayRule::kInteger),
    continuous(kPitchWheel, "Pitch Wheel", -1, 1, 0.0f),
    continuous(kModWheel, "Mod Wheel", 0, 1, 0.0f),
};
static_assert(sizeof(kRowsInPanelOrder) / sizeof(kRowsInPanelOrder[0]) == kParamCount,
              "every index has exactly one row");

struct Table {
  std::array<ParamInfo, kParamCount> rows{};
  std::array<int, kParamCount> buildOrder{};

  Table() {
    int position = 0;
    for (const ParamInfo& row : kRowsInPanelOrder) {
      rows[row.index] = row;
      buildOrder[position++] = row.index;
    }
  }
};

const Table& table() {
  static const Table instance;
  return instance;
}

}  // namespace

const std::array<ParamInfo, kParamCount>& paramTable() { return table().rows; }

const std::array<int, kParamCount>& paramBuildOrder() { return table().buildOrder; }

float normalisedDefault(const ParamInfo& info) {
  return (info.defaultValue - static_cast<float>(info.lo)) / static_cast<float>(info.hi - info.lo);
}

int findParam(const char* name) {
  if (name == nullptr || *name == '\0') return -1;
  for (const ParamInfo& row : paramTable()) {
    if (std::strcmp(row.name, name) == 0) return row.index;
  }
  return -1;
}

}  // namespace ziv
