// The engine's one resonant second-order filter element.
//
// FILTER 1, FILTER 2, the noise oscillator and the master EQ all run this element. Its responses
// are the Audio EQ Cookbook's (bilinear transform, w0 = 2 pi f / rate prewarped, resonance Q):
// shape 0 low-pass, 1 high-pass, 2 band-pass with 0 dB peak, 4 band-pass with constant skirt
// (peak gain Q), 5 low shelf, 6 high shelf; any other shape is a low-pass. The output is
// multiplied by a gain.
//
// Its settings arrive once per aimed span (see aim()). Per aimed span the element
// - clamps the frequency to [8 Hz, 0.499 x rate],
// - limits how far the angular frequency w0 moves: by at most 10 pi x frames / rate, i.e. w0
//   travels at most 10 pi rad per second (0 to Nyquist in 100 ms; 100 Hz to 200 Hz at 44.1 kHz
//   in 0.5 ms), which removes zipper steps from jumping knobs but lets a fast envelope through,
// - interpolates its coefficients linearly per sample from where the rendered samples left them
//   to the span's set, so the span's last sample uses exactly the new set.
// The span may be rendered in any number of pieces: the output and the state are the same
// whatever the split. Samples rendered past the span's end keep its set.
// reset() clears the state, but for the next 20 samples the output still carries what the old
// state would have rung out, faded from full to nothing: a voice restarted while its filter
// rings does not click, and a filter that was silent simply starts from rest (no dry signal
// leaks through). The first span aimed after a reset takes its frequency and coefficients
// without slew or ramp.
//
// The structure is the trapezoidal (topology-preserving) state-variable filter computed in double
// precision: its two integrator states hold the signal's level whatever the frequency and
// damping, so moving coefficients (fast sweeps, shape switches, resonance jumps) neither pump
// energy in nor amplify ringing, as the direct forms do when their frequency falls, and double
// precision keeps low cutoffs (8 Hz at 96 kHz) accurate. It is stable for every positive
// frequency and damping; Q is floored at 1e-7.
#pragma once

#include "engine/isa.h"

namespace ziv {

class FilterElement {
 public:
  static constexpr int kLowPass = 0;
  static constexpr int kHighPass = 1;
  static constexpr int kBandPass = 2;       // 0 dB peak
  static constexpr int kBandPassSkirt = 4;  // constant skirt, peak gain Q
  static constexpr int kLowShelf = 5;
  static constexpr int kHighShelf = 6;

  static constexpr float kMinFrequency = 8.0f;         // Hz
  static constexpr float kMaxFrequencyRatio = 0.499f;  // of the sample rate
  static constexpr float kMinQ = 1e-7f;
  static constexpr float kMinShelfFactor = 1e-4f;
  static constexpr int kCrossfadeSamples = 20;

  // Sets the rate; takes effect with the next aim. Audio thread, or any thread while the engine
  // does not render.
  void setSampleRate(float rate);

  // Clears the state and fades out its ringing over the next 20 samples; the next aim takes its
  // settings without slew. Audio thread (voice start), or any thread while the engine does not
  // render.
  void reset();

  // Aims the next `frames` samples (1..kMaxBlock) at these settings: the frequency slew and
  // the coefficient ramp start from where the samples rendered so far left the element, even in
  // the middle of the last span. shelfFactor is the cookbook's A for shapes 5 and 6 (a linear
  // factor: the shelf's gain at its extreme is A^2) and is ignored by the other shapes; gain
  // multiplies the feed-forward coefficients. Audio thread, or any thread while the engine does
  // not render.
  void aim(int frames, int shape, float freqHz, float q, float gain, float shelfFactor = 1.0f);

  // Filters buf[0..frames) in place: the next samples of the aimed span. Same threads as aim.
  void render(float* buf, int frames);

  // Two channels, each through two elements in series: left through left[0] then left[1], right
  // likewise (the master EQ's shelves). The same samples as the four render() calls; while no
  // element ramps or crossfades, one pass carries the four recursions side by side, so their
  // latencies overlap instead of adding up. Same threads as aim.
  static void renderStereoPairs(FilterElement* const (&left)[2], FilterElement* const (&right)[2],
                                float* leftBuf, float* rightBuf, int frames);

  // True when the two most recent outputs are at most the silence threshold (kSilence). Audio
  // thread, or any thread while the engine does not render.
  bool isSilent() const;

  // The frequency (Hz) that the last aimed span reaches at its end, after clamp and slew; 0
  // before the first aim after a reset. Same threads as aim.
  float frequencyHz() const;

 private:
  // render() and renderStereoPairs() with the kernels of one instruction set (engine/isa.h).
  template <class Isa>
  void renderWith(float* buf, int frames);
  template <class Isa>
  static void renderStereoPairsWith(FilterElement* const (&left)[2], FilterElement* const (&right)[2],
                                    float* leftBuf, float* rightBuf, int frames);
  // The samples of renderStereoPairs over a piece in which all four elements hold their
  // coefficients: `elements` is left[0], left[1], right[0], right[1].
  template <class Isa>
  static void filterStereoPairs(FilterElement* const (&elements)[4], float* leftBuf, float* rightBuf,
                                int frames);
  // The coefficients move within the span (a ramp), or a restart's crossfade is still running.
  bool moving() const;

  // g = tan(w0 / 2) (the integrators' gain), k = 1 / Q (the damping) and the output mix of
  // input, band-pass and low-pass.
  struct Coefficients {
    double g = 0.0, k = 1.0, m0 = 1.0, m1 = 0.0, m2 = 0.0;
  };
  // g is tan(w0 / 2), computed by the caller.
  static Coefficients design(int shape, double g, double q, double gain, double shelfFactor);

  // Filters buf[0..frames) in place, moving the coefficients by step_ per sample.
  template <class Isa>
  void filter(float* buf, int frames);
  void flushTinyStates();

  float sampleRate_ = 44100.0f;
  bool started_ = false;  // false until the first aim after a reset
  double w0_ = 0.0;       // angular frequency at the end of the last aimed span
  // The w0 of the last tan(w0 / 2) and its value: tan runs only when w0 moves.
  double tanW0_ = 0.0, tanHalfW0_ = 0.0;
  // The coefficients of the last rendered sample, the aimed span's set, the per-sample step
  // between them and the samples of the span still to render.
  Coefficients current_, target_, step_;
  int rampLeft_ = 0;
  // The integrators' states, and the last two outputs for the silence test.
  double s1_ = 0.0, s2_ = 0.0, y1_ = 0.0, y2_ = 0.0;
  // The restart crossfade: samples left, the integrator gains and output mix in force at the last
  // reset (fixed from then on), and the old state ringing out with them.
  int crossfadeLeft_ = 0;
  double fadeA1_ = 0.0, fadeA2_ = 0.0, fadeA3_ = 0.0, fadeM1_ = 0.0, fadeM2_ = 0.0;
  double fadeS1_ = 0.0, fadeS2_ = 0.0;
};

// Compiled once per instruction set, in filter_element.cpp (engine/isa.h).
extern template void FilterElement::renderWith<isa::Baseline>(float*, int);
extern template void FilterElement::renderWith<isa::Avx2>(float*, int);
extern template void FilterElement::renderStereoPairsWith<isa::Baseline>(FilterElement* const (&)[2],
                                                                         FilterElement* const (&)[2], float*,
                                                                         float*, int);
extern template void FilterElement::renderStereoPairsWith<isa::Avx2>(FilterElement* const (&)[2],
                                                                     FilterElement* const (&)[2], float*,
                                                                     float*, int);

}  // namespace ziv
