// The noise mode of OSC 1 and OSC 2: white noise from a fixed table through a band-pass.
//
// The table holds 65536 uniform values in -1..1, made once per process by a fixed integer
// generator, so noise is the same on every run and on every platform. Each oscillator reads it
// from its own 16-bit position (reseeded at voice start) and filters it with the engine's filter
// element as a band-pass with 0 dB peak at the note's frequency. Narrowness 0 leaves broad
// noise (Q at its floor); narrowness 1 gives a narrow band (Q 16) around the note, lifted to
// make up for the energy the narrow band removes. Settings arrive once per aimed span; the
// band-pass ramps across it, and the span renders the same in any number of pieces.
#pragma once

#include "engine/dsp.h"
#include "engine/filter_element.h"

namespace ziv {

class NoiseOscillator {
 public:
  static constexpr int kTableSize = 65536;

  // Takes the shared noise table: construct from a non-real-time thread (engine construction).
  NoiseOscillator();

  // The shared table (built on the first call, from a non-real-time thread).
  static const float* table();

  // Audio thread, or any thread while the engine does not render.
  void setSampleRate(float rate) { filter_.setSampleRate(rate); }

  // Voice start: moves the read position to `seed` (taken modulo the table size) and clears
  // the band-pass; nothing sounds until the next aim. Audio thread.
  void start(int seed);

  // Aims the next `frames` samples (1..kMaxBlock): pitch in semitones; gain 0..1; narrowness
  // 0..1. Audio thread.
  void aim(int frames, float pitch, float gain, float narrowness);

  // Adds the next samples of the aimed span's filtered noise to out[0..frames). Audio thread.
  void render(float* out, int frames);

  bool isSilent() const { return filter_.isSilent(); }

 private:
  const float* table_;
  unsigned position_ = 0;
  float lastGain_ = 0.0f;
  // The aimed span adds nothing (its gain and the last are inaudible and the band-pass has rung
  // out): decided at aim, from the state the rendered samples left, so that the output does not
  // depend on how the span is cut.
  bool silent_ = true;
  FilterElement filter_;
  float buffer_[kMaxBlock] = {};
};

}  // namespace ziv
