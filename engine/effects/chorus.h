// The stereo chorus on the full mix, between the DC blocker and the delay.
//
// Each channel runs through its own modulated delay line; one sine LFO drives both, the right
// side's phase offset by width x pi. Per block the LFO advances and sets target delay times of
// (0.5 (sin + 1) depth^2 + delay^2) x 0.05 s (0 to 0.1 s); per sample the smoothed times move
// toward the targets linearly across the block but never faster than 0.0002 s per sample, which
// caps the pitch deviation of fast, deep settings. The delayed signal is read with 4-point
// Catmull-Rom interpolation between the second and third of the four samples around the delay,
// so the wet path is late by the delay plus one sample. Equal-power mix: dry sqrt(1 - mix), wet
// sqrt(mix), both ramped across the block. No feedback.
//
// Idle: once the synth has been idle with no wet signal set for 0.1 s, whole blocks are skipped
// (the buffers pass unchanged). With a wet signal set the chorus keeps running while the synth
// is idle, so its delay lines drain.
//
// Limits: the rings hold 0.1 s at up to kMaxRingSampleRate; above it the delay is capped at the
// ring. All settings are normalised and clamped to 0..1.
#pragma once

#include "engine/effects/delay_ring.h"

namespace ziv {

struct ChorusSettings {
  float delay = 0.0f;  // "CHORUS: Delay"
  float rate = 0.0f;   // "CHORUS: Rate"
  float depth = 0.0f;  // "CHORUS: Depth"
  float width = 0.0f;  // "CHORUS: Width"
  float mix = 0.0f;    // "CHORUS: Mix"
};

class Chorus {
 public:
  static constexpr double kMaxTime = 0.1;              // seconds, delay at full delay and depth
  static constexpr double kMaxSlewPerSample = 0.0002;  // seconds the delay time moves per sample
  static constexpr double kIdleSeconds = 0.1;          // idle time before blocks are skipped

  // Allocates both rings for kMaxRingSampleRate. Not real-time: call where the engine is created.
  Chorus();

  // Re-sizes and zeroes the rings for the new rate. Audio thread (between blocks), or any thread
  // while the engine does not render.
  void setSampleRate(float rate);
  // Clears the rings and the idle count; the next block takes its delay times and gains without
  // smoothing. Audio thread, or any thread while the engine does not render.
  void reset();
  // Processes 1..kMaxBlock frames of both channels in place. synthIdle: no sound entered the
  // chain this block. Audio thread.
  void render(float* left, float* right, int frames, const ChorusSettings& settings, bool synthIdle);

  // Observation for tests: the smoothed delay times (seconds) reached at the end of the last
  // block, and whether the last block was skipped.
  double leftDelay() const { return leftTime_; }
  double rightDelay() const { return rightTime_; }
  bool skipping() const { return skipping_; }

 private:
  static int ringLength(double rate);

  DelayRing leftRing_;
  DelayRing rightRing_;
  double sampleRate_ = 44100.0;
  double phase_ = 0.0;
  double leftTime_ = -1.0;  // negative: not yet initialised, the next block jumps to its targets
  double rightTime_ = 0.0;
  double dry_ = 1.0;
  double wet_ = 0.0;
  int idleSamples_ = 0;
  bool skipping_ = false;
};

}  // namespace ziv
