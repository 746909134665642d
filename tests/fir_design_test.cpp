// The least-squares linear-phase FIR design: symmetric taps, the bands it was asked for, the
// half-band structure that equal, mirrored bands imply, and its refusal of bad lengths.
#include "engine/fir_design.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>

namespace ziv {
namespace {

constexpr double kPiD = 3.141592653589793;

double one(double) {
  return 1.0;
}

double magnitudeDb(const double* taps, int length, double w) {
  std::complex<double> sum = 0.0;
  for (int k = 0; k < length; ++k) sum += taps[k] * std::polar(1.0, -w * k);
  return 20.0 * std::log10(std::abs(sum));
}

TEST(FirDesign, LowPassMeetsItsBandsWithSymmetricTaps) {
  constexpr int kLength = 31;
  double taps[kLength];
  const FirBand bands[] = {{0.0, 0.4 * kPiD, 1.0, one}, {0.6 * kPiD, kPiD, 10.0, nullptr}};
  ASSERT_TRUE(designLinearPhaseFir(kLength, bands, 2, taps));
  for (int k = 0; k < kLength; ++k) EXPECT_DOUBLE_EQ(taps[k], taps[kLength - 1 - k]);
  for (double w : {0.0, 0.2 * kPiD, 0.35 * kPiD}) EXPECT_NEAR(magnitudeDb(taps, kLength, w), 0.0, 0.1) << w;
  for (double w : {0.65 * kPiD, 0.8 * kPiD, kPiD}) EXPECT_LT(magnitudeDb(taps, kLength, w), -50.0) << w;
}

TEST(FirDesign, MirroredEqualBandsGiveAHalfBandFilter) {
  constexpr int kLength = 11;
  double taps[kLength];
  const FirBand bands[] = {{0.0, 0.3 * kPiD, 1.0, one}, {0.7 * kPiD, kPiD, 1.0, nullptr}};
  ASSERT_TRUE(designLinearPhaseFir(kLength, bands, 2, taps));
  EXPECT_NEAR(taps[5], 0.5, 1e-9);
  for (int k : {1, 3, 7, 9}) EXPECT_NEAR(taps[k], 0.0, 1e-9) << k;
}

TEST(FirDesign, EvenLengthsAndBadLengths) {
  double taps[kMaxFirLength + 1] = {};
  const FirBand pass[] = {{0.0, 0.5 * kPiD, 1.0, one}};
  ASSERT_TRUE(designLinearPhaseFir(6, pass, 1, taps));
  for (int k = 0; k < 3; ++k) EXPECT_DOUBLE_EQ(taps[k], taps[5 - k]);
  EXPECT_NEAR(magnitudeDb(taps, 6, 0.25 * kPiD), 0.0, 0.1);
  EXPECT_FALSE(designLinearPhaseFir(0, pass, 1, taps));
  EXPECT_FALSE(designLinearPhaseFir(kMaxFirLength + 1, pass, 1, taps));
}

}  // namespace
}  // namespace ziv
