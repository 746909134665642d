// The optional look-ahead limiter at the end of the master section.
//
// The signal is delayed by L samples (4 ms, capped at 63: 63 at every rate from 15.75 kHz up).
// Each sample's overshoot over 0.999 (the larger of the two channels) enters a look-ahead window;
// `hold` follows the largest overshoot in the window, each weighted by a smoothstep that rises
// from near 0 for the sample just written to 1 for the one leaving the delay now, and decays
// with a 10 ms half-life. The delayed samples are scaled by 1 / (1 + hold), so a peak P comes
// out as P / (1 + P - 0.999), just under 1.0, and the gain dips smoothly over the L samples
// before it instead of stepping. The output lags the input by exactly L samples while the
// limiter is on; that is the latency the plug-in reports (lookAhead).
//
// Off: no delay and no gain change; the delay rings are cleared, so switching it on during
// playback starts with L samples of silence and switching it off discards the L samples in
// flight. Idle: while the chain is idle the limiter runs 64 more samples to flush its delay,
// then is skipped until sound returns; the samples are counted one by one, so where the host cut
// its blocks never moves that point.
#pragma once

#include <array>

namespace ziv {

class Limiter {
 public:
  static constexpr int kRingSize = 64;  // power of two, above the longest look-ahead
  static constexpr int kMaxLookAhead = 63;
  static constexpr float kLookAheadSeconds = 0.004f;
  static constexpr float kThreshold = 0.999f;

  // The look-ahead (and latency while on) at `rate`, in samples. Any thread.
  static int lookAhead(float rate);

  // Sets the look-ahead and window for the rate and clears the state. Audio thread (between
  // blocks), or any thread while the engine does not render.
  void setSampleRate(float rate);
  // Clears the rings, hold and idle count. Audio thread, or any thread while the engine does
  // not render.
  void reset();
  // Control, once per control tick: on is "MASTER: Limiter"; switching off discards the samples
  // in flight. Audio thread.
  void aim(bool on);
  // Audio: processes 1..kMaxBlock frames of both channels in place. chainIdle: the chain before
  // the limiter is idle in these samples. Audio thread.
  void render(float* left, float* right, int frames, bool chainIdle);
  // Off, or idle long enough to have let out everything it held: render leaves its input as it
  // is. Audio thread.
  bool passesThrough() const { return !on_ || idleSamples_ >= kRingSize; }

 private:
  void clearState();

  int lookAhead_ = 0;
  float release_ = 1.0f;  // per-sample decay of hold, set with the rate
  float hold_ = 0.0f;
  int position_ = 0;
  int idleSamples_ = 0;
  bool on_ = false;
  bool dirty_ = false;  // the rings hold samples
  std::array<float, kMaxLookAhead> weights_{};
  std::array<float, kRingSize> delayedLeft_{};
  std::array<float, kRingSize> delayedRight_{};
  // Written twice (at p and p + kRingSize), so every look-ahead window is one contiguous run.
  std::array<float, 2 * kRingSize> overshoot_{};
};

}  // namespace ziv
