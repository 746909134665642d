// Pitch to frequency for the tone sources: semitones on the MIDI note scale (69 = A 440 Hz) to
// cycles per sample. The exponent is computed in single precision, as every source of a voice
// shares this one definition, so two sources at the same pitch run at exactly the same rate.
#pragma once

#include <cmath>
#include <limits>

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

// pitchToCycles with its last arguments and result kept, so that pow runs only when the pitch or
// the rate moves: a source asks for its pitch at every aim, and it mostly holds still.
class CyclesCache {
 public:
  double cycles(float pitch, float sampleRate) {
    if (pitch != pitch_ || sampleRate != sampleRate_) {
      pitch_ = pitch;
      sampleRate_ = sampleRate;
      cycles_ = pitchToCycles(pitch, sampleRate);
    }
    return cycles_;
  }

 private:
  float pitch_ = std::numeric_limits<float>::quiet_NaN();  // NaN: nothing computed yet
  float sampleRate_ = 0.0f;
  double cycles_ = 0.0;
};

}  // namespace ziv
