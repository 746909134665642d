// Iterative decimation-in-time FFT with bit-reversed input order; see fft.h.
#include "engine/fft.h"

#include <utility>

namespace ziv {

void fft(std::vector<std::complex<double>>& a, bool inverse) {
  constexpr double kPi = 3.14159265358979323846;
  const int n = static_cast<int>(a.size());
  for (int i = 1, j = 0; i < n; ++i) {
    int bit = n >> 1;
    for (; j & bit; bit >>= 1) j ^= bit;
    j ^= bit;
    if (i < j) std::swap(a[i], a[j]);
  }
  for (int len = 2; len <= n; len <<= 1) {
    const double angle = (inverse ? 2.0 : -2.0) * kPi / len;
    for (int k = 0; k < len / 2; ++k) {
      // Twiddles from the angle directly, not by repeated multiplication, to keep full accuracy.
      const std::complex<double> w = std::polar(1.0, angle * k);
      for (int i = k; i < n; i += len) {
        const std::complex<double> u = a[i];
        const std::complex<double> v = a[i + len / 2] * w;
        a[i] = u + v;
        a[i + len / 2] = u - v;
      }
    }
  }
  if (inverse) {
    for (std::complex<double>& x : a) x /= static_cast<double>(n);
  }
}

}  // namespace ziv
