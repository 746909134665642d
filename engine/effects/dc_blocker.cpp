// One-pole, one-zero DC blocker; see dc_blocker.h.
#include "engine/effects/dc_blocker.h"

#include <cmath>

#include "engine/dsp.h"

namespace ziv {
namespace {

// A decayed state below this is set to zero, so it never turns denormal.
constexpr float kFlushThreshold = 1e-20f;

}  // namespace

void DcBlocker::setSampleRate(float rate) {
  if (usableSampleRate(rate)) pole_ = 1.0f - kTwoPi * kCutoffHz / rate;
}

void DcBlocker::reset() {
  x1_ = y1_ = 0.0f;
}

void DcBlocker::aim() {
  if (std::fabs(y1_) < kFlushThreshold) y1_ = 0.0f;
}

void DcBlocker::renderPair(DcBlocker& left, DcBlocker& right, float* leftBuf, float* rightBuf, int frames) {
  const float poleL = left.pole_, poleR = right.pole_;
  float x1L = left.x1_, y1L = left.y1_, x1R = right.x1_, y1R = right.y1_;
  for (int i = 0; i < frames; ++i) {
    const float xL = leftBuf[i], xR = rightBuf[i];
    const float yL = xL - x1L + poleL * y1L;
    const float yR = xR - x1R + poleR * y1R;
    x1L = xL, y1L = yL;
    x1R = xR, y1R = yR;
    leftBuf[i] = yL;
    rightBuf[i] = yR;
  }
  left.x1_ = x1L, left.y1_ = y1L;
  right.x1_ = x1R, right.y1_ = y1R;
}

bool DcBlocker::isQuiet() const {
  return std::fabs(x1_) <= kSilence && std::fabs(y1_) <= kSilence;
}

}  // namespace ziv
