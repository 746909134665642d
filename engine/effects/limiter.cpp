// Look-ahead peak limiter; see limiter.h.
#include "engine/effects/limiter.h"

#include <algorithm>
#include <cmath>

#include "engine/dsp.h"

namespace ziv {
namespace {

constexpr int kRingMask = Limiter::kRingSize - 1;
// Release: hold halves every 10 ms.
constexpr double kReleaseHalvingsPerSecond = 100.0;
// A hold below 2^-23 is no gain change worth computing.
constexpr float kHoldFloor = 1.1920929e-7f;

// The largest of window[k] x weights[k], k < length (at most 0 when every sample is under the
// threshold). Four independent running maxima, so the comparisons do not wait on each other; the
// maximum is exact in any order.
float windowPeak(const float* window, const float* weights, int length) {
  float peak[4] = {0.0f, 0.0f, 0.0f, 0.0f};
  int k = 0;
  for (; k + 4 <= length; k += 4) {
    for (int lane = 0; lane < 4; ++lane)
      peak[lane] = std::max(peak[lane], window[k + lane] * weights[k + lane]);
  }
  for (; k < length; ++k) peak[0] = std::max(peak[0], window[k] * weights[k]);
  return std::max(std::max(peak[0], peak[1]), std::max(peak[2], peak[3]));
}

}  // namespace

int Limiter::lookAhead(float rate) {
  if (!usableSampleRate(rate)) return 0;
  return std::clamp(static_cast<int>(std::floor(kLookAheadSeconds * rate + 0.5f)), 0, kMaxLookAhead);
}

void Limiter::setSampleRate(float rate) {
  if (!usableSampleRate(rate)) return;  // keeps the last good rate
  lookAhead_ = lookAhead(rate);
  release_ = static_cast<float>(std::pow(0.5, kReleaseHalvingsPerSecond / rate));
  // Smoothstep weights: w[0] = 1 for the sample leaving the delay, falling toward the newest.
  for (int i = 0; i < lookAhead_; ++i) {
    const float x = static_cast<float>(lookAhead_ - i) / static_cast<float>(lookAhead_);
    weights_[i] = (3.0f - 2.0f * x) * x * x;
  }
  clearState();
}

void Limiter::reset() {
  clearState();
}

void Limiter::clearState() {
  delayedLeft_.fill(0.0f);
  delayedRight_.fill(0.0f);
  overshoot_.fill(0.0f);
  hold_ = 0.0f;
  idleSamples_ = 0;
  dirty_ = false;
}

void Limiter::aim(bool on) {
  on_ = on && lookAhead_ > 0;
  if (!on_ && (dirty_ || hold_ != 0.0f)) clearState();
}

void Limiter::render(float* left, float* right, int frames, bool chainIdle) {
  if (!on_ || frames <= 0) return;
  // Idle, it runs on only until kRingSize samples have flushed its delay; the rest of the call
  // passes unchanged (quiet input, as the chain is idle).
  if (chainIdle) {
    frames = std::clamp(kRingSize - idleSamples_, 0, frames);
    idleSamples_ += frames;
  } else {
    idleSamples_ = 0;
  }
  if (frames == 0) return;
  dirty_ = true;

  const float release = release_;
  const int length = lookAhead_;
  const float* weights = weights_.data();
  float* delayedLeft = delayedLeft_.data();
  float* delayedRight = delayedRight_.data();
  float* overshoot = overshoot_.data();
  float hold = hold_;
  int position = position_;
  for (int i = 0; i < frames; ++i) {
    // The sample leaving the delay now was written `length` samples ago; its slot is the window's
    // oldest entry (weight 1). The one written now enters the window with the next sample (its
    // weight would be 0 now).
    const int oldest = (position - length) & kRingMask;
    delayedLeft[position] = left[i];
    delayedRight[position] = right[i];
    const float over = std::max(std::fabs(left[i]), std::fabs(right[i])) - kThreshold;
    overshoot[position] = overshoot[position + kRingSize] = over;
    hold = std::max(hold, windowPeak(overshoot + oldest, weights, length));
    const float gain = 1.0f / (1.0f + hold);
    left[i] = gain * delayedLeft[oldest];
    right[i] = gain * delayedRight[oldest];
    hold *= release;
    if (hold < kHoldFloor) hold = 0.0f;
    position = (position + 1) & kRingMask;
  }
  hold_ = hold;
  position_ = position;
}

}  // namespace ziv
