#include "engine/envelope.h"

#include <algorithm>
#include <cmath>

namespace ziv {
namespace {

// The exponential curves run to exp(-10) of their span and then jump to the end value.
constexpr float kCurveSpan = 10.0f;

// Longest stage times in seconds (knob at 1): attack, amplitude/filter decay and release, and
// modulation decay and release.
constexpr float kAttackScale = 4.0f;
constexpr float kLongScale = 10.0f;
constexpr float kModScale = 5.0f;

float curve(float progress, bool linear) {
  return linear ? 1.0f - progress : std::exp(-kCurveSpan * progress);
}

void enter(EnvelopeState& state, std::uint32_t stage) {
  state.stage = stage;
  state.progress = 0.0f;
}

EnvelopeTimes timesFrom(const Parameter* params, int attackIndex, float decayReleaseScale,
                        bool squaredSustain, bool linear) {
  const float a = params[attackIndex].voiceValue;
  const float d = params[attackIndex + 1].voiceValue;
  const float s = params[attackIndex + 2].voiceValue;
  const float r = params[attackIndex + 3].voiceValue;
  EnvelopeTimes times;
  times.attack = kAttackScale * a * a * a;
  times.decay = decayReleaseScale * d * d;
  times.sustain = squaredSustain ? s * s : s;
  times.release = decayReleaseScale * r * r;
  times.linear = linear;
  return times;
}

}  // namespace

EnvelopeTimes ampEnvelopeTimes(const Parameter* params) {
  return timesFrom(params, kAmpEnvAttack, kLongScale, true, false);
}

EnvelopeTimes filterEnvelopeTimes(const Parameter* params) {
  return timesFrom(params, kFilterEnvAttack, kLongScale, true, false);
}

EnvelopeTimes modEnvelopeTimes(const Parameter* params) {
  return timesFrom(params, kModEnvAttack, kModScale, false, true);
}

float advanceEnvelope(EnvelopeState& state, float dt, const EnvelopeTimes& times) {
  if (state.stage == kStageAttack) {
    const float elapsed = times.attack * state.progress + dt;
    if (elapsed < times.attack) {
      state.progress = elapsed / times.attack;
      state.level = state.progress;
      return state.level;
    }
    enter(state, kStageDecay);
    dt = elapsed - times.attack;
    if (times.attack > 0.0f || times.decay > 0.0f) {
      // The decay starts with the next call.
      state.level = 1.0f;
      return state.level;
    }
  }
  if (state.stage == kStageDecay) {
    const float elapsed = times.decay * state.progress + dt;
    if (elapsed < times.decay) {
      state.progress = elapsed / times.decay;
      state.level = (1.0f - times.sustain) * curve(state.progress, times.linear) + times.sustain;
      return state.level;
    }
    enter(state, kStageSustain);
  }
  if (state.stage == kStageSustain) {
    state.level = times.sustain;
    return state.level;
  }
  if (state.stage == kStageRelease) {
    const float elapsed = times.release * state.progress + dt;
    if (elapsed >= times.release) {
      enter(state, kStageFinished);
      state.level = 0.0f;
      return state.level;
    }
    state.progress = elapsed / times.release;
    state.level = state.releaseLevel * curve(state.progress, times.linear);
    return state.level;
  }
  state.level = 0.0f;
  return state.level;
}

void EnvelopeGain::aim(EnvelopeState& state, const EnvelopeTimes& times, int frames, float sampleRate) {
  pieces_ = 0;
  piece_ = 0;
  double gain = gain_;
  int done = 0;
  while (done < frames) {
    int length = frames - done;
    if ((state.stage == kStageAttack || state.stage == kStageDecay) && pieces_ < kMaxPieces - 1) {
      const float stageTime = state.stage == kStageAttack ? times.attack : times.decay;
      const double untilStageEnd = std::floor((1.0 - state.progress) * stageTime * sampleRate + 1.0);
      length = static_cast<int>(std::min(std::max(untilStageEnd, 1.0), static_cast<double>(length)));
    }
    const double target = advanceEnvelope(state, static_cast<float>(length) / sampleRate, times);
    length_[pieces_] = length;
    step_[pieces_] = (target - gain) / length;
    end_[pieces_] = target;
    ++pieces_;
    gain = target;
    done += length;
  }
  pieceLeft_ = pieces_ > 0 ? length_[0] : 0;
}

int EnvelopeGain::remaining() const {
  int left = pieceLeft_;
  for (int p = piece_ + 1; p < pieces_; ++p) left += length_[p];
  return left;
}

void EnvelopeGain::apply(float* buf, int frames) {
  double gain = gain_;
  int done = 0;
  while (done < frames && piece_ < pieces_) {
    const int length = std::min(frames - done, pieceLeft_);
    const double step = step_[piece_];
    float* out = buf + done;
    for (int i = 0; i < length; ++i) {
      gain += step;
      out[i] = static_cast<float>(out[i] * gain);
    }
    done += length;
    pieceLeft_ -= length;
    if (pieceLeft_ == 0) {
      // Each piece ends exactly on its level, not on the sum of its steps.
      gain = end_[piece_];
      if (++piece_ < pieces_) pieceLeft_ = length_[piece_];
    }
  }
  for (int i = done; i < frames; ++i) buf[i] = static_cast<float>(buf[i] * gain);
  gain_ = gain;
}

void releaseEnvelope(EnvelopeState& state) {
  if (state.stage == kStageRelease) return;
  state.releaseLevel = state.level;
  enter(state, kStageRelease);
}

void restartEnvelopeFromLevel(EnvelopeState& state) {
  if (state.held()) return;
  state.stage = kStageAttack;
  state.progress = state.level;
}

}  // namespace ziv
