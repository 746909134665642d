// Oversampled, antiderivative-antialiased waveshaper with a fixed 7-sample latency; see shaper.h.
#include "engine/shaper.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>

#include "engine/fir_design.h"
#include "engine/isa.h"
#include "engine/shaper_curves.h"

namespace ziv {

// The coefficients, designed once (see filters()).
struct ShaperFilters {
  float half[3];  // the half-sample interpolator's outer, middle and inner tap pairs
  float down[9];  // the decimator's taps 0..8 (8 is the centre; 9..16 mirror 7..0)
};

namespace {

using shaping::curve;
using shaping::curveIntegral2;
using shaping::kTwoPiD;
using shaping::spanMean;

}  // namespace

#ifndef ZIV_AVX2_PASS

namespace {

// The oversampling filters' bands, as fractions of the base rate. Both filters are flat up to
// kPassEdge. The interpolator's error weighs kLowWeight times more below kLowEdge: the images of
// the low, loud partials are the largest, and the drive multiplies them before the curve mixes
// them with everything else. The decimator stops from the base rate's Nyquist frequency, so no
// shaped component above it folds back, and weighs kFarStopWeight above kFarStopEdge, whose
// components would fold back below 0.227 of the base rate (10 kHz at 44.1 kHz), where aliases
// are heard most. The figures in shaper.h come from these values.
constexpr double kPassEdge = 0.28;
constexpr double kLowEdge = 0.068;
constexpr double kLowWeight = 1000.0;
constexpr double kStopEdge = 0.5;
constexpr double kNearStopWeight = 30.0;
constexpr double kFarStopEdge = 0.773;
constexpr double kFarStopWeight = 1000.0;

// Amplitude of the second-order antiderivative step for a straight-line curve: it takes the
// mean of three consecutive double-rate samples. The decimator divides it out in its pass band,
// so small signals come through flat there.
double inverseThreeSampleMean(double w) {
  return 3.0 / (1.0 + 2.0 * std::cos(w));
}
double one(double) {
  return 1.0;
}

ShaperFilters designFilters() {
  ShaperFilters f{};
  // The interpolated sample halfway between two inputs: a 6-tap half-sample delay, least-squares
  // over the pass band at the base rate. With the inputs themselves as the other phase it is an
  // 11-tap half-band interpolator, whose images of the pass band lie from 1 - kPassEdge of the
  // base rate up, where the stop band's error mirrors the pass band's.
  double half[6] = {};
  const FirBand halfBands[] = {{0.0, kTwoPiD * kLowEdge, kLowWeight, one},
                               {kTwoPiD * kLowEdge, kTwoPiD * kPassEdge, 1.0, one}};
  designLinearPhaseFir(6, halfBands, 2, half);
  // The decimator, at the double rate, where the base rate's Nyquist frequency is pi / 2.
  double down[17] = {};
  const double base = 0.5 * kTwoPiD;  // the base rate in radians per double-rate sample
  const FirBand downBands[] = {{0.0, base * kPassEdge, 1.0, inverseThreeSampleMean},
                               {base * kStopEdge, base * kFarStopEdge, kNearStopWeight, nullptr},
                               {base * kFarStopEdge, base, kFarStopWeight, nullptr}};
  designLinearPhaseFir(17, downBands, 3, down);
  // Both pass a constant exactly.
  double halfSum = 0.0, downSum = 0.0;
  for (double h : half) halfSum += h;
  for (double h : down) downSum += h;
  for (int k = 0; k < 3; ++k) f.half[k] = static_cast<float>(half[k] / halfSum);
  for (int k = 0; k < 9; ++k) f.down[k] = static_cast<float>(down[k] / downSum);
  return f;
}

// The filters shared by every shaper, designed on first use (a shaper's construction).
const ShaperFilters& filters() {
  static const ShaperFilters kFilters = designFilters();
  return kFilters;
}

// Drive ranges (drive 0 .. 1 maps exponentially between the two ends).
constexpr double kClipMaxGain = 16.0;
constexpr double kSineMaxGain = 4.0 * 3.141592653589793;
constexpr double kFoldMaxGain = 8.0;
constexpr double kCrushMaxLevels = 32.0;  // levels per unit at drive 0
constexpr double kCrushMinLevels = 2.0;   // at drive 1

}  // namespace

Shaper::Shaper() : filters_(&filters()) {}

void Shaper::reset() {
  std::fill(std::begin(history_), std::end(history_), 0.0f);
  std::fill(std::begin(earlyHistory_), std::end(earlyHistory_), 0.0f);
  std::fill(std::begin(lateHistory_), std::end(lateHistory_), 0.0f);
  std::fill(std::begin(lastU_), std::end(lastU_), 0.0);
  std::fill(std::begin(lastF_), std::end(lastF_), 0.0);
  quiet_ = false;
  started_ = false;
  wetRunning_ = false;
  spanLength_ = 0;
  spanDone_ = 0;
}

Shaper::Curve Shaper::curveFor(int mode, float drive) {
  const double d = std::min(std::max(static_cast<double>(drive), 0.0), 1.0);
  switch (mode) {
    case kShaperSine:
      return {mode, std::pow(kSineMaxGain, d), 1.0};
    case kShaperCrush: {
      const double levels = kCrushMaxLevels * std::pow(kCrushMinLevels / kCrushMaxLevels, d);
      return {mode, levels, 1.0 / levels};
    }
    case kShaperFold:
      return {mode, std::pow(kFoldMaxGain, d), 1.0};
    case kShaperClip:
    default:
      return {kShaperClip, std::pow(kClipMaxGain, d), 1.0};
  }
}

double Shaper::transfer(int mode, float drive, double x) {
  const Curve c = curveFor(mode, drive);
  const double u = c.inputGain * x;
  switch (c.mode) {
    case kShaperSine:
      return c.outputGain * curve<kShaperSine>(u);
    case kShaperCrush:
      return c.outputGain * curve<kShaperCrush>(u);
    case kShaperFold:
      return c.outputGain * curve<kShaperFold>(u);
    default:
      return c.outputGain * curve<kShaperClip>(u);
  }
}

double Shaper::antiderivative2(int mode, double u) {
  switch (mode) {
    case kShaperSine:
      return curveIntegral2<kShaperSine>(u);
    case kShaperCrush:
      return curveIntegral2<kShaperCrush>(u);
    case kShaperFold:
      return curveIntegral2<kShaperFold>(u);
    default:
      return curveIntegral2<kShaperClip>(u);
  }
}

void Shaper::aim(int frames, int mode, float drive, float mix) {
  if (frames <= 0) return;
  if (mode < kShaperClip || mode > kShaperFold) mode = kShaperClip;
  mix = std::min(std::max(mix, 0.0f), 1.0f);
  drive = std::min(std::max(drive, 0.0f), 1.0f);
  if (!started_) {
    started_ = true;
    mode_ = mode;
    drive_ = drive;
    mix_ = mix;
    target_ = curveFor(mode, drive);
    spanLength_ = 0;
    spanDone_ = 0;
  }
  // Where the rendered samples left the ramps: at the span's end, exactly its targets.
  const int left = spanLength_ - spanDone_;
  Curve from{mode_, target_.inputGain - left * gainStep_, target_.outputGain - left * outputStep_};
  const float mix0 = mix_ - left * mixStep_;
  if (mode != mode_) {
    // The antiderivative state belongs to the curve: restate it for the new one, which starts
    // from the drive last aimed at.
    for (int k = 0; k < 2; ++k) lastF_[k] = antiderivative2(mode, lastU_[k]);
    from = curveFor(mode, drive_);
  }
  const Curve to = mode == mode_ && drive == drive_ ? target_ : curveFor(mode, drive);
  mode_ = mode;
  drive_ = drive;
  mix_ = mix;
  target_ = to;

  const double inv = 1.0 / frames;
  gainStart_ = from.inputGain;
  gainStep_ = (to.inputGain - from.inputGain) * inv;
  outputStart_ = static_cast<float>(from.outputGain);
  outputStep_ = static_cast<float>((to.outputGain - from.outputGain) * inv);
  mixStart_ = mix0;
  mixStep_ = (mix - mix0) / static_cast<float>(frames);
  bypass_ = mix0 <= 0.0f && mix <= 0.0f;
  spanLength_ = frames;
  spanDone_ = 0;
}

void Shaper::render(float* buf, int frames) {
  isa::dispatch([&](auto isa) { renderWith<decltype(isa)>(buf, frames); });
}

#endif  // ZIV_AVX2_PASS

// --- Rendering, compiled for each instruction set (engine/isa.h) ---

namespace {

// Below this step between double-rate inputs the antiderivative quotients lose precision (their
// rounding error grows as the inverse square of the steps); the exact limits for coinciding
// inputs, or the curve at the inputs' mean, are used instead (see shapeSteps).
constexpr double kAdaaMinStep = 1e-4;
// A piece whose inputs all stay within kAdaaMinStep / kAllNarrowMargin of zero has only narrow
// steps: a step is at most twice the largest input, and the margin's other factor of two covers
// the rounding of the gain ramp that the largest input is estimated from.
constexpr double kAllNarrowMargin = 4.0;

// The periodic curves' input is clamped to this magnitude, far beyond any level a voice reaches,
// so that every argument they reduce stays within 32-bit integers for floorSmall.
constexpr float kInputLimit = 1.0e4f;

// The shaped value where both steps behind a sample are too narrow for the quotient: the curve
// at the mean of its three inputs, exact to the square of the steps.
template <int kMode>
float curveAtMean(const double* u, int j) {
  return static_cast<float>(curve<kMode>((u[j] + u[j - 1] + u[j - 2]) / 3.0));
}

// The shaped samples of a piece (u and integral hold n + 2 inputs and their second
// antiderivatives, the first two from the previous piece; integral is filled here). Each sample
// depends on its own three inputs alone: the quotient where all its steps are wide, the curve at
// the inputs' mean where both its steps are narrow, the limits of spanMean otherwise. Returns
// how many samples had a step narrower than kAdaaMinStep.
template <int kMode>
int shapeSteps(const double* u, double* integral, int n, float* shaped) {
  for (int j = 2; j < n + 2; ++j) integral[j] = curveIntegral2<kMode>(u[j]);
  // The shaped samples: the curve's mean over the span of each three consecutive inputs, twice
  // the second divided difference of its second antiderivative over one common denominator.
  double step[2 * kMaxBlock + 2];  // the smallest of the three steps behind each sample
  for (int j = 2; j < n + 2; ++j) {
    const double d01 = u[j] - u[j - 1], d12 = u[j - 1] - u[j - 2], d02 = u[j] - u[j - 2];
    step[j] = std::min(std::min(std::fabs(d01), std::fabs(d12)), std::fabs(d02));
    const double numerator =
        (integral[j] - integral[j - 1]) * d12 - (integral[j - 1] - integral[j - 2]) * d01;
    shaped[j - 2] = static_cast<float>(2.0 * numerator / (step[j] > kAdaaMinStep ? d01 * d12 * d02 : 1.0));
  }
  // Where steps are too small the quotient loses precision: the other forms instead. Separate
  // passes, taken only when needed, keep the loop above free of branches.
  // Narrow steps are counted from the sign bits of kAdaaMinStep - step (set where the step is
  // wide) as integers, which vectorises where a comparison over doubles does not.
  std::uint64_t wideSteps = 0;
  for (int j = 2; j < n + 2; ++j) {
    const double margin = kAdaaMinStep - step[j];
    std::uint64_t bits;
    std::memcpy(&bits, &margin, sizeof bits);
    wideSteps += bits >> 63;
  }
  const int narrowSteps = n - static_cast<int>(wideSteps);
  // With many (quiet or slow input, a decaying tail), the samples whose two steps are both narrow
  // are filled in one vectorised pass, the others with a narrow step sample by sample; with few,
  // all of them sample by sample. Which pass fills a sample does not change its value.
  const bool many = narrowSteps > n / 8;
  if (many) {
    for (int j = 2; j < n + 2; ++j) {
      const double wider = std::max(std::fabs(u[j] - u[j - 1]), std::fabs(u[j - 1] - u[j - 2]));
      const float atMean = curveAtMean<kMode>(u, j);
      shaped[j - 2] = wider > kAdaaMinStep ? shaped[j - 2] : atMean;
    }
  }
  if (narrowSteps > 0) {
    for (int j = 2; j < n + 2; ++j) {
      if (step[j] > kAdaaMinStep) continue;
      const double wider = std::max(std::fabs(u[j] - u[j - 1]), std::fabs(u[j - 1] - u[j - 2]));
      if (wider > kAdaaMinStep) {
        shaped[j - 2] = static_cast<float>(spanMean<kMode>(u[j], u[j - 1], u[j - 2], integral[j],
                                                           integral[j - 1], integral[j - 2], kAdaaMinStep));
      } else if (!many) {
        shaped[j - 2] = curveAtMean<kMode>(u, j);
      }
    }
  }
  return narrowSteps;
}

}  // namespace

template <class Isa, int kMode>
void Shaper::shapeSpan(const float* line, int count, const Gains& gains, float* wet) {
  const ShaperFilters& f = *filters_;
  const float h0 = f.half[0], h1 = f.half[1], h2 = f.half[2];
  // Double-rate samples, each array led by the previous piece's last two.
  double u[2 * kMaxBlock + 2];
  double integral[2 * kMaxBlock + 2];
  u[0] = lastU_[0];
  u[1] = lastU_[1];
  integral[0] = lastF_[0];
  integral[1] = lastF_[1];
  // Interpolation: per base sample, the input three samples back, then the point halfway to the
  // next one (both 5 double-rate samples late), the latter in single precision like the input;
  // both clamped to kInputLimit for the curves that reduce their argument to a period (the clip's
  // arithmetic stays finite for any finite input).
  // The half-sample filter is symmetric, so mirrored taps share one multiplication.
  float held[kMaxBlock];  // the input itself, three samples back
  float between[kMaxBlock];
  for (int i = 0; i < count; ++i) {
    const float* x = line + i;
    const float mid = h0 * (x[0] + x[-5]) + h1 * (x[-1] + x[-4]) + h2 * (x[-2] + x[-3]);
    held[i] = x[-3];
    between[i] = mid;
  }
  if constexpr (kMode != kShaperClip) {
    for (int i = 0; i < count; ++i) {
      held[i] = std::min(std::max(held[i], -kInputLimit), kInputLimit);
      between[i] = std::min(std::max(between[i], -kInputLimit), kInputLimit);
    }
  }
  const double gain = gains.gain, dGain = gains.dGain;
  const int first = gains.first;
  if (dGain == 0.0) {  // the usual case: the drive holds still
    for (int i = 0; i < count; ++i) {
      u[2 * i + 2] = gain * held[i];
      u[2 * i + 3] = gain * between[i];
    }
  } else {
    for (int i = 0; i < count; ++i) {
      u[2 * i + 2] = (gain + (first + i + 0.5) * dGain) * held[i];
      u[2 * i + 3] = (gain + (first + i + 1) * dGain) * between[i];
    }
  }
  const int n = 2 * count;
  bool allNarrow = false;
  float shaped[2 * kMaxBlock];  // single precision from here: the filter needs no more
  if (quiet_) {
    // After a piece with many narrow steps, this piece's level decides whether all its steps are
    // narrow, so that it needs no quotients at all. The largest magnitude comes from the float
    // bit patterns as integers (they order alike), which vectorises where a maximum over floats
    // does not.
    std::int32_t peakBits = 0;
    for (int i = 0; i < count; ++i) {
      std::int32_t a, b;
      std::memcpy(&a, &held[i], sizeof a);
      std::memcpy(&b, &between[i], sizeof b);
      peakBits = std::max(peakBits, std::max(a & 0x7fffffff, b & 0x7fffffff));
    }
    float peak;
    std::memcpy(&peak, &peakBits, sizeof peak);
    const double largestGain = std::max(gain + first * dGain, gain + (first + count) * dGain);
    const double largest = std::max(largestGain * peak, std::max(std::fabs(u[0]), std::fabs(u[1])));
    allNarrow = kAllNarrowMargin * largest <= kAdaaMinStep;
    quiet_ = largest < 1.0;
  }
  if (allNarrow) {
    // Silence or a tail's last whispers: the curve at the inputs' mean throughout, as
    // shapeSteps would give, and the second antiderivative only where the next piece needs it.
    for (int j = 2; j < n + 2; ++j) shaped[j - 2] = curveAtMean<kMode>(u, j);
    integral[n] = curveIntegral2<kMode>(u[n]);
    integral[n + 1] = curveIntegral2<kMode>(u[n + 1]);
  } else if (shapeSteps<kMode>(u, integral, n, shaped) > n / 8) {
    quiet_ = true;
  }
  lastU_[0] = u[n];
  lastU_[1] = u[n + 1];
  lastF_[0] = integral[n];
  lastF_[1] = integral[n + 1];

  // The two phases apart, each behind its history, so that the decimator reads both with unit
  // strides.
  float early[kPhaseHistory + kMaxBlock];
  float late[kPhaseHistory + kMaxBlock];
  std::copy(std::begin(earlyHistory_), std::end(earlyHistory_), early);
  std::copy(std::begin(lateHistory_), std::end(lateHistory_), late);
  for (int i = 0; i < count; ++i) {
    early[kPhaseHistory + i] = shaped[2 * i];
    late[kPhaseHistory + i] = shaped[2 * i + 1];
  }
  std::copy(early + count, early + count + kPhaseHistory, earlyHistory_);
  std::copy(late + count, late + count + kPhaseHistory, lateHistory_);

  if (wet == nullptr) return;
  // Decimation at the second double-rate sample of each pair, which puts the whole chain's delay
  // at exactly 14 double-rate samples. The even taps fall on the late phase, the odd taps on the
  // early one; the decimator is symmetric, so mirrored taps share one multiplication.
  const float d0 = f.down[0], d1 = f.down[1], d2 = f.down[2], d3 = f.down[3], d4 = f.down[4];
  const float d5 = f.down[5], d6 = f.down[6], d7 = f.down[7], d8 = f.down[8];
  for (int i = 0; i < count; ++i) {
    const float* l = late + kPhaseHistory + i;
    const float* e = early + kPhaseHistory + i;
    const float sum = d0 * (l[0] + l[-8]) + d2 * (l[-1] + l[-7]) + d4 * (l[-2] + l[-6]) +
                      d6 * (l[-3] + l[-5]) + d8 * l[-4] + d1 * (e[0] + e[-7]) + d3 * (e[-1] + e[-6]) +
                      d5 * (e[-2] + e[-5]) + d7 * (e[-3] + e[-4]);
    wet[i] = sum * (gains.outputGain + static_cast<float>(first + i + 1) * gains.dOutput);
  }
}

template <class Isa, int kMode>
void Shaper::renderWet(const float* line, float* buf, int frames) {
  if (!wetRunning_) {
    // Re-prime the chain over the recent input so it continues as if it had never stopped.
    std::fill(std::begin(earlyHistory_), std::end(earlyHistory_), 0.0f);
    std::fill(std::begin(lateHistory_), std::end(lateHistory_), 0.0f);
    std::fill(std::begin(lastU_), std::end(lastU_), 0.0);
    std::fill(std::begin(lastF_), std::end(lastF_), 0.0);
    const Gains still{gainStart_, 0.0, outputStart_, 0.0f, 0};
    shapeSpan<Isa, kMode>(line + kHistory - kPrimeSamples, kPrimeSamples, still, nullptr);
    wetRunning_ = true;
  }

  float wet[kMaxBlock];
  const Gains gains{gainStart_, gainStep_, outputStart_, outputStep_, spanDone_};
  shapeSpan<Isa, kMode>(line + kHistory, frames, gains, wet);
  for (int i = 0; i < frames; ++i) {
    const float dry = line[kHistory + i - kLatency];
    const float m = mixStart_ + static_cast<float>(spanDone_ + i + 1) * mixStep_;
    buf[i] = dry + (wet[i] - dry) * m;
  }
}

template <class Isa>
void Shaper::renderWith(float* buf, int frames) {
  while (frames > 0) {
    // Past the aimed span: a span that holds its targets.
    if (spanDone_ == spanLength_) aim(kMaxBlock, mode_, drive_, mix_);
    const int n = std::min(std::min(frames, spanLength_ - spanDone_), kMaxBlock);
    renderPiece<Isa>(buf, n);
    spanDone_ += n;
    buf += n;
    frames -= n;
  }
}

template <class Isa>
void Shaper::renderPiece(float* buf, int frames) {
  // The input as one line: the history, oldest first, then this piece.
  float line[kHistory + kMaxBlock];
  std::copy(std::begin(history_), std::end(history_), line);
  std::copy(buf, buf + frames, line + kHistory);
  std::copy(line + frames, line + frames + kHistory, history_);

  if (bypass_) {
    // A pure delay line.
    wetRunning_ = false;
    std::copy(line + kHistory - kLatency, line + kHistory - kLatency + frames, buf);
    return;
  }
  switch (mode_) {
    case kShaperSine:
      renderWet<Isa, kShaperSine>(line, buf, frames);
      break;
    case kShaperCrush:
      renderWet<Isa, kShaperCrush>(line, buf, frames);
      break;
    case kShaperFold:
      renderWet<Isa, kShaperFold>(line, buf, frames);
      break;
    default:
      renderWet<Isa, kShaperClip>(line, buf, frames);
      break;
  }
}

template void Shaper::renderWith<isa::Compiled>(float*, int);

}  // namespace ziv
