// The master DC blocker: a one-pole, one-zero high-pass at 15 Hz on one channel, at the head of
// the global chain (before the chorus), so an offset in the voice sum never reaches the delay's
// feedback loop or the limiter.
//
// y = x - x1 + r y1 with r = 1 - 2 pi 15 / rate. The corner is an approximation that holds for
// 15 Hz << rate; at 8 kHz and up r stays well inside (0, 1). Its two state values also serve as
// the chain's idle test: they are quiet once both are at most the silence threshold.
#pragma once

namespace ziv {

class DcBlocker {
 public:
  static constexpr float kCutoffHz = 15.0f;

  // Audio thread, or any thread while the engine does not render.
  void setSampleRate(float rate);
  // Clears the state. Audio thread, or any thread while the engine does not render.
  void reset();
  // Control, once per control tick: sets a decayed state to zero, so it never turns denormal.
  // Taken here from the state, not at the end of each render call, so where the host cut its
  // blocks never changes the output. Audio thread.
  void aim();
  // Audio: filters left's channel leftBuf[0..frames) and right's rightBuf[0..frames) in place, in
  // one pass, so that the two recursions overlap instead of running one after the other. Audio
  // thread.
  static void renderPair(DcBlocker& left, DcBlocker& right, float* leftBuf, float* rightBuf, int frames);
  // True when the previous input and output are at most kSilence. Audio thread.
  bool isQuiet() const;
  // True when the state is exactly zero: a block of zeros would come out as zeros. Audio thread.
  bool isAtRest() const { return x1_ == 0.0f && y1_ == 0.0f; }

 private:
  float pole_ = 1.0f - 2.0f * 3.14159265f * kCutoffHz / 44100.0f;
  float x1_ = 0.0f;
  float y1_ = 0.0f;
};

}  // namespace ziv
