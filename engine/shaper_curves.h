// The shaper's four curves (see shaper.h), their first and second antiderivatives (each 0 at
// u = 0), and the shaped value where the antiderivative quotient's steps are too small for its
// precision. One template instantiation per mode, inline, so that the shaper's span loops inline
// and vectorise them. Limits: the periodic curves reduce their argument with floorSmall, exact
// only below 2^31 in magnitude (the shaper clamps its input far below that). Internal linkage:
// shaper.cpp, their one user, is compiled once per instruction set (engine/isa.h), and each
// pass must keep its own copies.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "engine/shaper.h"

namespace ziv::shaping {
namespace {

constexpr double kTwoPiD = 6.283185307179586;

// Clip curve: u - 4u^3/27 up to the knee at 1.5 (slope 1 at 0, slope 0 and value 1 at the knee).
constexpr double kClipKnee = 1.5;
constexpr double kClipCubic = 4.0 / 27.0;

// Fold curve: a triangle of period 4 through the origin with slope 1.
constexpr double kFoldPeriod = 4.0;

// floor(t) for |t| below 2^31 through a 32-bit truncation: unlike std::floor without SSE4.1,
// loops over it vectorise.
inline double floorSmall(double t) {
  const double truncated = static_cast<double>(static_cast<std::int32_t>(t));
  return truncated > t ? truncated - 1.0 : truncated;
}

// sin(2 pi t) by reduction to a quarter period and an odd Taylor polynomial to degree 15
// (error below 1e-11), much faster than the library's sin and accurate enough for the
// antiderivative differences.
inline double sinCycles(double t) {
  t -= floorSmall(t + 0.5);  // -0.5 .. 0.5
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
inline double cosCycles(double t) {
  return sinCycles(t + 0.25);
}

// The four curves, one instantiation per mode so the span loops inline (and vectorise) them.
template <int kMode>
double curve(double u) {
  if constexpr (kMode == kShaperSine) {
    return sinCycles(u / kTwoPiD);
  } else if constexpr (kMode == kShaperCrush) {
    return u - sinCycles(u) / kTwoPiD;
  } else if constexpr (kMode == kShaperFold) {
    const double s = u + 1.0 - kFoldPeriod * floorSmall((u + 1.0) / kFoldPeriod);  // 0 .. 4
    return s <= 2.0 ? s - 1.0 : 3.0 - s;
  } else {
    const double c = std::min(std::max(u, -kClipKnee), kClipKnee);
    return c - kClipCubic * c * c * c;
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
    const double s = u + 1.0 - kFoldPeriod * floorSmall((u + 1.0) / kFoldPeriod);
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

// Second antiderivatives, each 0 at u = 0.
template <int kMode>
double curveIntegral2(double u) {
  if constexpr (kMode == kShaperSine) {
    return u - sinCycles(u / kTwoPiD);
  } else if constexpr (kMode == kShaperCrush) {
    return u * u * u / 6.0 + (sinCycles(u) / kTwoPiD - u) / (kTwoPiD * kTwoPiD);
  } else if constexpr (kMode == kShaperFold) {
    // The first antiderivative has the mean 1/2, so this one is u / 2 plus a periodic part,
    // integrated piece by piece over the period.
    const double s = u + 1.0 - kFoldPeriod * floorSmall((u + 1.0) / kFoldPeriod);
    const double v = s - 2.0;
    const double w = s <= 2.0 ? s * s * (s / 6.0 - 0.5) : v * v * (0.5 - v / 6.0) - 2.0 / 3.0;
    return 0.5 * u + w + 1.0 / 3.0;
  } else {
    // The cubic's part up to the knee, then the first antiderivative at the knee growing by the
    // distance past it (signed: the curve is odd, its second antiderivative too), plus that
    // distance's own integral. Clamped rather than mirrored, so the loop vectorises.
    const double c = std::min(std::max(u, -kClipKnee), kClipKnee);
    const double e = u - c;
    const double c2 = c * c;
    const double inner = c * c2 * (1.0 / 6.0 - (kClipCubic / 20.0) * c2);
    const double atKnee = c2 * (0.5 - (kClipCubic / 4.0) * c2);
    return inner + e * (atKnee + 0.5 * std::fabs(e));
  }
}

// The shaped value where some of the steps between u2, u1 and u0 are too small for the plain
// quotient (minStep): the limits of twice the second divided difference of the second
// antiderivative (g0..g2 are its values at u0..u2) as inputs coincide, from the first
// antiderivative and the curve itself.
template <int kMode>
double spanMean(double u0, double u1, double u2, double g0, double g1, double g2, double minStep) {
  const double d01 = u0 - u1, d12 = u1 - u2, d02 = u0 - u2;
  if (std::fabs(d02) > minStep) {
    const double a = std::fabs(d01) > minStep ? (g0 - g1) / d01 : curveIntegral<kMode>(0.5 * (u0 + u1));
    const double b = std::fabs(d12) > minStep ? (g1 - g2) / d12 : curveIntegral<kMode>(0.5 * (u1 + u2));
    return 2.0 * (a - b) / d02;
  }
  // Out to u1 and back to where it started: the difference with a repeated point.
  const double back = 0.5 * (u0 + u2);
  const double delta = u1 - back;
  if (std::fabs(delta) > minStep) {
    return 2.0 / delta * ((g1 - curveIntegral2<kMode>(back)) / delta - curveIntegral<kMode>(back));
  }
  return curve<kMode>((u0 + u1 + u2) / 3.0);
}

}  // namespace
}  // namespace ziv::shaping
