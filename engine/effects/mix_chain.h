// The engine's global chain over the voice sum: DC blocker, chorus, delay, master EQ and gain,
// limiter, in that order, reading their settings from the parameters' global values.
//
// Idle handling, so a silent synth costs almost nothing while tails still ring out:
// - "synth idle" for the chorus: no voice sounded this block and both DC blockers are quiet;
// - "synth idle" for the delay additionally needs the chorus output to be quiet, so a chorus
//   tail still counts as sound entering the delay;
// - "chain idle" (EQ skipped, limiter flushed then skipped) additionally needs the delay's tail
//   and the EQ filters' recent outputs to be quiet.
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
  // Runs the chain over 1..kMaxBlock frames in place. params: the engine's parameter records
  // (global values of this sub-block; the delay sync switch is read from its stored value);
  // voicesSounded: a voice was rendered into the buffers this block; when false the buffers must
  // hold zeros (the engine clears them before the voices add in). Audio thread.
  void render(const Parameter* params, float* left, float* right, int frames, double tempoBpm,
              bool voicesSounded);

  // Observation for tests and benchmarks: whether the last block skipped the EQ.
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
