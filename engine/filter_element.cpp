// Cookbook responses from a trapezoidal state-variable filter with per-block frequency slew,
// per-sample coefficient ramps and a restart crossfade; see filter_element.h.
#include "engine/filter_element.h"

#include <algorithm>
#include <cmath>

#include "engine/dsp.h"

namespace ziv {

namespace {

// w0 may move by this many radians per second (0 to pi in 100 ms).
constexpr double kMaxSlewPerSecond = 10.0 * 3.14159265358979323846;

// States below this are flushed to zero at the end of a block, so a decaying tail never reaches
// denormal numbers even without flush-to-zero.
constexpr double kFlushThreshold = 1e-20;

}  // namespace

void FilterElement::setSampleRate(float rate) {
  if (usableSampleRate(rate)) sampleRate_ = rate;
}

void FilterElement::reset() {
  // What the old state would still have rung out is faded over the next samples.
  fadeCoefficients_ = coefficients_;
  fadeS1_ = s1_, fadeS2_ = s2_;
  crossfadeLeft_ = (s1_ != 0.0 || s2_ != 0.0) ? kCrossfadeSamples : 0;
  started_ = false;
  s1_ = s2_ = y1_ = y2_ = 0.0;
}

float FilterElement::frequencyHz() const {
  return started_ ? static_cast<float>(w0_ * sampleRate_ / (2.0 * 3.14159265358979323846)) : 0.0f;
}

bool FilterElement::isSilent() const {
  return std::fabs(y1_) <= kSilence && std::fabs(y2_) <= kSilence;
}

// The cookbook responses as output mixes of the state-variable filter (input m0, band-pass m1,
// low-pass m2); the shelves move the integrators' gain by sqrt(A) so that their midpoint sits at
// the frequency, as the cookbook's do.
FilterElement::Coefficients FilterElement::design(int shape, double g, double q, double gain,
                                                  double shelfFactor) {
  Coefficients c;
  c.g = g;
  c.k = 1.0 / q;
  const double a = shelfFactor;
  switch (shape) {
    case kHighPass:
      c.m0 = 1.0, c.m1 = -c.k, c.m2 = -1.0;
      break;
    case kBandPass:
      c.m0 = 0.0, c.m1 = c.k, c.m2 = 0.0;
      break;
    case kBandPassSkirt:
      c.m0 = 0.0, c.m1 = 1.0, c.m2 = 0.0;
      break;
    case kLowShelf:
      c.g /= std::sqrt(a);
      c.m0 = 1.0, c.m1 = c.k * (a - 1.0), c.m2 = a * a - 1.0;
      break;
    case kHighShelf:
      c.g *= std::sqrt(a);
      c.m0 = a * a, c.m1 = c.k * (1.0 - a) * a, c.m2 = 1.0 - a * a;
      break;
    case kLowPass:
    default:
      c.m0 = 0.0, c.m1 = 0.0, c.m2 = 1.0;
      break;
  }
  c.m0 *= gain, c.m1 *= gain, c.m2 *= gain;
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
  if (w0_ != tanW0_) {
    tanW0_ = w0_;
    tanHalfW0_ = std::tan(0.5 * w0_);
  }
  const Coefficients next =
      design(shape, tanHalfW0_, std::max(q, kMinQ), gain, std::max(shelfFactor, kMinShelfFactor));
  const Coefficients from = started_ ? coefficients_ : next;
  started_ = true;
  coefficients_ = next;

  const double inv = 1.0 / frames;
  const double dg = (next.g - from.g) * inv, dk = (next.k - from.k) * inv;
  const double dm0 = (next.m0 - from.m0) * inv, dm1 = (next.m1 - from.m1) * inv;
  const double dm2 = (next.m2 - from.m2) * inv;
  double g = from.g, k = from.k, m0 = from.m0, m1 = from.m1, m2 = from.m2;
  double s1 = s1_, s2 = s2_, y1 = y1_, y2 = y2_;

  int i = 0;
  if (crossfadeLeft_ > 0) {
    // Restart crossfade. By linearity, the old filter fed the new input would give the new
    // output plus the free ringing of its old state; that ringing (run with the old
    // coefficients and no input) is added with a weight falling from 1 to 0, so the output
    // continues where the old one was and the cleared state takes over without a step.
    const Coefficients& old = fadeCoefficients_;
    const double oa1 = 1.0 / (1.0 + old.g * (old.g + old.k)), oa2 = old.g * oa1, oa3 = old.g * oa2;
    double f1 = fadeS1_, f2 = fadeS2_;
    for (; i < frames && crossfadeLeft_ > 0; ++i, --crossfadeLeft_) {
      g += dg, k += dk, m0 += dm0, m1 += dm1, m2 += dm2;
      const double a1 = 1.0 / (1.0 + g * (g + k)), a2 = g * a1, a3 = g * a2;
      const double x = buf[i];
      const double v3 = x - s2;
      const double v1 = a1 * s1 + a2 * v3;
      const double v2 = s2 + a2 * s1 + a3 * v3;
      s1 = 2.0 * v1 - s1, s2 = 2.0 * v2 - s2;
      const double y = m0 * x + m1 * v1 + m2 * v2;
      const double r1 = oa1 * f1 - oa2 * f2;
      const double r2 = f2 + oa2 * f1 - oa3 * f2;
      f1 = 2.0 * r1 - f1, f2 = 2.0 * r2 - f2;
      const double ring = old.m1 * r1 + old.m2 * r2;
      const double weight = static_cast<double>(crossfadeLeft_) / kCrossfadeSamples;
      const double out = y + ring * weight;
      y2 = y1, y1 = out;
      buf[i] = static_cast<float>(out);
    }
    fadeS1_ = f1, fadeS2_ = f2;
  }
  for (; i < frames; ++i) {
    g += dg, k += dk, m0 += dm0, m1 += dm1, m2 += dm2;
    const double a1 = 1.0 / (1.0 + g * (g + k)), a2 = g * a1, a3 = g * a2;
    const double x = buf[i];
    const double v3 = x - s2;
    const double v1 = a1 * s1 + a2 * v3;
    const double v2 = s2 + a2 * s1 + a3 * v3;
    s1 = 2.0 * v1 - s1, s2 = 2.0 * v2 - s2;
    const double y = m0 * x + m1 * v1 + m2 * v2;
    y2 = y1, y1 = y;
    buf[i] = static_cast<float>(y);
  }

  if (std::fabs(s1) < kFlushThreshold) s1 = 0.0;
  if (std::fabs(s2) < kFlushThreshold) s2 = 0.0;
  if (std::fabs(y1) < kFlushThreshold) y1 = 0.0;
  if (std::fabs(y2) < kFlushThreshold) y2 = 0.0;
  s1_ = s1, s2_ = s2, y1_ = y1, y2_ = y2;
}

}  // namespace ziv
