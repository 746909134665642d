// The stereo chorus on the full mix, between the DC blocker and the delay.
//
// Each channel runs through its own modulated delay line; one sine LFO drives both, the right
// side's phase offset by width x pi. Per aimed span the LFO advances and sets target delay times
// of (0.5 (sin + 1) depth^2 + delay^2) x 0.05 s (0 to 0.1 s); per sample the smoothed times move
// toward the targets linearly across the span but never faster than 0.0002 s per sample, which
// caps the pitch deviation of fast, deep settings. The delayed signal is read with 4-point
// Catmull-Rom interpolation between the second and third of the four samples around the delay,
// so the wet path is late by the delay plus one sample. Equal-power mix: dry sqrt(1 - mix), wet
// sqrt(mix), both ramped across the span. No feedback.
//
// Bypass: a span whose wet gain is at most the silence threshold from start to end (mix at 0 and
// no wet tail left) passes its input unchanged and only feeds the rings, so a later mix change
// fades the wet path in over the real recent input; the delay times then take their targets at
// once (nothing was reading the rings). Once the synth has also been idle for 0.1 s (the rings'
// length), the rings hold nothing but quiet input and nothing runs at all. With a wet signal set
// the chorus keeps running while the synth is idle, so its delay lines drain.
//
// Limits: the rings hold 0.1 s at up to kMaxRingSampleRate; above it the delay is capped at the
// ring. All settings are normalised and clamped to 0..1.
#pragma once

#include <limits>

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
  // Clears the rings and the idle count; the next aim takes its delay times and gains without
  // smoothing. Audio thread, or any thread while the engine does not render.
  void reset();
  // Control: advances the LFO by `frames` (1..kMaxBlock) and sets the ramps to reach these
  // settings after exactly `frames` samples, from where the samples rendered so far left them
  // (a re-aim before the span is used up first takes back the LFO's unrendered advance). Decides
  // whether the span is bypassed. Audio thread.
  void aim(int frames, const ChorusSettings& settings);
  // Audio: the next `frames` samples of the aimed span, both channels in place; the output and
  // the state left behind do not depend on how the span is cut into calls. Past the span's end
  // the ramps hold where they arrived. synthIdle: no sound entered the chain in these samples.
  // Audio thread.
  void render(float* left, float* right, int frames, bool synthIdle);

  // Observation for tests: the smoothed delay times (seconds) reached so far, whether the span
  // is bypassed (the buffers pass unchanged), and whether nothing runs at all.
  double leftDelay() const { return leftTime_; }
  double rightDelay() const { return rightTime_; }
  bool bypassed() const { return bypassed_; }
  bool skipping() const { return bypassed_ && idleSamples_ >= idleLimit_; }

 private:
  static constexpr float kNotComputed = std::numeric_limits<float>::quiet_NaN();
  static int ringLength(double rate);
  // Runs the ramps and the delay lines over `frames` samples.
  void process(float* left, float* right, int frames);
  // The bypassed span: feeds the rings until the synth has been idle for idleLimit_ samples.
  void feed(const float* left, const float* right, int frames, bool synthIdle);

  DelayRing leftRing_;
  DelayRing rightRing_;
  double sampleRate_ = 44100.0;
  int idleLimit_ = 0;       // kIdleSeconds in samples
  double phase_ = 0.0;      // the LFO at the end of the aimed span, 0..1
  double phaseStep_ = 0.0;  // its advance per sample
  // The mix and rate knobs of the last aim and what they gave: gains and the LFO's rate in Hz.
  // NaN: not yet computed.
  float mixInput_ = kNotComputed, rateInput_ = kNotComputed;
  double targetDry_ = 1.0, targetWet_ = 0.0, lfoHz_ = 1.0;
  bool started_ = false;  // false until the first aim after a reset, which takes its targets at once
  // Running values and their steps per sample.
  double leftTime_ = 0.0, rightTime_ = 0.0, dry_ = 1.0, wet_ = 0.0;
  double leftStep_ = 0.0, rightStep_ = 0.0, dryStep_ = 0.0, wetStep_ = 0.0;
  int remaining_ = 0;  // samples of the aimed span not yet rendered
  bool bypassed_ = false;
  int idleSamples_ = 0;
};

}  // namespace ziv
