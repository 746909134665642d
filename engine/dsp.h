// Sizes and thresholds shared by every unit of the synth engine.
#pragma once

#include <cmath>

namespace ziv {

// The engine never renders more than this many frames in one call; hosts' blocks are split.
constexpr int kMaxBlock = 128;

// Voice slots, all allocated with the engine.
constexpr int kVoiceCount = 64;

// 2^-20: a voice, filter or effect whose recent output stays at or below this is quiet.
constexpr float kSilence = 9.5367431640625e-7f;

// The sample rates the engine runs at. Set-up that is handed another rate (zero, negative, NaN,
// infinite or absurd) ignores it and keeps the last good one: rates become ring lengths and
// look-ahead counts, and filters above Nyquist at a tiny rate run away.
constexpr float kMinSampleRate = 8000.0f;
constexpr float kMaxSampleRate = 768000.0f;
inline bool usableSampleRate(float rate) {
  return rate >= kMinSampleRate && rate <= kMaxSampleRate;
}

constexpr float kPi = 3.14159265358979323846f;
constexpr float kTwoPi = 2.0f * kPi;

// Replaces every NaN or infinity in buf[0..frames) by 0: the guard in front of state that would
// keep a bad value forever (delay lines) and in front of the host.
inline void replaceNonFinite(float* buf, int frames) {
  for (int i = 0; i < frames; ++i) {
    if (!std::isfinite(buf[i])) buf[i] = 0.0f;
  }
}

// The loudest sample the engine hands the host: +24 dBFS, far above any sound worth making.
constexpr float kOutputCeiling = 16.0f;

// Replaces every NaN by 0 and holds every sample (infinities included) within +-kOutputCeiling:
// the guard between the engine and the host. All 64 voices at the top of their gain with the
// master EQ's and gain's +22 dB can stack past any reasonable level without anything running
// away; the host gets a clipped peak then, never a blast.
inline void limitToCeiling(float* buf, int frames) {
  for (int i = 0; i < frames; ++i) {
    const float x = buf[i];
    if (!(std::fabs(x) <= kOutputCeiling)) buf[i] = std::isnan(x) ? 0.0f : std::copysign(kOutputCeiling, x);
  }
}

}  // namespace ziv
