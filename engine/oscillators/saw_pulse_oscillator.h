// The saw/pulse core of OSC 1 and OSC 2: two saws of one phase with band-limited hard sync.
//
// The audible ("slave") saw runs at ratio times the frequency of a hidden sync master and
// restarts whenever the master wraps. A second saw shares the slave's phase, shifted by an
// offset: in saw mode it is added (shape moves the relative phase over -0.49..0.49, shape 0
// doubles the saw), in pulse mode it is subtracted, which leaves a pulse whose width is the
// offset (0.01..0.99). Every jump of the naive waveform (slave wrap, second-saw wrap, sync
// restart) is located to a fraction of a sample and corrected with the interpolated residual of
// a minimum-phase band-limited step (BlepTable), added into a ring of the next 64 samples.
// Pitch, ratio, offset, polarity and gain ramp linearly per sample from the last block's values;
// the first block after start() takes them at once. A synced saw that would pass the Nyquist
// frequency fades to silence over one block instead of aliasing. Silent blocks only advance the
// phases; the next audible block first runs 10 discarded samples so the ring holds the tails of
// the recent jumps. While the ratio stays exactly 1 the sync cannot change anything and the loop
// runs without the master (which then simply follows the slave).
// Limits: frames per call at most kMaxBlock; ratio at least 1 (sync only raises the pitch).
#pragma once

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

  // Audio thread, or any thread while the engine does not render.
  void setSampleRate(float rate) { sampleRate_ = rate; }

  // Fresh voice start: the master (and so the slave) starts at `phase` (0..1), the correction
  // ring is cleared and the next block takes its settings without ramps. Audio thread.
  void start(double phase);

  // Adds one block to out[0..frames). pitch in semitones (MIDI note scale); gain 0..1; mode
  // kSaw or kPulse; shape -1..1; ratio = slave / master frequency (>= 1); with jumpGain the new
  // gain applies from the first sample. Audio thread.
  void render(float* out, int frames, float pitch, float gain, int mode, float shape, double ratio,
              bool jumpGain);

  // Observation for tests: the sync master's phase in cycles.
  double masterPhase() const { return masterPhase_; }

 private:
  // One block's ramp: start values and per-sample increments.
  struct Ramp {
    double frequency, dFrequency;
    double ratio, dRatio;
    double offset, dOffset;
    double polarity, dPolarity;
    double gain, dGain;
  };

  void resetEdge();
  void addStep(double height, double samplesAgo);
  void runDispatch(float* out, int frames, const Ramp& ramp);
  // The per-sample loop; kSync false leaves the master out (ratio exactly 1 throughout).
  template <bool kSync>
  void run(float* out, int frames, const Ramp& ramp);

  const BlepTable* table_;
  float sampleRate_ = 44100.0f;
  float correction_[kRingSize] = {};
  int correctionIndex_ = 0;
  bool started_ = false;
  bool needsReset_ = false;
  bool edgePending_ = false;
  double slavePhase_ = 0.0;
  double masterPhase_ = 0.0;
  double ratio_ = 1.0;
  float pitch_ = 0.0f;
  CyclesCache cyclesCache_;
  double offset_ = 0.0;
  double offsetCycle_ = 0.0;  // a whole number: floor of the offset at the last sample
  double polarity_ = 1.0;
  double gain_ = 0.0;
};

}  // namespace ziv
