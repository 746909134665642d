// The engine's global chain over the voice sum: DC blocker, chorus, delay, master EQ and gain,
// limiter, in that order, reading their settings from the parameters' global values.
//
// Control and audio are split: aim() reads every setting once per control tick and aims the
// units' ramps across the tick; render() runs the units over any piece of it, and a tick cut
// into pieces anywhere gives the same samples as a tick rendered whole, except where noted below.
//
// Idle handling, so a silent synth costs almost nothing while tails still ring out. The tests
// look at the signal and are made per render call:
// - "synth idle" for the chorus: no voice sounded in the call and both DC blockers are quiet;
// - "synth idle" for the delay additionally needs the chorus output to be quiet, so a chorus
//   tail still counts as sound entering the delay;
// - "chain idle" (EQ skipped, limiter flushed then skipped) additionally needs the delay's tail
//   and the EQ filters' recent outputs to be quiet.
// So where a tick is cut can move these decisions, but only within a stretch where each of them
// holds for the piece that makes it: no voice, DC blockers at most the silence threshold, the
// chorus output quiet, the delay's echoes and the EQ's output estimated at most the threshold.
// The output there is at the threshold's level (scaled by the EQ's gain at most); every sample
// above it comes out bit-identical whatever the cut. One exception: a skipped unit's ramps stand
// still, so if the delay's or the EQ's settings move just as the chain falls idle, the first span
// after the sound returns may ramp from a slightly different point.
// Any non-finite input sample is replaced by 0 first, so one bad voice sample cannot lodge in a
// delay line or filter state for good.
#pragma once

#include "engine/effects/chorus.h"
#include "engine/effects/dc_blocker.h"
#include "engine/effects/delay.h"
#include "engine/effects/limiter.h"
#include "engine/effects/master_eq.h"
#include "engine/parameter.h"

namespace ziv {

class MixChain {
 public:
  // Allocates the delay lines. Not real-time: call where the engine is created.
  MixChain();

  // The chain's latency in samples at `rate` when the limiter switch has normalised value
  // `limiterValue`: the look-ahead while on, else 0. Any thread.
  static int latency(const Parameter& limiterSwitch, float limiterValue, float rate);

  // Re-sizes and clears every unit for the new rate. Audio thread (between blocks), or any
  // thread while the engine does not render.
  void setSampleRate(float rate);
  // Clears delay lines, filters and the limiter. Audio thread, or any thread while the engine
  // does not render.
  void reset();
  // Control: reads the settings from the engine's parameter records (global values of this tick;
  // the delay sync switch from its stored value) and aims every unit across the next `frames`
  // (1..kMaxBlock) samples. Audio thread.
  void aim(int frames, const Parameter* params, double tempoBpm);
  // Audio: runs the chain over the next `frames` samples of the aimed span, in place.
  // voicesSounded: a voice was rendered into these samples; when false the buffers must hold
  // zeros (the engine clears them before the voices add in). Returns true when the buffers hold
  // only zeros still (every unit at rest). Audio thread.
  bool render(float* left, float* right, int frames, bool voicesSounded);

  // Observation for tests and benchmarks: whether the last render call skipped the EQ.
  bool chainIdle() const { return chainIdle_; }

 private:
  DcBlocker dcLeft_, dcRight_;
  Chorus chorus_;
  Delay delay_;
  MasterEq eq_;
  Limiter limiter_;
  bool chainIdle_ = false;
};

}  // namespace ziv
