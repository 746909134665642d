// A plain in-place radix-2 FFT over complex doubles, for the tables the engine builds once (the
// band-limited step) and for measurements; not for the audio thread. The length must be a power
// of two; the inverse includes the 1/n scale.
#pragma once

#include <complex>
#include <vector>

namespace ziv {

void fft(std::vector<std::complex<double>>& a, bool inverse = false);

}  // namespace ziv
