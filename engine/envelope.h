// ADSR envelope state and its time and level laws.
//
// An envelope rises linearly through its attack, falls through its decay to the sustain level
// (exponentially or linearly), holds, and on release falls from wherever it was to 0. The caller
// advances it by a span of time and gets the new level; how levels become per-sample gains is
// the voice's business. Stages: 0 attack, 1 decay, 2 sustain, 3 release, 4 finished.
#pragma once

#include <cstdint>

#include "engine/parameter.h"

namespace ziv {

enum EnvelopeStage : std::uint32_t {
  kStageAttack = 0,
  kStageDecay = 1,
  kStageSustain = 2,
  kStageRelease = 3,
  kStageFinished = 4,
};

struct EnvelopeState {
  std::uint32_t stage = kStageFinished;
  float progress = 0.0f;  // fraction of the current stage already passed
  float level = 0.0f;
  float releaseLevel = 0.0f;

  // Fresh start: attack from silence.
  void clear() {
    stage = kStageAttack;
    progress = 0.0f;
    level = 0.0f;
    releaseLevel = 0.0f;
  }
  bool held() const { return stage <= kStageSustain; }
};

struct EnvelopeTimes {
  float attack = 0.0f;   // seconds
  float decay = 0.0f;    // seconds
  float sustain = 1.0f;  // level 0..1
  float release = 0.0f;  // seconds
  bool linear = false;   // curve of decay and release
};

// The time and level laws of the three envelopes, from their four knobs' voice values (0..1):
// attack 4 a^3 s; amplitude and filter: decay 10 d^2 s, sustain s^2, release 10 r^2 s,
// exponential; modulation: decay 5 d^2 s, sustain s, release 5 r^2 s, linear.
EnvelopeTimes ampEnvelopeTimes(const Parameter* params);
EnvelopeTimes filterEnvelopeTimes(const Parameter* params);
EnvelopeTimes modEnvelopeTimes(const Parameter* params);

// Advances by dt seconds and returns the new level.
float advanceEnvelope(EnvelopeState& state, float dt, const EnvelopeTimes& times);

// The amplitude envelope's gain over one aimed span of samples, as straight pieces: the span is
// cut where the attack or the decay ends, so a stage change lands on its own sample, and within
// each piece the gain moves linearly (in double precision) from the level at its start to the
// level at its end: the gain never steps. aim() advances the envelope state to the end of the
// span at once; apply() then multiplies the span's samples by the gain in any number of calls,
// with the same result whatever the split. Audio thread.
class EnvelopeGain {
 public:
  // Sets up the next `frames` samples (1..kMaxBlock) from the gain reached so far, advancing
  // `state` to the end of the span.
  void aim(EnvelopeState& state, const EnvelopeTimes& times, int frames, float sampleRate);
  // Multiplies buf[0..frames) by the next frames of the span's gain. Past the span's end the
  // gain holds its last value.
  void apply(float* buf, int frames);
  // Starts again from `state` as it stands (its level), without a ramp: after a reset.
  void jumpTo(const EnvelopeState& state) { gain_ = state.level, pieces_ = 0, piece_ = 0, pieceLeft_ = 0; }
  // The gain reached after the samples applied so far, and the span's samples not yet applied.
  double gain() const { return gain_; }
  int remaining() const;

 private:
  // Attack, decay and sustain or release: a span holds at most three pieces, one spare.
  static constexpr int kMaxPieces = 4;
  int length_[kMaxPieces] = {};
  double step_[kMaxPieces] = {};
  double end_[kMaxPieces] = {};  // the exact level each piece ends on
  int pieces_ = 0;
  int piece_ = 0;      // the piece being applied
  int pieceLeft_ = 0;  // its samples not yet applied
  double gain_ = 0.0;
};

// Enters the release from the current level, unless already releasing.
void releaseEnvelope(EnvelopeState& state);

// Monophonic legato: an envelope that was releasing or had finished attacks again from its
// current level, so the straight attack continues without a jump. Held envelopes run on.
void restartEnvelopeFromLevel(EnvelopeState& state);

}  // namespace ziv
