// Builds the band-limited step residual table (see blep_table.h).
//
// Method (the minimum-phase band-limited step of the public DSP literature):
// 1. A Hann-windowed sinc low-pass impulse, sampled 256 times per output sample.
// 2. Its real cepstrum (inverse FFT of log |FFT|), folded onto positive quefrencies, gives the
//    log spectrum of the minimum-phase filter with the same magnitude response; exp and an
//    inverse FFT turn it back into an impulse that starts at time 0 and settles within a few
//    samples instead of being centred on its length.
// 3. Its running sum, normalised to end at 1, is the band-limited step; 1 minus it is the
//    residual, read out in rows of one sample spacing.
// The design values (impulse span, cutoff slightly above Nyquist, FFT size) set the step's rise
// time and ringing; they were chosen so that the leading taps reach the values our oscillators
// were voiced with (row 0: 1.0, 0.9987, 0.9385, 0.4833, -0.1746; row 128: 0.9997, 0.9891,
// 0.7846, 0.1003, -0.1849) within 1e-3.
#include "engine/oscillators/blep_table.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <utility>
#include <vector>

#include "engine/fft.h"

namespace ziv {
namespace {

using Complex = std::complex<double>;

constexpr double kPiD = 3.14159265358979323846;
// Span of the windowed sinc in oversampled points (about 53.5 output samples).
constexpr int kImpulseSpan = 13699;
// Sinc cutoff relative to the output Nyquist frequency.
constexpr double kCutoff = 1.0067;
// FFT size of the cepstrum: a little over twice the impulse, which keeps the cepstrum's
// time aliasing negligible.
constexpr int kFftSize = 32768;
// Magnitudes are floored here before the logarithm (the window's stop band reaches far below).
constexpr double kMagnitudeFloor = 1e-100;

// The minimum-phase band-limited step, sampled kPhases times per sample, normalised to end at 1.
std::vector<double> minimumPhaseStep() {
  const int points = kImpulseSpan + 1;
  const double spanSamples = static_cast<double>(kImpulseSpan) / BlepTable::kPhases;
  std::vector<Complex> a(kFftSize, 0.0);
  for (int i = 0; i < points; ++i) {
    const double p = static_cast<double>(i) / kImpulseSpan;
    const double x = kPiD * kCutoff * (p - 0.5) * spanSamples;
    const double sinc = x == 0.0 ? 1.0 : std::sin(x) / x;
    const double hann = 0.5 - 0.5 * std::cos(2.0 * kPiD * p);
    a[i] = sinc * hann;
  }

  // Real cepstrum.
  fft(a, false);
  for (Complex& x : a) x = std::log(std::max(std::abs(x), kMagnitudeFloor));
  fft(a, true);
  // Fold: keep quefrency 0 and N/2, double the positive ones, drop the negative ones.
  a[0] = a[0].real();
  a[kFftSize / 2] = a[kFftSize / 2].real();
  for (int i = 1; i < kFftSize / 2; ++i) {
    a[i] = 2.0 * a[i].real();
    a[kFftSize - i] = 0.0;
  }
  fft(a, false);
  for (Complex& x : a) x = std::exp(x);
  fft(a, true);

  std::vector<double> step(points);
  double sum = 0.0;
  for (int i = 0; i < points; ++i) {
    sum += a[i].real();
    step[i] = sum;
  }
  for (double& s : step) s /= sum;
  return step;
}

}  // namespace

const BlepTable& BlepTable::instance() {
  static const BlepTable table;
  return table;
}

BlepTable::BlepTable() {
  const std::vector<double> step = minimumPhaseStep();
  const int points = static_cast<int>(step.size());
  for (int r = 0; r <= kPhases; ++r) {
    for (int k = 0; k < kTaps; ++k) {
      const int index = k * kPhases + r;
      rows_[r][k] = index < points ? static_cast<float>(1.0 - step[index]) : 0.0f;
    }
  }
  // The oscillators interpolate linearly between neighbouring rows, and their step times are
  // spread evenly over a sample, so the mean correction of one unit step is the trapezoid
  // integral of the residual over the used taps.
  double sum = 0.0;
  for (int r = 0; r < kPhases; ++r) {
    for (int k = 0; k < kUsedTaps; ++k) sum += 0.5 * (rows_[r][k] + rows_[r + 1][k]);
  }
  dcPerStep_ = sum / kPhases;
}

}  // namespace ziv
