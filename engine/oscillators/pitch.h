// Pitch to frequency for the tone sources: semitones on the MIDI note scale (69 = A 440 Hz) to
// cycles per sample. The exponent is computed in single precision, as every source of a voice
// shares this one definition, so two sources at the same pitch run at exactly the same rate.
#pragma once

#include <cmath>

namespace ziv {

// 1/12 rounded to single precision.
constexpr float kSemitoneExponent = 0.083333336f;
constexpr float kA4Hz = 440.0f;
constexpr float kA4Note = 69.0f;

inline float pitchToHz(float pitch) {
  return kA4Hz * std::pow(2.0f, (pitch - kA4Note) * kSemitoneExponent);
}

inline float hzToPitch(float hz) {
  return kA4Note + std::log2(hz / kA4Hz) / kSemitoneExponent;
}

inline double pitchToCycles(float pitch, float sampleRate) {
  return static_cast<double>(pitchToHz(pitch)) / sampleRate;
}

}  // namespace ziv
