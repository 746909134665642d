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
// Antialiasing: the shaping runs at twice the sample rate with first-order antiderivative
// antialiasing (the output is the mean of the curve between consecutive samples, computed from
// its antiderivative), between a linear-phase 11-tap interpolator and an 18-tap decimator
// (least-squares designs, pass band to 0.36 and stop band from 0.5 of the base rate). Latency:
// interpolator 5, antiderivative step 0.5, decimator 8.5 samples at the double rate: exactly 7
// samples at the base rate in every mode. The dry path, and the bypass used when mix is 0, is a
// 7-sample delay line, so dry and wet stay phase-coherent at every mix. The wet path rolls off
// above about 0.3 of the base rate (-2.6 dB at 15 kHz, -11 dB at 18 kHz at 44.1 kHz).
// Drive and mix ramp linearly across each block. Limits: mode changes switch at the block start
// (the curves differ, a change mid-note may be heard as a step in timbre); frames per call are at
// most kMaxBlock.
#pragma once

#include "engine/dsp.h"

namespace ziv {

enum ShaperMode { kShaperClip = 0, kShaperSine = 1, kShaperCrush = 2, kShaperFold = 3 };

class Shaper {
 public:
  static constexpr int kLatency = 7;  // samples, in every mode and in bypass

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

 private:
  static constexpr int kUpTaps = 11;
  static constexpr int kDownTaps = 18;
  // Base-rate input history: the dry delay and enough past input to re-prime the oversampling
  // chain after a bypass.
  static constexpr int kHistory = 32;
  static constexpr int kPrimeSamples = 16;           // covers both FIRs' memory at the base rate
  static constexpr int kUpReach = 5;                 // base-rate history the interpolator reads
  static constexpr int kWetHistory = kDownTaps - 1;  // double-rate history the decimator reads

  struct Curve {
    int mode;
    double inputGain;   // u = inputGain x
    double outputGain;  // y = outputGain f(u)
  };
  static Curve curveFor(int mode, float drive);
  // The antiderivative of a mode's curve (restated when the mode changes).
  static double antiderivative(int mode, double u);

  // Runs line[0..count) (base-rate input, with kUpReach samples of history before line[0])
  // through the double-rate chain in stages over the whole span: interpolate, integrate the
  // curve, differentiate (the antiderivative antialiasing), decimate. The input gain ramps from
  // gain by dGain per base sample (the first double-rate sample of each pair takes the mid
  // point); wet[i], when wet is not null, receives the decimated sample i times outputGain +
  // (i + 1) dOut. The curve is a template argument so each mode's loops inline it.
  template <int kMode>
  void shapeSpan(const float* line, int count, double gain, double dGain, double outputGain, double dOut,
                 double* wet);
  // The shaped (mix above 0) path over one block, re-priming the chain first after a bypass.
  template <int kMode>
  void renderWet(float* buf, int frames, const Curve& from, const Curve& to, float mix0, float mix);
  void pushInput(float x);

  float sampleRate_ = 44100.0f;
  bool started_ = false;
  bool wetRunning_ = false;  // false while bypassed: the chain is re-primed before use
  float drive_ = 0.0f;
  float mix_ = 0.0f;
  int mode_ = kShaperClip;

  // Input history, written twice (at i and i + kHistory) so every window is contiguous.
  float input_[2 * kHistory] = {};
  int inputPos_ = 0;
  // The most recent shaped double-rate samples, oldest first.
  double wetHistory_[kWetHistory] = {};
  double lastU_ = 0.0;  // previous double-rate shaper input
  double lastF_ = 0.0;  // its antiderivative
};

}  // namespace ziv
