// Alias-to-signal measurement for the benchmarks: a 4-term Blackman-Harris window over one
// second of signal, a power spectrum by radix-2 FFT (zero-padded), and the power away from the
// harmonics of a fundamental compared with the power on them (within 4 Hz, the window's main
// lobe at one second) .
#pragma once

#include <cmath>
#include <complex>
#include <vector>

#include "engine/fft.h"

namespace ziv::bench {

struct AliasRatio {
  double belowDb;  // alias power below the split frequency over harmonic power, in dB
  double wholeDb;  // alias power over the whole band over harmonic power, in dB
};

// x: the signal (its length is the analysis span); fundamentalHz: the harmonics' spacing.
inline AliasRatio aliasRatio(const std::vector<float>& x, double rate, double fundamentalHz,
                             double splitHz = 10000.0) {
  constexpr int kFft = 1 << 17;
  constexpr double kSignalHalfWidthHz = 4.0;
  const int n = static_cast<int>(x.size());
  std::vector<std::complex<double>> a(kFft, 0.0);
  const double twoPi = 2.0 * 3.14159265358979323846;
  for (int i = 0; i < n; ++i) {
    const double p = twoPi * i / (n - 1);
    const double w = 0.35875 - 0.48829 * std::cos(p) + 0.14128 * std::cos(2 * p) - 0.01168 * std::cos(3 * p);
    a[i] = x[i] * w;
  }
  fft(a);
  double signal = 0.0, aliasBelow = 0.0, aliasWhole = 0.0;
  for (int k = 0; k <= kFft / 2; ++k) {
    const double hz = k * rate / kFft;
    const double power = std::norm(a[k]);
    const double harmonic = std::round(hz / fundamentalHz);
    if (std::fabs(hz - harmonic * fundamentalHz) <= kSignalHalfWidthHz) {
      if (harmonic > 0.0) signal += power;  // the bins around 0 Hz are neither
    } else {
      aliasWhole += power;
      if (hz < splitHz) aliasBelow += power;
    }
  }
  return {10.0 * std::log10(aliasBelow / signal), 10.0 * std::log10(aliasWhole / signal)};
}

}  // namespace ziv::bench
