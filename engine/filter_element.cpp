// Cookbook responses from a trapezoidal state-variable filter with a frequency slew per aimed
// span, per-sample coefficient ramps and a restart crossfade; see filter_element.h.
#include "engine/filter_element.h"

#include <algorithm>
#include <cmath>

#include "engine/dsp.h"
#include "engine/isa.h"

namespace ziv {

#ifndef ZIV_AVX2_PASS

namespace {

// w0 may move by this many radians per second (0 to pi in 100 ms).
constexpr double kMaxSlewPerSecond = 10.0 * 3.14159265358979323846;

// States below this are flushed to zero at every aim and reset, so a decaying tail never reaches
// denormal numbers even without flush-to-zero. (At aim, not after each render call: the state
// must not depend on how a span was cut into calls.)
constexpr double kFlushThreshold = 1e-20;

}  // namespace

void FilterElement::setSampleRate(float rate) {
  if (usableSampleRate(rate)) sampleRate_ = rate;
}

void FilterElement::flushTinyStates() {
  if (std::fabs(s1_) < kFlushThreshold) s1_ = 0.0;
  if (std::fabs(s2_) < kFlushThreshold) s2_ = 0.0;
}

void FilterElement::reset() {
  // What the old state would still have rung out is faded over the next samples.
  flushTinyStates();
  const Coefficients& old = current_;
  fadeA1_ = 1.0 / (1.0 + old.g * (old.g + old.k)), fadeA2_ = old.g * fadeA1_, fadeA3_ = old.g * fadeA2_;
  fadeM1_ = old.m1, fadeM2_ = old.m2;
  fadeS1_ = s1_, fadeS2_ = s2_;
  crossfadeLeft_ = (s1_ != 0.0 || s2_ != 0.0) ? kCrossfadeSamples : 0;
  started_ = false;
  rampLeft_ = 0;
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

void FilterElement::aim(int frames, int shape, float freqHz, float q, float gain, float shelfFactor) {
  frames = std::max(frames, 1);  // an empty span (a caller's error) reaches its set in one sample
  flushTinyStates();
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
  target_ = design(shape, tanHalfW0_, std::max(q, kMinQ), gain, std::max(shelfFactor, kMinShelfFactor));
  if (!started_) current_ = target_;
  started_ = true;

  const double inv = 1.0 / frames;
  step_.g = (target_.g - current_.g) * inv, step_.k = (target_.k - current_.k) * inv;
  step_.m0 = (target_.m0 - current_.m0) * inv, step_.m1 = (target_.m1 - current_.m1) * inv;
  step_.m2 = (target_.m2 - current_.m2) * inv;
  rampLeft_ = frames;
}

bool FilterElement::moving() const {
  const Coefficients& d = step_;
  const bool ramping = d.g != 0.0 || d.k != 0.0 || d.m0 != 0.0 || d.m1 != 0.0 || d.m2 != 0.0;
  return (ramping && rampLeft_ > 0) || crossfadeLeft_ > 0;
}

void FilterElement::render(float* buf, int frames) {
  isa::dispatch([&](auto isa) { renderWith<decltype(isa)>(buf, frames); });
}

void FilterElement::renderStereoPairs(FilterElement* const (&left)[2], FilterElement* const (&right)[2],
                                      float* leftBuf, float* rightBuf, int frames) {
  isa::dispatch(
      [&](auto isa) { renderStereoPairsWith<decltype(isa)>(left, right, leftBuf, rightBuf, frames); });
}

#endif  // ZIV_AVX2_PASS

// --- Rendering, compiled for each instruction set (engine/isa.h) ---

namespace {

// One sample of the trapezoidal state-variable filter with the integrator gains a1 = 1 / (1 +
// g (g + k)), a2 = g a1, a3 = g a2: advances the states s1, s2 and gives the band-pass (v1) and
// low-pass (v2) outputs.
inline void tick(double a1, double a2, double a3, double x, double& s1, double& s2, double& v1, double& v2) {
  const double v3 = x - s2;
  v1 = a1 * s1 + a2 * v3;
  v2 = s2 + a2 * s1 + a3 * v3;
  s1 = 2.0 * v1 - s1, s2 = 2.0 * v2 - s2;
}

}  // namespace

template <class Isa>
void FilterElement::renderWith(float* buf, int frames) {
  if (frames <= 0) return;
  const int ramped = std::min(frames, rampLeft_);
  filter<Isa>(buf, ramped);
  rampLeft_ -= ramped;
  if (rampLeft_ == 0) {
    // The span is over: its set holds exactly (not the sum of the steps) until the next aim.
    current_ = target_;
    step_ = Coefficients{0.0, 0.0, 0.0, 0.0, 0.0};
  }
  filter<Isa>(buf + ramped, frames - ramped);
}

template <class Isa>
void FilterElement::filter(float* buf, int frames) {
  const Coefficients d = step_;
  double g = current_.g, k = current_.k, m0 = current_.m0, m1 = current_.m1, m2 = current_.m2;
  double s1 = s1_, s2 = s2_, y1 = y1_, y2 = y2_;

  int i = 0;
  if (crossfadeLeft_ > 0) {
    // Restart crossfade. By linearity, the old filter fed the new input would give the new
    // output plus the free ringing of its old state; that ringing (run with the old
    // coefficients and no input) is added with a weight falling from 1 to 0, so the output
    // continues where the old one was and the cleared state takes over without a step.
    double f1 = fadeS1_, f2 = fadeS2_;
    for (; i < frames && crossfadeLeft_ > 0; ++i, --crossfadeLeft_) {
      g += d.g, k += d.k, m0 += d.m0, m1 += d.m1, m2 += d.m2;
      const double a1 = 1.0 / (1.0 + g * (g + k)), a2 = g * a1, a3 = g * a2;
      const double x = buf[i];
      double v1, v2, r1, r2;
      tick(a1, a2, a3, x, s1, s2, v1, v2);
      tick(fadeA1_, fadeA2_, fadeA3_, 0.0, f1, f2, r1, r2);
      const double ring = fadeM1_ * r1 + fadeM2_ * r2;
      const double weight = static_cast<double>(crossfadeLeft_) / kCrossfadeSamples;
      const double out = m0 * x + m1 * v1 + m2 * v2 + ring * weight;
      y2 = y1, y1 = out;
      buf[i] = static_cast<float>(out);
    }
    fadeS1_ = f1, fadeS2_ = f2;
  }
  // Settled coefficients (a knob at rest, the master EQ nearly always) keep the division out of
  // the loop, with the same results; the compiler splits the loop on the test.
  const bool ramping = d.g != 0.0 || d.k != 0.0 || d.m0 != 0.0 || d.m1 != 0.0 || d.m2 != 0.0;
  double a1 = 1.0 / (1.0 + g * (g + k)), a2 = g * a1, a3 = g * a2;
  for (; i < frames; ++i) {
    if (ramping) {
      g += d.g, k += d.k, m0 += d.m0, m1 += d.m1, m2 += d.m2;
      a1 = 1.0 / (1.0 + g * (g + k)), a2 = g * a1, a3 = g * a2;
    }
    const double x = buf[i];
    double v1, v2;
    tick(a1, a2, a3, x, s1, s2, v1, v2);
    const double y = m0 * x + m1 * v1 + m2 * v2;
    y2 = y1, y1 = y;
    buf[i] = static_cast<float>(y);
  }
  current_.g = g, current_.k = k, current_.m0 = m0, current_.m1 = m1, current_.m2 = m2;
  s1_ = s1, s2_ = s2, y1_ = y1, y2_ = y2;
}

template <class Isa>
void FilterElement::renderStereoPairsWith(FilterElement* const (&left)[2], FilterElement* const (&right)[2],
                                          float* leftBuf, float* rightBuf, int frames) {
  FilterElement* const elements[4] = {left[0], left[1], right[0], right[1]};
  bool still = true;
  for (const FilterElement* e : elements) still = still && !e->moving();
  if (!still) {
    for (int k = 0; k < 2; ++k) left[k]->renderWith<Isa>(leftBuf, frames);
    for (int k = 0; k < 2; ++k) right[k]->renderWith<Isa>(rightBuf, frames);
    return;
  }
  if (frames <= 0) return;
  filterStereoPairs<Isa>(elements, leftBuf, rightBuf, frames);
  // What renderWith does at the end of a span, which changes nothing here but the bookkeeping.
  for (FilterElement* e : elements) {
    e->rampLeft_ -= std::min(frames, e->rampLeft_);
    if (e->rampLeft_ == 0) {
      e->current_ = e->target_;
      e->step_ = Coefficients{0.0, 0.0, 0.0, 0.0, 0.0};
    }
  }
}

template <class Isa>
void FilterElement::filterStereoPairs(FilterElement* const (&elements)[4], float* leftBuf, float* rightBuf,
                                      int frames) {
  // Each element's integrator gains and output mix, as filter() works them out, and its state.
  struct Running {
    double a1, a2, a3, m0, m1, m2, s1, s2, y1, y2;
  };
  Running run[4];
  for (int e = 0; e < 4; ++e) {
    const FilterElement& f = *elements[e];
    const Coefficients& c = f.current_;
    const double a1 = 1.0 / (1.0 + c.g * (c.g + c.k)), a2 = c.g * a1, a3 = c.g * a2;
    run[e] = {a1, a2, a3, c.m0, c.m1, c.m2, f.s1_, f.s2_, f.y1_, f.y2_};
  }
  float* const bufs[2] = {leftBuf, rightBuf};
  for (int i = 0; i < frames; ++i) {
    for (int channel = 0; channel < 2; ++channel) {
      float x = bufs[channel][i];
      for (int stage = 0; stage < 2; ++stage) {
        Running& r = run[2 * channel + stage];
        double v1, v2;
        tick(r.a1, r.a2, r.a3, x, r.s1, r.s2, v1, v2);
        const double y = r.m0 * x + r.m1 * v1 + r.m2 * v2;
        r.y2 = r.y1, r.y1 = y;
        // Single precision between the stages, as the buffer holds it between two renders.
        x = static_cast<float>(y);
      }
      bufs[channel][i] = x;
    }
  }
  for (int e = 0; e < 4; ++e) {
    FilterElement& f = *elements[e];
    f.s1_ = run[e].s1, f.s2_ = run[e].s2, f.y1_ = run[e].y1, f.y2_ = run[e].y2;
  }
}

template void FilterElement::renderWith<isa::Compiled>(float*, int);
template void FilterElement::renderStereoPairsWith<isa::Compiled>(FilterElement* const (&)[2],
                                                                  FilterElement* const (&)[2], float*, float*,
                                                                  int);

}  // namespace ziv
