// SUB: the sub oscillator, one cubic Hermite segment per quarter cycle.
//
// The wave passes through the points 0, 1, 0, -1 at its quarter cycles; the tangent there is
// 2 pi x shape times the slope direction, so shape 0 gives flat peaks and flat zero crossings,
// about 0.25 a sine, larger shapes overshoot and sharpen the wave, negative shapes fold the
// slopes back. The wave is smooth but not band-limited: its kinks are mild and the sub usually
// plays an octave or more below the note. Pitch and gain ramp linearly per sample; a silent
// block only advances the phase. Limits: frames per call at most kMaxBlock.
#pragma once

#include "engine/oscillators/pitch.h"

namespace ziv {

class SubOscillator {
 public:
  // Audio thread, or any thread while the engine does not render.
  void setSampleRate(float rate) { sampleRate_ = rate; }

  // Fresh voice start: phase in cycles (0..1); the next block takes pitch and gain at once.
  // Audio thread.
  void start(double phase);

  // Adds one block to out[0..frames). pitch in semitones; gain 0..1; shape -1..1. Audio thread.
  void render(float* out, int frames, float pitch, float gain, float shape);

  double phase() const { return phase_; }

 private:
  float sampleRate_ = 44100.0f;
  bool started_ = false;
  double phase_ = 0.0;
  float pitch_ = 0.0f;
  CyclesCache cyclesCache_;
  float shape_ = 0.0f;
  double gain_ = 0.0;
};

}  // namespace ziv
