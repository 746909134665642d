// Least-squares design of symmetric (linear-phase) FIR filters, for filters that are computed
// once when a unit is set up instead of being stored as pasted numbers.
//
// A symmetric filter of length N delays every frequency by (N - 1) / 2 samples; its amplitude is
// a real cosine sum A(w) = sum over tap pairs of 2 h[k] cos(((N - 1) / 2 - k) w) (plus the
// centre tap once when N is odd). The design minimises the weighted squared error
// sum over bands of weight * integral (A(w) - desired(w))^2 dw, evaluated on a dense grid, by
// solving the normal equations. Limits: at most kMaxFirLength taps; a design takes a few
// milliseconds, so call it at set-up, never on the audio thread.
#pragma once

namespace ziv {

constexpr int kMaxFirLength = 64;

// One band of the design: frequencies from..to in radians per sample (0..pi), the weight of its
// squared error and the amplitude wanted there (a function of the frequency; null means 0).
struct FirBand {
  double from;
  double to;
  double weight;
  double (*desired)(double w);
};

// Writes the length taps (1..kMaxFirLength) of the symmetric filter that fits the bands best
// into taps. Returns false, leaving taps untouched, for an invalid length or a singular system.
// Any thread; not real-time safe.
bool designLinearPhaseFir(int length, const FirBand* bands, int bandCount, double* taps);

}  // namespace ziv
