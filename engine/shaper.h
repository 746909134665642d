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
// Control and audio are apart: aim() sets the mode and the ramps of an aimed span, render()
// shapes the next samples of it, in as many calls as the caller likes, with bit-identical output
// and state whatever the split. Drive and mix ramp linearly across the aimed span from where the
// rendered samples left them; the first aim after reset() takes them at once. Each shaped sample
// is worked out from its own inputs alone (see shapeSteps in shaper.cpp), so quiet input, which
// takes cheaper paths, gives the same samples however the span is cut. Limits: mode changes
// switch at the span's start (the curves differ, a change mid-note may be heard as a step in
// timbre); "Sine", "Crush" and "Fold" clamp their input to +-1e4 (far beyond any level a voice
// reaches).
#pragma once

#include "engine/dsp.h"
#include "engine/isa.h"

namespace ziv {

// The oversampling filters' coefficients, designed once for every shaper (shaper.cpp).
struct ShaperFilters;

enum ShaperMode { kShaperClip = 0, kShaperSine = 1, kShaperCrush = 2, kShaperFold = 3 };

class Shaper {
 public:
  static constexpr int kLatency = 7;  // samples, in every mode and in bypass

  // Designs the shared oversampling filters on first construction. Any non-real-time thread.
  Shaper();

  // Audio thread, or any thread while the engine does not render. The filters are designed
  // relative to the rate, so the rate needs no other state.
  void setSampleRate(float rate) { sampleRate_ = rate; }

  // Voice start: clears the delay line and the oversampling filters; the next aim takes its drive
  // and mix without a ramp. Audio thread, or any thread while the engine does not render.
  void reset();

  // Aims the ramps to reach these settings after exactly `frames` samples (1..kMaxBlock; less than
  // 1 is ignored), starting from where the rendered samples left them; mode (outside 0..3 acts as
  // Clip) applies from the span's start. Drive and mix are held within 0..1. Audio thread, or any
  // thread while the engine does not render.
  void aim(int frames, int mode, float drive, float mix);

  // Shapes the next `frames` samples of the aimed span in buf[0..frames) in place; the output is
  // the input shaped and delayed by kLatency samples. Samples past the aimed span (a caller error)
  // hold its targets. Audio thread, or any thread while the engine does not render.
  void render(float* buf, int frames);

  // The wet output for a steady input x at this mode and drive: the curve the shaper applies,
  // without its oversampling (the editor draws it). Any thread.
  static double transfer(int mode, float drive, double x);

 private:
  // render() with the kernels of one instruction set (engine/isa.h).
  template <class Isa>
  void renderWith(float* buf, int frames);

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

  // The gains over a piece of a span: the input gain is gain + k dGain after base sample k of the
  // span, the output gain likewise; `first` is the piece's first sample within the span.
  struct Gains {
    double gain, dGain;
    float outputGain, dOutput;
    int first;
  };
  // Runs line[0..count) (base-rate input, with kUpReach samples of history before line[0])
  // through the double-rate chain in stages over the whole piece: interpolate, integrate the
  // curve twice, take second differences (the antiderivative antialiasing), decimate. The first
  // double-rate sample of each pair takes the input gain's mid point; wet[i], when wet is not
  // null, receives the decimated sample i times the output gain after it. The curve is a template
  // argument so each mode's loops inline it.
  template <class Isa, int kMode>
  void shapeSpan(const float* line, int count, const Gains& gains, float* wet);
  // Shapes one piece of at most kMaxBlock samples of the span into buf.
  template <class Isa>
  void renderPiece(float* buf, int frames);
  // The shaped (mix above 0) path over one piece, re-priming the chain first after a bypass; line
  // holds kHistory samples of input history, then the piece.
  template <class Isa, int kMode>
  void renderWet(const float* line, float* buf, int frames);

  const ShaperFilters* filters_;  // the oversampling filters, shared by every shaper
  float sampleRate_ = 44100.0f;
  bool started_ = false;
  bool wetRunning_ = false;  // false while bypassed: the chain is re-primed before use
  // The settings last aimed at, and the curve they give.
  int mode_ = kShaperClip;
  float drive_ = 0.0f;
  float mix_ = 0.0f;
  Curve target_{kShaperClip, 1.0, 1.0};

  // The aimed span. Its ramps are start plus step times the samples since the span's start,
  // worked out per sample, so every cut of the span computes the same values.
  double gainStart_ = 1.0, gainStep_ = 0.0;
  float outputStart_ = 1.0f, outputStep_ = 0.0f;
  float mixStart_ = 0.0f, mixStep_ = 0.0f;
  int spanLength_ = 0;
  int spanDone_ = 0;    // samples of the span rendered
  bool bypass_ = true;  // mix 0 throughout: a plain delay line

  // The most recent input, oldest first.
  float history_[kHistory] = {};
  // The most recent shaped double-rate samples of each phase, oldest first.
  float earlyHistory_[kPhaseHistory] = {};
  float lateHistory_[kPhaseHistory] = {};
  double lastU_[2] = {};  // the two previous double-rate shaper inputs, oldest first
  double lastF_[2] = {};  // their second antiderivatives
  // Set after a piece with many narrow steps (quiet or slow input), until the input's level
  // reaches full scale: the next pieces then measure their level to find out whether the cheap
  // path for all-narrow steps gives their samples (see shapeSpan). It picks the path, never
  // the values.
  bool quiet_ = false;
};

// Compiled once per instruction set, in shaper.cpp (engine/isa.h).
extern template void Shaper::renderWith<isa::Baseline>(float*, int);
extern template void Shaper::renderWith<isa::Avx2>(float*, int);

}  // namespace ziv
