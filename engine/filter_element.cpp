// Cookbook biquad with per-block frequency slew, per-sample coefficient ramps and a restart
// crossfade; see filter_element.h.
#include "engine/filter_element.h"

#include <algorithm>
#include <cmath>

#include "engine/dsp.h"

namespace ziv {

namespace {

// w0 may move by this many radians per second (0 to pi in 100 ms).
constexpr double kMaxSlewPerSecond = 10.0 * 3.14159265358979323846;

// History values below this are flushed to zero at the end of a block, so a decaying tail never
// reaches denormal numbers even without flush-to-zero.
constexpr double kFlushThreshold = 1e-20;

}  // namespace

void FilterElement::setSampleRate(float rate) {
  if (usableSampleRate(rate)) sampleRate_ = rate;
}

void FilterElement::reset() {
  // What the old history would still have rung out is faded over the next samples.
  fadeCoefficients_ = coefficients_;
  fadeX1_ = x1_, fadeX2_ = x2_, fadeY1_ = y1_, fadeY2_ = y2_;
  crossfadeLeft_ = (x1_ != 0.0 || x2_ != 0.0 || y1_ != 0.0 || y2_ != 0.0) ? kCrossfadeSamples : 0;
  started_ = false;
  x1_ = x2_ = y1_ = y2_ = 0.0;
}

float FilterElement::frequencyHz() const {
  return started_ ? static_cast<float>(w0_ * sampleRate_ / (2.0 * 3.14159265358979323846)) : 0.0f;
}

bool FilterElement::isSilent() const {
  return std::fabs(y1_) <= kSilence && std::fabs(y2_) <= kSilence;
}

FilterElement::Coefficients FilterElement::design(int shape, double w0, double q, double gain,
                                                  double shelfFactor) {
  const double cosW = std::cos(w0);
  const double sinW = std::sin(w0);
  const double alpha = sinW / (2.0 * q);
  double b0, b1, b2, a0, a1, a2;
  switch (shape) {
    case kHighPass:
      b0 = (1.0 + cosW) * 0.5;
      b1 = -(1.0 + cosW);
      b2 = b0;
      a0 = 1.0 + alpha;
      a1 = -2.0 * cosW;
      a2 = 1.0 - alpha;
      break;
    case kBandPass:
      b0 = alpha;
      b1 = 0.0;
      b2 = -alpha;
      a0 = 1.0 + alpha;
      a1 = -2.0 * cosW;
      a2 = 1.0 - alpha;
      break;
    case kBandPassSkirt:
      b0 = q * alpha;
      b1 = 0.0;
      b2 = -q * alpha;
      a0 = 1.0 + alpha;
      a1 = -2.0 * cosW;
      a2 = 1.0 - alpha;
      break;
    case kLowShelf: {
      const double a = shelfFactor;
      const double shelf = 2.0 * std::sqrt(a) * alpha;
      b0 = a * ((a + 1.0) - (a - 1.0) * cosW + shelf);
      b1 = 2.0 * a * ((a - 1.0) - (a + 1.0) * cosW);
      b2 = a * ((a + 1.0) - (a - 1.0) * cosW - shelf);
      a0 = (a + 1.0) + (a - 1.0) * cosW + shelf;
      a1 = -2.0 * ((a - 1.0) + (a + 1.0) * cosW);
      a2 = (a + 1.0) + (a - 1.0) * cosW - shelf;
      break;
    }
    case kHighShelf: {
      const double a = shelfFactor;
      const double shelf = 2.0 * std::sqrt(a) * alpha;
      b0 = a * ((a + 1.0) + (a - 1.0) * cosW + shelf);
      b1 = -2.0 * a * ((a - 1.0) + (a + 1.0) * cosW);
      b2 = a * ((a + 1.0) + (a - 1.0) * cosW - shelf);
      a0 = (a + 1.0) - (a - 1.0) * cosW + shelf;
      a1 = 2.0 * ((a - 1.0) - (a + 1.0) * cosW);
      a2 = (a + 1.0) - (a - 1.0) * cosW - shelf;
      break;
    }
    case kLowPass:
    default:
      b0 = (1.0 - cosW) * 0.5;
      b1 = 1.0 - cosW;
      b2 = b0;
      a0 = 1.0 + alpha;
      a1 = -2.0 * cosW;
      a2 = 1.0 - alpha;
      break;
  }
  const double scale = 1.0 / a0;
  const double forward = gain * scale;
  Coefficients c;
  c.b0 = b0 * forward;
  c.b1 = b1 * forward;
  c.b2 = b2 * forward;
  c.a1 = a1 * scale;
  c.a2 = a2 * scale;
  return c;
}

void FilterElement::render(float* buf, int frames, int shape, float freqHz, float q, float gain,
                           float shelfFactor) {
  if (frames <= 0) return;
  const double rate = sampleRate_;
  const double freq = std::min(std::max(static_cast<double>(freqHz), static_cast<double>(kMinFrequency)),
                               kMaxFrequencyRatio * rate);
  const double target = 2.0 * 3.14159265358979323846 * freq / rate;
  if (!started_) {
    w0_ = target;
  } else {
    const double maxStep = kMaxSlewPerSecond * frames / rate;
    w0_ = std::min(std::max(target, w0_ - maxStep), w0_ + maxStep);
  }
  const Coefficients next =
      design(shape, w0_, std::max(q, kMinQ), gain, std::max(shelfFactor, kMinShelfFactor));
  const Coefficients from = started_ ? coefficients_ : next;
  started_ = true;
  coefficients_ = next;

  const double inv = 1.0 / frames;
  const double db0 = (next.b0 - from.b0) * inv, db1 = (next.b1 - from.b1) * inv;
  const double db2 = (next.b2 - from.b2) * inv, da1 = (next.a1 - from.a1) * inv;
  const double da2 = (next.a2 - from.a2) * inv;
  double b0 = from.b0, b1 = from.b1, b2 = from.b2, a1 = from.a1, a2 = from.a2;
  double x1 = x1_, x2 = x2_, y1 = y1_, y2 = y2_;

  int i = 0;
  if (crossfadeLeft_ > 0) {
    // Restart crossfade. By linearity, the old filter fed the new input would give the new
    // output plus the free ringing of its old history; that ringing (run with the old
    // coefficients and no input) is added with a weight falling from 1 to 0, so the output
    // continues where the old one was and the cleared history takes over without a step.
    const Coefficients& old = fadeCoefficients_;
    double gx1 = fadeX1_, gx2 = fadeX2_, gy1 = fadeY1_, gy2 = fadeY2_;
    for (; i < frames && crossfadeLeft_ > 0; ++i, --crossfadeLeft_) {
      b0 += db0, b1 += db1, b2 += db2, a1 += da1, a2 += da2;
      const double x = buf[i];
      const double y = b0 * x + b1 * x1 + b2 * x2 - a1 * y1 - a2 * y2;
      x2 = x1, x1 = x, y2 = y1, y1 = y;
      const double ring = old.b1 * gx1 + old.b2 * gx2 - old.a1 * gy1 - old.a2 * gy2;
      gx2 = gx1, gx1 = 0.0, gy2 = gy1, gy1 = ring;
      const double weight = static_cast<double>(crossfadeLeft_) / kCrossfadeSamples;
      buf[i] = static_cast<float>(y + ring * weight);
    }
    fadeX1_ = gx1, fadeX2_ = gx2, fadeY1_ = gy1, fadeY2_ = gy2;
  }
  for (; i < frames; ++i) {
    b0 += db0, b1 += db1, b2 += db2, a1 += da1, a2 += da2;
    const double x = buf[i];
    // Everything but the a1 y1 term is summed first, so the recursion's critical path per sample
    // is one multiply and one subtract.
    const double y = (b0 * x + b1 * x1 + b2 * x2 - a2 * y2) - a1 * y1;
    x2 = x1, x1 = x, y2 = y1, y1 = y;
    buf[i] = static_cast<float>(y);
  }

  if (std::fabs(x1) < kFlushThreshold) x1 = 0.0;
  if (std::fabs(x2) < kFlushThreshold) x2 = 0.0;
  if (std::fabs(y1) < kFlushThreshold) y1 = 0.0;
  if (std::fabs(y2) < kFlushThreshold) y2 = 0.0;
  x1_ = x1, x2_ = x2, y1_ = y1, y2_ = y2;
}

}  // namespace ziv
