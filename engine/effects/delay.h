// The stereo echo on the full mix, between the chorus and the master EQ.
//
// Time: "DELAY: Time" steps are sixteenth notes at the host tempo when synced (steps x 15 /
// tempo seconds), milliseconds otherwise, capped at 3 s. Width w (-1..1) shortens one side by
// c = 0.95 w^3: positive width shortens the left echo to (1 - c) of the time, negative the right.
// Each side is its own feedback loop (the sides never feed each other): the ring receives
// input x send + delayed x feedback, and the output is input + delayed. Times are rounded to
// whole samples (no interpolation), so a moving time steps by whole samples; the four settings
// ramp linearly across each aimed span.
//
// Tail: an estimate of the echo level still in the rings. While sound enters, it is raised to
// F^-T x send (F the feedback, T the longest time); while the synth is idle it falls by F per echo
// period, by a whole span's worth at the span's first idle samples. Once it is at most the silence
// threshold the delay does nothing (its rings and ramps keep their state) until sound returns, so
// a silent synth pays nothing for the delay while echoes still ring out.
//
// Limits: the rings hold 3 s at up to kMaxRingSampleRate; above it the time is capped at the ring.
// A time shorter than one sample is one sample.
#pragma once

#include "engine/effects/delay_ring.h"

namespace ziv {

struct DelaySettings {
  int steps = 1;            // "DELAY: Time", stepped
  bool synced = true;       // "DELAY: Sync" on: steps are sixteenth notes
  double tempoBpm = 120.0;  // host tempo, used when synced
  float width = 0.0f;       // "DELAY: Width" physical, -1..1
  float feedback = 0.0f;    // "DELAY: Feedback" physical, 0..1
  float send = 0.0f;        // "DELAY: Send" physical, 0..1
};

struct DelayTimes {
  float left = 0.0f;   // seconds
  float right = 0.0f;  // seconds
};

class Delay {
 public:
  static constexpr float kMaxTime = 3.0f;         // seconds
  static constexpr float kMaxFeedback = 0.98f;    // "DELAY: Feedback" at 1
  static constexpr float kMaxWidthShift = 0.95f;  // the shortened side keeps at least 5 %

  // Allocates both rings for kMaxRingSampleRate. Not real-time: call where the engine is created.
  Delay();

  // The echo times the settings ask for, before any smoothing. Any thread.
  static DelayTimes times(const DelaySettings& settings);

  // Re-sizes and zeroes the rings for the new rate. Audio thread (between blocks), or any thread
  // while the engine does not render.
  void setSampleRate(float rate);
  // Clears the rings and the tail; the first span rendered after it takes its settings without a
  // ramp. Audio thread, or any thread while the engine does not render.
  void reset();
  // Control: sets the ramps to reach these settings after exactly `frames` (1..kMaxBlock)
  // samples, from where the samples rendered so far left them, and the tail's rise and decay for
  // the span. Audio thread.
  void aim(int frames, const DelaySettings& settings);
  // Audio: the next `frames` samples of the aimed span, both channels in place; the output and
  // the state left behind do not depend on how the span is cut into calls. Past the span's end
  // the settings hold their targets. synthIdle: no sound entered the delay in these samples.
  // Audio thread.
  void render(float* left, float* right, int frames, bool synthIdle);

  // True when the tail estimate is at most the silence threshold: the delay passes its input
  // unchanged and costs nothing. Audio thread.
  bool isSilent() const;
  // Observation for tests: the tail estimate.
  float tail() const { return tail_; }

 private:
  static int ringLength(double rate);
  // Runs the ramps and the delay lines over `frames` samples.
  void process(float* left, float* right, int frames);
  // Puts the aimed settings in force and stops the ramps.
  void arrive();

  DelayRing leftRing_;
  DelayRing rightRing_;
  float sampleRate_ = 44100.0f;
  // Running values and their steps per sample; left time 0 or less means not yet set.
  float leftTime_ = 0.0f, rightTime_ = 0.0f, feedback_ = 0.0f, send_ = 0.0f;
  float leftStep_ = 0.0f, rightStep_ = 0.0f, feedbackStep_ = 0.0f, sendStep_ = 0.0f;
  // The aimed settings and the samples of the span not yet rendered.
  DelayTimes target_;
  float targetFeedback_ = 0.0f, targetSend_ = 0.0f;
  int remaining_ = 0;
  float tail_ = 0.0f;
  // The span's tail rise (while sound enters) and decay factor (while idle), and whether the
  // decay has been applied; F^-T and the decay with the longest time T, the feedback bound F and
  // the span length they were computed for.
  float tailRise_ = 0.0f, tailDecay_ = 1.0f;
  bool tailDecayed_ = false;
  float tailGrowth_ = 1.0f, tailLongest_ = 0.0f, tailFeedback_ = 0.0f;
  int tailFrames_ = 0;
};

}  // namespace ziv
