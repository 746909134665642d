// SUB: the sub oscillator, one cubic Hermite segment per quarter cycle.
//
// The wave passes through the points 0, 1, 0, -1 at its quarter cycles; the tangent there is
// 2 pi x shape times the slope direction, so shape 0 gives flat peaks and flat zero crossings,
// about 0.25 a sine, larger shapes overshoot and sharpen the wave, negative shapes fold the
// slopes back. The wave is smooth but not band-limited: its kinks are mild and the sub usually
// plays an octave or more below the note. Control and audio are apart: aim() sets the ramps of
// an aimed span (and the cubics of the shape), render() plays the next samples of it, in as
// many calls as the caller likes, with bit-identical output and state whatever the split.
// Frequency and gain ramp linearly per sample across the aimed span from where the rendered
// samples left them; the first aim after start() takes them at once. A silent span only
// advances the phase.
#pragma once

#include <limits>

#include "engine/isa.h"
#include "engine/oscillators/pitch.h"

namespace ziv {

class SubOscillator {
 public:
  // A new rate keeps the pitch of the running span. Audio thread, or any thread while the
  // engine does not render.
  void setSampleRate(float rate);

  // Fresh voice start: phase in cycles (0..1); the next aim takes pitch and gain at once.
  // Audio thread.
  void start(double phase);

  // Aims the ramps to reach these settings after exactly `frames` samples (1..kMaxBlock; less
  // than 1 is ignored). pitch in semitones; gain 0..1; shape -1..1 (applies from the span's
  // first sample). Audio thread.
  void aim(int frames, float pitch, float gain, float shape);

  // Adds the next `frames` samples of the aimed span to out[0..frames). Samples past the aimed
  // span (a caller error) hold its targets. Audio thread.
  void render(float* out, int frames);

  // The phase in cycles, 0..1 at the end of a span. Any thread while the engine does not render.
  double phase() const { return phase_; }

 private:
  // render() with the kernels of one instruction set (engine/isa.h).
  template <class Isa>
  void renderWith(float* out, int frames);

  static constexpr int kSegments = 4;  // quarter cycles

  void aimAt(int frames, double frequency, double gain);
  void settle();

  float sampleRate_ = 44100.0f;
  CyclesCache cyclesCache_;
  bool started_ = false;
  double phase_ = 0.0;  // runs past 1 inside an audible span, wrapped when the span settles
  float shape_ = std::numeric_limits<float>::quiet_NaN();  // NaN: no cubics worked out yet
  // The cubic of each quarter cycle, y = c0 + c1 t + c2 t^2 + c3 t^3, for shape_.
  float cubic_[kSegments][4] = {};

  // The aimed span: running frequency (cycles per sample) and gain, their steps and targets.
  double frequency_ = 0.0, dFrequency_ = 0.0, targetFrequency_ = 0.0;
  double gain_ = 0.0, dGain_ = 0.0, targetGain_ = 0.0;
  int spanLeft_ = 0;    // frames of the span not yet rendered
  int spanLength_ = 0;  // frames of a silent span since its phase was last brought up to date
  bool silent_ = true;  // the span adds nothing, it only advances the phase
};

// Compiled once per instruction set, in sub_oscillator.cpp (engine/isa.h).
extern template void SubOscillator::renderWith<isa::Baseline>(float*, int);
extern template void SubOscillator::renderWith<isa::Avx2>(float*, int);

}  // namespace ziv
