// The band-limited step residual table shared by every saw/pulse oscillator.
//
// Row r (0..255) holds, at taps 0..64, the residual of a minimum-phase band-limited unit step
// (the ideal unit step minus the band-limited one) at k + r/256 samples after the
// discontinuity: tap 0 is about 1 and the residual rings down to exactly 0 by tap 64. Row 256 is
// row 0 read one tap later, so a lookup can always interpolate between row r and row r + 1.
// An oscillator that jumps by h at t samples in the past adds h times the interpolated row to
// its next 64 output samples, which turns the naive jump into a band-limited one.
//
// The table is computed by our own code (blep_table.cpp) once per process, when the first
// engine is constructed (under the plug-in's instance mutex); nothing builds it on the audio
// thread. It is about 67 kB.
#pragma once

namespace ziv {

class BlepTable {
 public:
  static constexpr int kPhases = 256;   // rows per sample of step time
  static constexpr int kTaps = 65;      // stored taps per row
  static constexpr int kUsedTaps = 64;  // taps an oscillator adds (the ring size)

  // The shared table, built on the first call. Call it first from a non-real-time thread
  // (engine construction); afterwards any thread may call it.
  static const BlepTable& instance();

  // Row 0..kPhases; row kPhases is row 0 shifted by one tap.
  const float* row(int r) const { return rows_[r]; }

  // The mean of the summed residual over all step times: how much direct current one unit step
  // leaves behind, in sample-units. A saw of slope inc per sample has one unit step per 1/inc
  // samples, so its correction adds dcPerStep() x inc to its mean.
  double dcPerStep() const { return dcPerStep_; }

 private:
  BlepTable();

  float rows_[kPhases + 1][kTaps];
  double dcPerStep_ = 0.0;
};

}  // namespace ziv
