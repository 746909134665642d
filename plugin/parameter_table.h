// The parameter table: one row per sound setting, shared by the engine, the host binding,
// the value display, programs and (later) MIDI learn and the editor.
//
// Indices are a stored format: programs, banks and host chunks keep values in index order, so
// an index never changes meaning. 0..107 are visible to hosts; 108..115 are internal engine
// inputs (voice gain and pitch offsets, the two wheels). The table is plain data; the engine
// copies each row into its runtime parameter record (engine/parameter.h).
#pragma once

#include <array>

namespace ziv {

enum ParamIndex : int {
  kOsc1Waveform = 0,
  kOsc1Gain,
  kOsc1Shape,
  kOsc1Octave,
  kOsc1Semi,
  kOsc1Cents,
  kOsc2Waveform,
  kOsc2Gain,
  kOsc2Shape,
  kOsc2Octave,
  kOsc2Semi,
  kOsc2Cents,
  kSubShape,
  kSubGain,
  kSubOctave,
  kAmpEnvAttack,
  kAmpEnvDecay,
  kAmpEnvSustain,
  kAmpEnvRelease,
  kFilterEnvAttack,
  kFilterEnvDecay,
  kFilterEnvSustain,
  kFilterEnvRelease,
  kFilter1Cutoff,
  kFilter1Q,
  kFilter1EnvAmt,
  kFilter1Mode,
  kFilter1KeyTracking,
  kShaperMode,
  kShaperDrive,
  kShaperMix,
  kFilter2Cutoff,
  kFilter2Q,
  kFilter2EnvAmt,
  kFilter2Mode,
  kFilter2KeyTracking,
  kChorusDelay,
  kChorusRate,
  kChorusDepth,
  kChorusWidth,
  kChorusMix,
  kDelayTime,
  kDelayFeedback,
  kDelayWidth,
  kDelaySend,
  kDelaySync,
  kPitchBendRange,
  kUnisonVoices,
  kUnisonDetune,
  kUnisonWidth,
  kGlideTime,
  kPolyphony,
  kModWheelTarget1,
  kModWheelAmt1,
  kModWheelTarget2,
  kModWheelAmt2,
  kModWheelTarget3,
  kModWheelAmt3,
  kModEnvAttack,
  kModEnvDecay,
  kModEnvSustain,
  kModEnvRelease,
  kModEnvTarget1,
  kModEnvAmt1,
  kModEnvTarget2,
  kModEnvAmt2,
  kModEnvTarget3,
  kModEnvAmt3,
  kModEnvDepth,
  kVelocityTarget1,
  kVelocityAmt1,
  kVelocityTarget2,
  kVelocityAmt2,
  kVelocityTarget3,
  kVelocityAmt3,
  kVoiceLfoRate,
  kVoiceLfoDepth,
  kVoiceLfoPhase,
  kVoiceLfoWaveform,
  kVoiceLfoTarget1,
  kVoiceLfoAmt1,
  kVoiceLfoTarget2,
  kVoiceLfoAmt2,
  kVoiceLfoTarget3,
  kVoiceLfoAmt3,
  kVoiceLfoKeyTracking,
  kGlobalLfoRate,
  kGlobalLfoDepth,
  kGlobalLfoPhase,
  kGlobalLfoWaveform,
  kGlobalLfoSync,
  kGlobalLfoSampleHold,
  kGlobalLfoTarget1,
  kGlobalLfoAmt1,
  kGlobalLfoTarget2,
  kGlobalLfoAmt2,
  kGlobalLfoTarget3,
  kGlobalLfoAmt3,
  kMasterGain,
  kMasterLimiter,
  kMasterEqGainLow,
  kMasterEqGainHigh,
  kMasterEqFreqLow,
  kMasterEqFreqHigh,
  kLegatoMode,
  kAutoGlide,
  kOsc1Sync,
  kOsc2Sync,
  kUnusedInternal,  // reserved slot, never read
  kVoiceGain,
  kVoicePitch,
  kOsc1Pitch,
  kOsc2Pitch,
  kSubPitch,
  kPitchWheel,
  kModWheel,
  kParamCount,
};

// Parameters that hosts, programs, files and MIDI learn see.
constexpr int kHostParamCount = 108;
// Parameters carried by the legacy program format (before the two sync entries existed).
constexpr int kLegacyParamCount = 106;

enum class ParamKind { kContinuous, kStepped, kChoice };

// How a value is shown as text (see parameter_display.h).
enum class DisplayRule { kPlain, kInteger, kChoice, kSemitones, kRate, kTempoDivision };

struct ChoiceList {
  const char* const* names = nullptr;
  int count = 0;
};

struct ParamInfo {
  int index = -1;
  const char* name = "";
  ParamKind kind = ParamKind::kContinuous;
  int lo = 0;
  int hi = 1;
  float defaultValue = 0.0f;  // physical units
  float constant = 0.0f;      // per-entry constant (EQ frequency centres, division step)
  ChoiceList choices;
  DisplayRule display = DisplayRule::kPlain;
};

// All rows, stored at their indices (index kUnusedInternal has an empty name).
const std::array<ParamInfo, kParamCount>& paramTable();

// The rows in the order the panel presents them, which is also the order they are built in.
const std::array<int, kParamCount>& paramBuildOrder();

// Normalised default value of a row, (default - lo) / (hi - lo).
float normalisedDefault(const ParamInfo& info);

// Index of the row with this exact name, or -1.
int findParam(const char* name);

}  // namespace ziv
