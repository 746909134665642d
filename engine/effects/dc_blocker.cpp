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

void DcBlocker::render(float* buf, int frames) {
  const float pole = pole_;
  float x1 = x1_, y1 = y1_;
  for (int i = 0; i < frames; ++i) {
    const float x = buf[i];
    const float y = x - x1 + pole * y1;
    x1 = x;
    y1 = y;
    buf[i] = y;
  }
  x1_ = x1;
  y1_ = y1;
}

bool DcBlocker::isQuiet() const {
  return std::fabs(x1_) <= kSilence && std::fabs(y1_) <= kSilence;
}

}  // namespace ziv
