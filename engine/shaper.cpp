// Oversampled, antiderivative-antialiased waveshaper with a fixed 7-sample latency; see shaper.h.
#include "engine/shaper.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace ziv {

namespace {

constexpr double kTwoPiD = 6.283185307179586;

// Double-rate interpolator (linear phase, centre at tap 5). Each polyphase branch (even taps,
// odd taps) sums to exactly 0.5, so a constant input leaves no image at the base rate's Nyquist.
constexpr double kUp[11] = {1.428834870e-03,  -6.253977860e-02, -6.797576276e-02, 8.282907173e-02,
                            3.165469279e-01,  4.594214137e-01,  3.165469279e-01,  8.282907173e-02,
                            -6.797576276e-02, -6.253977860e-02, 1.428834870e-03};
// Double-rate decimator (linear phase, centre between taps 8 and 9), unity gain at DC.
constexpr double kDown[18] = {
    -1.630592683e-02, -1.249457118e-02, 2.212383560e-02, 3.792964395e-02, -1.565851019e-02, -8.201119168e-02,
    -2.451394752e-02, 1.911067092e-01,  3.998239587e-01, 3.998239587e-01, 1.911067092e-01,  -2.451394752e-02,
    -8.201119168e-02, -1.565851019e-02, 3.792964395e-02, 2.212383560e-02, -1.249457118e-02, -1.630592683e-02};
constexpr double kUpGain = 2.0;  // zero-stuffing halves the level

// Drive ranges (drive 0 .. 1 maps exponentially between the two ends).
constexpr double kClipMaxGain = 16.0;
constexpr double kSineMaxGain = 4.0 * 3.141592653589793;
constexpr double kFoldMaxGain = 8.0;
constexpr double kCrushMaxLevels = 32.0;  // levels per unit at drive 0
constexpr double kCrushMinLevels = 2.0;   // at drive 1

// Clip curve: u - 4u^3/27 up to the knee at 1.5 (slope 1 at 0, slope 0 and value 1 at the knee).
constexpr double kClipKnee = 1.5;
constexpr double kClipCubic = 4.0 / 27.0;

// Fold curve: a triangle of period 4 through the origin with slope 1.
constexpr double kFoldPeriod = 4.0;

// Below this step between consecutive double-rate inputs the antiderivative quotient loses
// precision; the curve is then evaluated at the midpoint instead.
constexpr double kAdaaMinStep = 1e-5;

// sin(2 pi t) by reduction to a quarter period and an odd Taylor polynomial to degree 15
// (error below 1e-11), much faster than the library's sin and accurate enough for the
// antiderivative differences.
double sinCycles(double t) {
  t -= std::floor(t + 0.5);  // -0.5 .. 0.5
  if (t > 0.25) t = 0.5 - t;
  if (t < -0.25) t = -0.5 - t;
  const double x = kTwoPiD * t;
  const double x2 = x * x;
  return x * (1.0 + x2 * (-1.0 / 6 +
                          x2 * (1.0 / 120 +
                                x2 * (-1.0 / 5040 +
                                      x2 * (1.0 / 362880 + x2 * (-1.0 / 39916800 +
                                                                 x2 * (1.0 / 6227020800.0 +
                                                                       x2 * (-1.0 / 1307674368000.0))))))));
}
double cosCycles(double t) {
  return sinCycles(t + 0.25);
}

}  // namespace

