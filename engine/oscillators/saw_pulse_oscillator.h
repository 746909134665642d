// The saw/pulse core of OSC 1 and OSC 2: two saws of one phase with band-limited hard sync.
//
// The audible ("slave") saw runs at ratio times the frequency of a hidden sync master and
// restarts whenever the master wraps. A second saw shares the slave's phase, shifted by an
// offset: in saw mode it is added (shape moves the relative phase over -0.49..0.49, shape 0
// doubles the saw), in pulse mode it is subtracted, which leaves a pulse whose width is the
// offset (0.01..0.99). Every jump of the naive waveform (slave wrap, second-saw wrap, sync
// restart) is located to a fraction of a sample and corrected with the interpolated residual of
// a minimum-phase band-limited step (BlepTable), added into a ring of the next 64 samples.
// Control and audio are apart: aim() sets the ramps of an aimed span, render() plays the next
// samples of it, in as many calls as the caller likes, with bit-identical output and state
// whatever the split. Frequency, ratio, offset, polarity and gain ramp linearly per sample from
// where the rendered samples left them to the new settings across the aimed span; the first aim
// after start() takes them at once. A synced saw that would pass the Nyquist frequency fades to
// silence over one span instead of aliasing. Silent spans only advance the phases; the next
// audible span first runs 10 discarded samples so the ring holds the tails of the recent jumps.
// While the ratio stays exactly 1 the sync cannot change anything and the loop runs without the
// master (which then simply follows the slave).
// Limits: ratio at least 1 (sync only raises the pitch).
#pragma once

#include "engine/isa.h"
#include "engine/oscillators/blep_table.h"
#include "engine/oscillators/pitch.h"

namespace ziv {

class SawPulseOscillator {
 public:
  static constexpr int kSaw = 0;
  static constexpr int kPulse = 1;
  static constexpr int kRingSize = BlepTable::kUsedTaps;  // pending corrections
  static constexpr int kPrimeSamples = 10;                // discarded samples before sounding after silence

  // Takes the shared step table: construct from a non-real-time thread (engine construction).
  SawPulseOscillator();

  // A new rate keeps the pitch of the running span. Audio thread, or any thread while the
  // engine does not render.
  void setSampleRate(float rate);

  // Fresh voice start: the master (and so the slave) starts at `phase` (0..1), the correction
  // ring is cleared and the next aim takes its settings without ramps. Audio thread.
  void start(double phase);

  // Aims the ramps to reach these settings after exactly `frames` samples (1..kMaxBlock; less
  // than 1 is ignored), starting from where the rendered samples left them. pitch in semitones
  // (MIDI note scale); gain 0..1; mode kSaw or kPulse; shape -1..1; ratio = slave / master
  // frequency (>= 1); with jumpGain the new gain applies from the first sample. Audio thread.
  void aim(int frames, float pitch, float gain, int mode, float shape, double ratio, bool jumpGain);

  // Adds the next `frames` samples of the aimed span to out[0..frames). Samples past the aimed
  // span (a caller error) hold its targets. Audio thread.
  void render(float* out, int frames);

 private:
  // render() with the kernels of one instruction set (engine/isa.h).
  template <class Isa>
  void renderWith(float* out, int frames);

  // The values that ramp across a span; frequency in cycles per sample.
  struct Ramped {
    double frequency, ratio, offset, polarity, gain;
  };

  void aimAt(int frames, Ramped to, bool jumpGain);
  void prime(const Ramped& from);
  void settle();
  void resetEdge();
  template <class Isa>
  void addStep(double height, double samplesAgo);
  template <class Isa>
  void play(float* out, int frames, bool synced);
  // The per-sample loop; kSync false leaves the master out (ratio exactly 1 throughout), kRamp
  // false the ramps (every step 0).
  template <class Isa, bool kSync, bool kRamp>
  void run(float* out, int frames);

  const BlepTable* table_;
  float sampleRate_ = 44100.0f;
  CyclesCache cyclesCache_;
  float correction_[kRingSize] = {};
  int correctionIndex_ = 0;
  bool started_ = false;
  bool needsReset_ = false;
  bool edgePending_ = false;
  double slavePhase_ = 0.0;
  double masterPhase_ = 0.0;
  double offsetCycle_ = 0.0;  // a whole number: floor of the offset at the last sample

  // The aimed span: the running values, their per-sample steps and the targets they reach.
  Ramped value_{0.0, 1.0, 0.0, 1.0, 0.0};
  Ramped step_{};
  Ramped target_{0.0, 1.0, 0.0, 1.0, 0.0};
  int spanLeft_ = 0;    // frames of the span not yet rendered
  int spanLength_ = 0;  // frames of a silent span since its phases were last brought up to date
  bool silent_ = true;  // the span adds nothing, it only advances the phases
  bool synced_ = false;
};

// Compiled once per instruction set, in saw_pulse_oscillator.cpp (engine/isa.h).
extern template void SawPulseOscillator::renderWith<isa::Baseline>(float*, int);
extern template void SawPulseOscillator::renderWith<isa::Avx2>(float*, int);

}  // namespace ziv
