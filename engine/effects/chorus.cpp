// Stereo chorus with slew-limited delay times, Catmull-Rom reads and a bypass at mix 0; see
// chorus.h.
#include "engine/effects/chorus.h"

#include <algorithm>
#include <cmath>

#include "engine/dsp.h"

namespace ziv {
namespace {

constexpr double kPiD = 3.14159265358979323846;
// Rate in Hz = exp(4 r - 1.2): 0.301 Hz to 16.44 Hz.
constexpr double kRateScale = 4.0;
constexpr double kRateOffset = -1.2;
// Delay time in seconds per unit of (0.5 (sin + 1) depth^2 + delay^2).
constexpr double kTimeScale = 0.05;
// Samples beyond the delay: the interpolator reads up to three samples further back, plus one
// for rounding of the length.
constexpr double kRingMargin = 5.0;
// The deepest read is floor(D) + 3 samples behind the newest.
constexpr int kInterpolationReach = 4;

double clampUnit(float value) {
  return std::clamp(static_cast<double>(value), 0.0, 1.0);
}

// 4-point, third-order Hermite (Catmull-Rom) between p1 (f = 0) and p2 (f = 1).
inline double catmullRom(double p0, double p1, double p2, double p3, double f) {
  const double c1 = 0.5 * (p2 - p0);
  const double c2 = p0 - 2.5 * p1 + 2.0 * p2 - 0.5 * p3;
  const double c3 = 0.5 * (p3 - p0) + 1.5 * (p1 - p2);
  return ((c3 * f + c2) * f + c1) * f + p1;
}

// Reads the ring `delay` samples (fractional) behind its newest sample at `newest`.
inline double readDelayed(const float* ring, int length, int newest, double delay) {
  const int whole = static_cast<int>(delay);
  const double fraction = delay - whole;
  int at = newest - whole;
  if (at < 0) at += length;
  const double p0 = ring[at];
  at = at == 0 ? length - 1 : at - 1;
  const double p1 = ring[at];
  at = at == 0 ? length - 1 : at - 1;
  const double p2 = ring[at];
  at = at == 0 ? length - 1 : at - 1;
  const double p3 = ring[at];
  return catmullRom(p0, p1, p2, p3, fraction);
}

}  // namespace

int Chorus::ringLength(double rate) {
  return static_cast<int>(std::floor(rate * kMaxTime + kRingMargin));
}

Chorus::Chorus() : leftRing_(ringLength(kMaxRingSampleRate)), rightRing_(ringLength(kMaxRingSampleRate)) {
  setSampleRate(44100.0f);
}

void Chorus::setSampleRate(float rate) {
  if (!usableSampleRate(rate)) return;  // keeps the last good rate
  sampleRate_ = rate;
  idleLimit_ = static_cast<int>(kIdleSeconds * rate);
  leftRing_.setLength(ringLength(rate));
  rightRing_.setLength(ringLength(rate));
  idleSamples_ = 0;
}

void Chorus::reset() {
  leftRing_.clear();
  rightRing_.clear();
  started_ = false;
  remaining_ = 0;
  idleSamples_ = 0;
}

void Chorus::aim(int frames, const ChorusSettings& settings) {
  frames = std::clamp(frames, 1, kMaxBlock);
  const double rate = sampleRate_;
  // exp and sqrt run only when their knobs move, so a chorus at rest costs a few comparisons.
  if (settings.mix != mixInput_) {
    mixInput_ = settings.mix;
    const double mix = clampUnit(settings.mix);
    targetDry_ = std::sqrt(1.0 - mix);
    targetWet_ = std::sqrt(mix);
  }
  if (settings.rate != rateInput_) {
    rateInput_ = settings.rate;
    lfoHz_ = std::exp(kRateScale * clampUnit(settings.rate) + kRateOffset);
  }
  const double targetDry = targetDry_, targetWet = targetWet_, lfoHz = lfoHz_;

  // The LFO runs on whatever the span does, so its phase depends only on the samples rendered.
  phase_ -= remaining_ * phaseStep_;
  phaseStep_ = lfoHz / rate;
  phase_ += frames * lfoHz / rate;
  phase_ -= std::floor(phase_);
  remaining_ = frames;

  // Nothing reads the rings audibly when the span starts without a wet signal: the times then
  // take their targets at once instead of slewing from wherever they were.
  const bool wetSilent = !started_ || wet_ <= kSilence;
  if (!started_) {
    dry_ = targetDry;
    wet_ = targetWet;
    started_ = true;
  }
  bypassed_ = std::max(wet_, targetWet) <= kSilence;
  if (bypassed_) {
    dry_ = targetDry;
    wet_ = targetWet;
    leftStep_ = rightStep_ = dryStep_ = wetStep_ = 0.0;
    return;
  }

  const double delay = clampUnit(settings.delay);
  const double depth = clampUnit(settings.depth);
  const double x = 2.0 * kPiD * phase_;
  const double sweep = 0.5 * depth * depth;
  const double floorTime = delay * delay;
  const double targetLeft = ((std::sin(x) + 1.0) * sweep + floorTime) * kTimeScale;
  const double targetRight =
      ((std::sin(x + clampUnit(settings.width) * kPiD) + 1.0) * sweep + floorTime) * kTimeScale;
  if (wetSilent) {
    leftTime_ = targetLeft;
    rightTime_ = targetRight;
  }
  const double inv = 1.0 / frames;
  leftStep_ = std::clamp((targetLeft - leftTime_) * inv, -kMaxSlewPerSample, kMaxSlewPerSample);
  rightStep_ = std::clamp((targetRight - rightTime_) * inv, -kMaxSlewPerSample, kMaxSlewPerSample);
  dryStep_ = (targetDry - dry_) * inv;
  wetStep_ = (targetWet - wet_) * inv;
}

void Chorus::render(float* left, float* right, int frames, bool synthIdle) {
  if (frames <= 0) return;
  const int ramped = std::min(frames, remaining_);
  remaining_ -= ramped;
  if (bypassed_) {
    feed(left, right, frames, synthIdle);
    return;
  }
  idleSamples_ = 0;
  process(left, right, ramped);
  if (ramped < frames) {
    leftStep_ = rightStep_ = dryStep_ = wetStep_ = 0.0;
    process(left + ramped, right + ramped, frames - ramped);
  }
}

// The idle count advances per sample, so the sample where feeding stops is the same however the
// span is cut. The samples it leaves out are quiet: the synth was idle through all of them.
void Chorus::feed(const float* left, const float* right, int frames, bool synthIdle) {
  int fed = frames;
  if (synthIdle) {
    fed = std::clamp(idleLimit_ - idleSamples_, 0, frames);
    idleSamples_ += fed;
  } else {
    idleSamples_ = 0;
  }
  leftRing_.write(left, fed);
  rightRing_.write(right, fed);
}

void Chorus::process(float* left, float* right, int frames) {
  float* leftRing = leftRing_.samples();
  float* rightRing = rightRing_.samples();
  const int length = leftRing_.length();
  const double rate = sampleRate_;
  const double maxDelay = length - kInterpolationReach;
  const double leftStep = leftStep_, rightStep = rightStep_, dryStep = dryStep_, wetStep = wetStep_;
  int write = leftRing_.writePosition();
  double leftTime = leftTime_, rightTime = rightTime_, dry = dry_, wet = wet_;
  for (int i = 0; i < frames; ++i) {
    leftTime += leftStep;
    rightTime += rightStep;
    dry += dryStep;
    wet += wetStep;
    const float inLeft = left[i];
    const float inRight = right[i];
    leftRing[write] = inLeft;
    rightRing[write] = inRight;
    const double leftDelay = std::clamp(leftTime * rate, 0.0, maxDelay);
    const double rightDelay = std::clamp(rightTime * rate, 0.0, maxDelay);
    const double wetLeft = readDelayed(leftRing, length, write, leftDelay);
    const double wetRight = readDelayed(rightRing, length, write, rightDelay);
    left[i] = static_cast<float>(wet * wetLeft + dry * inLeft);
    right[i] = static_cast<float>(wet * wetRight + dry * inRight);
    if (++write == length) write = 0;
  }
  leftRing_.setWritePosition(write);
  rightRing_.setWritePosition(write);
  leftTime_ = leftTime;
  rightTime_ = rightTime;
  dry_ = dry;
  wet_ = wet;
}

}  // namespace ziv