void Shaper::reset() {
  std::fill(std::begin(input_), std::end(input_), 0.0f);
  std::fill(std::begin(wetHistory_), std::end(wetHistory_), 0.0);
  inputPos_ = 0;
  lastU_ = 0.0;
  lastF_ = 0.0;
  started_ = false;
  wetRunning_ = false;
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

namespace {

// The four curves, one instantiation per mode so the span loops inline (and vectorise) them.
template <int kMode>
double curve(double u) {
  if constexpr (kMode == kShaperSine) {
    return sinCycles(u / kTwoPiD);
  } else if constexpr (kMode == kShaperCrush) {
    return u - sinCycles(u) / kTwoPiD;
  } else if constexpr (kMode == kShaperFold) {
    const double s = u + 1.0 - kFoldPeriod * std::floor((u + 1.0) / kFoldPeriod);  // 0 .. 4
    return s <= 2.0 ? s - 1.0 : 3.0 - s;
  } else {
    if (u >= kClipKnee) return 1.0;
    if (u <= -kClipKnee) return -1.0;
    return u - kClipCubic * u * u * u;
  }
}

// Antiderivatives of the curves above, each 0 at u = 0.
template <int kMode>
double curveIntegral(double u) {
  if constexpr (kMode == kShaperSine) {
    return 1.0 - cosCycles(u / kTwoPiD);
  } else if constexpr (kMode == kShaperCrush) {
    return 0.5 * u * u + (cosCycles(u) - 1.0) / (kTwoPiD * kTwoPiD);
  } else if constexpr (kMode == kShaperFold) {
    // The triangle integrates to 0 over a period, so its antiderivative is periodic too.
    const double s = u + 1.0 - kFoldPeriod * std::floor((u + 1.0) / kFoldPeriod);
    const double g = s <= 2.0 ? 0.5 * s * s - s : 3.0 * (s - 2.0) - 0.5 * (s * s - 4.0);
    return g + 0.5;  // G(1) = -0.5 at u = 0
  } else {
    // Beyond the knee the curve is flat at 1, so the integral grows by the distance past it.
    // Written without a branch: the signal crosses the knee too often for prediction.
    const double a = std::fabs(u);
    const double c = std::min(a, kClipKnee);
    const double c2 = c * c;
    return 0.5 * c2 - 0.25 * kClipCubic * c2 * c2 + (a - c);
  }
}

}  // namespace

double Shaper::antiderivative(int mode, double u) {
  switch (mode) {
    case kShaperSine:
      return curveIntegral<kShaperSine>(u);
    case kShaperCrush:
      return curveIntegral<kShaperCrush>(u);
    case kShaperFold:
      return curveIntegral<kShaperFold>(u);
    default:
      return curveIntegral<kShaperClip>(u);
  }
}

void Shaper::pushInput(float x) {
  input_[inputPos_] = x;
  input_[inputPos_ + kHistory] = x;
  inputPos_ = (inputPos_ + 1) & (kHistory - 1);
}

template <int kMode>
void Shaper::shapeSpan(const float* line, int count, double gain, double dGain, double outputGain,
                       double dOut, double* wet) {
  // Double-rate samples, each array led by the previous block's last one.
  double u[2 * kMaxBlock + 1];
  double integral[2 * kMaxBlock + 1];
  u[0] = lastU_;
  integral[0] = lastF_;
  // Interpolation. Both FIRs are symmetric (linear phase), so mirrored taps share one
  // multiplication.
  for (int i = 0; i < count; ++i) {
    const float* x = line + i;
    const double even = kUp[0] * (static_cast<double>(x[0]) + x[-5]) +
                        kUp[2] * (static_cast<double>(x[-1]) + x[-4]) +
                        kUp[4] * (static_cast<double>(x[-2]) + x[-3]);
    const double odd = kUp[1] * (static_cast<double>(x[0]) + x[-4]) +
                       kUp[3] * (static_cast<double>(x[-1]) + x[-3]) + kUp[5] * x[-2];
    u[2 * i + 1] = kUpGain * (gain + (i + 0.5) * dGain) * even;
    u[2 * i + 2] = kUpGain * (gain + (i + 1) * dGain) * odd;
  }
  const int n = 2 * count;
  for (int j = 1; j <= n; ++j) integral[j] = curveIntegral<kMode>(u[j]);

  // The shaped samples behind the decimator's history, then the mean of the curve between
  // consecutive inputs.
  double y[kWetHistory + 2 * kMaxBlock];
  std::copy(std::begin(wetHistory_), std::end(wetHistory_), y);
  double* shaped = y + kWetHistory;
  for (int j = 1; j <= n; ++j) {
    const double du = u[j] - u[j - 1];
    const double divisor = std::fabs(du) > kAdaaMinStep ? du : 1.0;
    shaped[j - 1] = (integral[j] - integral[j - 1]) / divisor;
  }
  // Where consecutive inputs nearly coincide the quotient loses precision: the curve at their
  // midpoint instead. A separate, rarely taken pass keeps the loop above free of branches.
  for (int j = 1; j <= n; ++j) {
    if (!(std::fabs(u[j] - u[j - 1]) > kAdaaMinStep)) shaped[j - 1] = curve<kMode>(0.5 * (u[j] + u[j - 1]));
  }
  lastU_ = u[n];
  lastF_ = integral[n];
  std::copy(y + n, y + n + kWetHistory, wetHistory_);

  if (wet == nullptr) return;
  // Decimation at the even double-rate instants, which puts the whole chain's delay at exactly
  // 14 double-rate samples.
  for (int i = 0; i < count; ++i) {
    const double* w = shaped + 2 * i;
    double sum = 0.0;
    for (int k = 0; k < kDownTaps / 2; ++k) sum += kDown[k] * (w[-k] + w[k + 1 - kDownTaps]);
    wet[i] = sum * (outputGain + (i + 1) * dOut);
  }
}

template <int kMode>
void Shaper::renderWet(float* buf, int frames, const Curve& from, const Curve& to, float mix0, float mix) {
  // The input as one line: the history ring, oldest first, then this block.
  float line[kHistory + kMaxBlock];
  for (int k = 0; k < kHistory; ++k) line[k] = input_[(inputPos_ + k) & (kHistory - 1)];
  std::copy(buf, buf + frames, line + kHistory);
  for (int i = 0; i < frames; ++i) pushInput(buf[i]);

  if (!wetRunning_) {
    // Re-prime the chain over the recent input so it continues as if it had never stopped.
    std::fill(std::begin(wetHistory_), std::end(wetHistory_), 0.0);
    lastU_ = 0.0;
    lastF_ = 0.0;
    shapeSpan<kMode>(line + kHistory - kPrimeSamples, kPrimeSamples, from.inputGain, 0.0, from.outputGain,
                     0.0, nullptr);
    wetRunning_ = true;
  }

  const double inv = 1.0 / frames;
  double wet[kMaxBlock];
  shapeSpan<kMode>(line + kHistory, frames, from.inputGain, (to.inputGain - from.inputGain) * inv,
                   from.outputGain, (to.outputGain - from.outputGain) * inv, wet);
  const double dMix = (static_cast<double>(mix) - mix0) * inv;
  for (int i = 0; i < frames; ++i) {
    const double dry = line[kHistory + i - kLatency];
    const double m = mix0 + (i + 1) * dMix;
    buf[i] = static_cast<float>(dry + (wet[i] - dry) * m);
  }
}

void Shaper::render(float* buf, int frames, int mode, float drive, float mix) {
  if (frames <= 0) return;
  if (mode < kShaperClip || mode > kShaperFold) mode = kShaperClip;
  mix = std::min(std::max(mix, 0.0f), 1.0f);
  drive = std::min(std::max(drive, 0.0f), 1.0f);
  if (!started_) {
    drive_ = drive;
    mix_ = mix;
    mode_ = mode;
    started_ = true;
  }
  if (mode != mode_) {
    // The antiderivative state belongs to the curve: restate it for the new one.
    lastF_ = antiderivative(mode, lastU_);
    mode_ = mode;
  }
  const float mix0 = mix_;
  const Curve from = curveFor(mode, drive_);
  const Curve to = curveFor(mode, drive);
  drive_ = drive;
  mix_ = mix;

  if (mix0 <= 0.0f && mix <= 0.0f) {
    // Bypass: a pure delay line.
    wetRunning_ = false;
    for (int i = 0; i < frames; ++i) {
      pushInput(buf[i]);
      buf[i] = input_[((inputPos_ - 1 - kLatency) & (kHistory - 1)) + kHistory];
    }
    return;
  }
  switch (mode) {
    case kShaperSine:
      renderWet<kShaperSine>(buf, frames, from, to, mix0, mix);
      break;
    case kShaperCrush:
      renderWet<kShaperCrush>(buf, frames, from, to, mix0, mix);
      break;
    case kShaperFold:
      renderWet<kShaperFold>(buf, frames, from, to, mix0, mix);
      break;
    default:
      renderWet<kShaperClip>(buf, frames, from, to, mix0, mix);
      break;
  }
}

}  // namespace ziv
