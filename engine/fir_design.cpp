// Least-squares linear-phase FIR design; see fir_design.h.
#include "engine/fir_design.h"

#include <cmath>
#include <utility>

namespace ziv {

namespace {

constexpr int kMaxUnknowns = kMaxFirLength / 2 + 1;
constexpr int kGridPointsPerBand = 2048;  // midpoint rule; far finer than any filter's ripple

// The cosine each unknown (tap k and its mirror) contributes to the amplitude at w.
double basis(int length, int k, double w) {
  const double centre = 0.5 * (length - 1);
  if (2 * k == length - 1) return 1.0;  // the centre tap of an odd length
  return 2.0 * std::cos((centre - k) * w);
}

// Gaussian elimination with partial pivoting on the n x n system a x = b (b becomes x).
bool solve(double (&a)[kMaxUnknowns][kMaxUnknowns], double* b, int n) {
  for (int col = 0; col < n; ++col) {
    int pivot = col;
    for (int row = col + 1; row < n; ++row) {
      if (std::fabs(a[row][col]) > std::fabs(a[pivot][col])) pivot = row;
    }
    if (!(std::fabs(a[pivot][col]) > 1e-300)) return false;
    if (pivot != col) {
      for (int k = 0; k < n; ++k) std::swap(a[pivot][k], a[col][k]);
      std::swap(b[pivot], b[col]);
    }
    for (int row = col + 1; row < n; ++row) {
      const double factor = a[row][col] / a[col][col];
      for (int k = col; k < n; ++k) a[row][k] -= factor * a[col][k];
      b[row] -= factor * b[col];
    }
  }
  for (int row = n - 1; row >= 0; --row) {
    double sum = b[row];
    for (int k = row + 1; k < n; ++k) sum -= a[row][k] * b[k];
    b[row] = sum / a[row][row];
  }
  return true;
}

}  // namespace

bool designLinearPhaseFir(int length, const FirBand* bands, int bandCount, double* taps) {
  if (length < 1 || length > kMaxFirLength) return false;
  const int n = (length + 1) / 2;
  double gram[kMaxUnknowns][kMaxUnknowns] = {};
  double rhs[kMaxUnknowns] = {};
  double phi[kMaxUnknowns];
  for (int b = 0; b < bandCount; ++b) {
    const FirBand& band = bands[b];
    const double step = (band.to - band.from) / kGridPointsPerBand;
    for (int g = 0; g < kGridPointsPerBand; ++g) {
      const double w = band.from + (g + 0.5) * step;
      const double d = band.desired != nullptr ? band.desired(w) : 0.0;
      for (int k = 0; k < n; ++k) phi[k] = basis(length, k, w);
      for (int k = 0; k < n; ++k) {
        rhs[k] += band.weight * step * phi[k] * d;
        for (int l = 0; l < n; ++l) gram[k][l] += band.weight * step * phi[k] * phi[l];
      }
    }
  }
  if (!solve(gram, rhs, n)) return false;
  for (int k = 0; k < n; ++k) {
    taps[k] = rhs[k];
    taps[length - 1 - k] = rhs[k];
  }
  return true;
}

}  // namespace ziv
