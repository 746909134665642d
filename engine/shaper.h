// The voice's waveshaper (SHAPER), between FILTER 1 and FILTER 2.
//
// Modes, each driven by drive (0..1) and blended with the dry signal by mix (0..1):
// - 0 "Clip": a cubic soft clipper (unity slope at zero, flat beyond its knee) after an input
//   gain of 1 to 16 (0 to +24 dB).
// - 1 "Sine": sin(g x) with g from 1 to 4 pi: gentle saturation at low drive, repeated folding
//   through the sine's crests at high drive.
// - 2 "Crush": a smooth bit reducer. The signal is quantised to steps of 1/L with L from 32 down
//   to 2 levels per unit, but each step is the smooth staircase u - sin(2 pi u) / (2 pi) (flat at
//   the levels, steep between them) instead of a hard jump, so the result is an analytic function
//   whose harmonics stay bounded. No sample-rate reduction (that would alias by design).
// - 3 "Fold": a triangle wave folder (identity within +-1, reflected beyond) after an input gain
//   of 1 to 8.
// Antialiasing: the shaping runs at twice the sample rate with second-order antiderivative
// antialiasing (each output is twice the second divided difference of the curve's second
// antiderivative over three consecutive inputs: a weighted average of the curve over the span
// they cover, for a straight line their mean), between an 11-tap half-band interpolator and a 17-tap
// decimator. Both are linear-phase least-squares designs made once by our own code (fir_design.h): the
// interpolator's new samples halfway between inputs come from a 6-tap half-sample delay fitted up
// to 0.28 of the base rate; the decimator passes to 0.28, undoing the three-sample mean's loss
// there, and stops from 0.5 of the base rate. Latency: interpolator 5, antiderivative step 1,
// decimator 8 samples at the double rate: exactly 7 samples at the base rate in every mode. The
// dry path, and the bypass used when mix is 0, is a 7-sample delay line, so dry and wet stay
// phase-coherent at every mix. For small signals the wet path is flat within 0.5 dB to 0.25 of
// the base rate and rolls off above (-3.7 dB at 14 kHz, -8.7 dB at 16 kHz, -17 dB at 18 kHz at
// 44.1 kHz): the price of the second-order step at twice the rate. At 44.1 kHz, with a full-scale
// sine at full drive, aliases stay at least 63 dB below the signal under 10 kHz and 48 dB over the
// whole band, up to note 103 in every mode.
// Drive and mix ramp linearly across each block. Limits: mode changes switch at the block start
// (the curves differ, a change mid-note may be heard as a step in timbre); frames per call are at
// most kMaxBlock; "Sine", "Crush" and "Fold" clamp their input to +-1e4 (far beyond any level a
// voice reaches).
#pragma once

#include "engine/dsp.h"

namespace ziv {

enum ShaperMode { kShaperClip = 0, kShaperSine = 1, kShaperCrush = 2, kShaperFold = 3 };

class Shaper {
 public:
  static constexpr int kLatency = 7;  // samples, in every mode and in bypass

  // Designs the shared oversampling filters on first construction. Any non-real-time thread.
  Shaper();

  // Audio thread, or any thread while the engine does not render. The filters are designed
  // relative to the rate, so the rate needs no other state.
  void setSampleRate(float rate) { sampleRate_ = rate; }

  // Voice start: clears the delay line and the oversampling filters; the next block takes its
  // drive and mix without a ramp. Audio thread, or any thread while the engine does not render.
  void reset();

  // Shapes buf[0..frames) in place (frames at most kMaxBlock); the output is the input shaped and
  // delayed by kLatency samples. Mode outside 0..3 acts as Clip. Audio thread, or any thread
  // while the engine does not render.
  void render(float* buf, int frames, int mode, float drive, float mix);

  // The wet output for a steady input x at this mode and drive: the curve the shaper applies,
  // without its oversampling (the editor draws it). Any thread.
  static double transfer(int mode, float drive, double x);

 private:
  static constexpr int kHalfTaps = 6;   // the interpolator's half-sample branch
  static constexpr int kDownTaps = 17;  // the decimator, centre tap 8
  // Base-rate input history: the dry delay and enough past input to re-prime the oversampling
  // chain after a bypass.
  static constexpr int kHistory = 32;
  static constexpr int kPrimeSamples = 16;        // covers both FIRs' memory at the base rate
  static constexpr int kUpReach = kHalfTaps - 1;  // base-rate history the interpolator reads
  // Past shaped samples the decimator reads, per phase (the shaped samples split into the
  // first and second of each double-rate pair).
  static constexpr int kPhaseHistory = kDownTaps / 2;

  struct Curve {
    int mode;
    double inputGain;   // u = inputGain x
    double outputGain;  // y = outputGain f(u)
  };
  static Curve curveFor(int mode, float drive);
  // The second antiderivative of a mode's curve (restated when the mode changes).
  static double antiderivative2(int mode, double u);

  // Runs line[0..count) (base-rate input, with kUpReach samples of history before line[0])
  // through the double-rate chain in stages over the whole span: interpolate, integrate the
  // curve twice, take second differences (the antiderivative antialiasing), decimate. The input
  // gain ramps from gain by dGain per base sample (the first double-rate sample of each pair
  // takes the mid point); wet[i], when wet is not null, receives the decimated sample i times
  // outputGain + (i + 1) dOut. The curve is a template argument so each mode's loops inline it.
  template <int kMode>
  void shapeSpan(const float* line, int count, double gain, double dGain, float outputGain, float dOut,
                 float* wet);
  // The shaped (mix above 0) path over one block, re-priming the chain first after a bypass; line
  // holds kHistory samples of input history, then the block.
  template <int kMode>
  void renderWet(const float* line, float* buf, int frames, const Curve& from, const Curve& to, float mix0,
                 float mix);

  float sampleRate_ = 44100.0f;
  bool started_ = false;
  bool wetRunning_ = false;  // false while bypassed: the chain is re-primed before use
  float drive_ = 0.0f;
  float mix_ = 0.0f;
  int mode_ = kShaperClip;

  // The most recent input, oldest first.
  float history_[kHistory] = {};
  // The most recent shaped double-rate samples of each phase, oldest first.
  float earlyHistory_[kPhaseHistory] = {};
  float lateHistory_[kPhaseHistory] = {};
  double lastU_[2] = {};  // the two previous double-rate shaper inputs, oldest first
  double lastF_[2] = {};  // their second antiderivatives
  // Set after a span with many narrow steps (quiet or slow input), until the input's level
  // reaches full scale: the next spans then measure their level (see shapeSpan).
  bool quiet_ = false;
};

}  // namespace ziv
