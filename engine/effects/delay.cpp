// Stereo feedback delay with tail tracking; see delay.h.
#include "engine/effects/delay.h"

#include <algorithm>
#include <cmath>

#include "engine/dsp.h"

namespace ziv {
namespace {

// Seconds per step: a sixteenth note is a quarter of a beat of 60 / tempo seconds.
constexpr double kSixteenthBeats = 15.0;
constexpr double kMillisecond = 0.001;
// Ring room beyond the longest time, for the rounding of the delay to whole samples.
constexpr double kRingMargin = 5.0;
// Floors for the tail estimate, so a zero time or feedback still gives a finite decay.
constexpr float kMinTailTime = 0.001f;
constexpr float kMinTailFeedback = 0.0001f;

}  // namespace

int Delay::ringLength(double rate) {
  return static_cast<int>(std::floor(rate * kMaxTime + kRingMargin));
}

Delay::Delay() : leftRing_(ringLength(kMaxRingSampleRate)), rightRing_(ringLength(kMaxRingSampleRate)) {
  setSampleRate(44100.0f);
}

DelayTimes Delay::times(const DelaySettings& settings) {
  double time = kMaxTime;
  if (!settings.synced) {
    time = settings.steps * kMillisecond;
  } else if (settings.tempoBpm > 0.0) {
    time = settings.steps * kSixteenthBeats / settings.tempoBpm;
  }
  time = std::clamp(time, 0.0, static_cast<double>(kMaxTime));
  const float width = std::clamp(settings.width, -1.0f, 1.0f);
  const float shift = kMaxWidthShift * width * width * width;
  DelayTimes result;
  result.left = static_cast<float>(std::min(1.0f - shift, 1.0f) * time);
  result.right = static_cast<float>(std::min(1.0f + shift, 1.0f) * time);
  return result;
}

void Delay::setSampleRate(float rate) {
  if (!usableSampleRate(rate)) return;  // keeps the last good rate
  sampleRate_ = rate;
  tailFrames_ = 0;  // the decay per span changes with the rate
  leftRing_.setLength(ringLength(rate));
  rightRing_.setLength(ringLength(rate));
}

void Delay::reset() {
  leftRing_.clear();
  rightRing_.clear();
  leftTime_ = rightTime_ = 0.0f;
  remaining_ = 0;
  tail_ = 0.0f;
}

bool Delay::isSilent() const {
  return tail_ <= kSilence;
}

void Delay::aim(int frames, const DelaySettings& settings) {
  frames = std::clamp(frames, 1, kMaxBlock);
  target_ = times(settings);
  targetFeedback_ = std::clamp(settings.feedback, 0.0f, 1.0f) * kMaxFeedback;
  targetSend_ = std::max(settings.send, 0.0f);
  remaining_ = frames;

  const float longest = std::max({target_.left, target_.right, leftTime_, rightTime_, kMinTailTime});
  const float feedbackBound = std::max({targetFeedback_, feedback_, kMinTailFeedback});
  // pow runs only when its inputs move, so a delay at rest costs a few comparisons per span.
  if (longest != tailLongest_ || feedbackBound != tailFeedback_ || frames != tailFrames_) {
    tailLongest_ = longest;
    tailFeedback_ = feedbackBound;
    tailFrames_ = frames;
    tailGrowth_ = std::pow(feedbackBound, -longest);
    tailDecay_ = std::pow(feedbackBound, static_cast<float>(frames) / (longest * sampleRate_));
  }
  tailRise_ = tailGrowth_ * std::max(send_, targetSend_);
  tailDecayed_ = false;

  if (leftTime_ <= 0.0f) {
    // Not yet set: the first samples rendered take the targets at once (see render).
    leftStep_ = rightStep_ = feedbackStep_ = sendStep_ = 0.0f;
    return;
  }
  const float inv = 1.0f / static_cast<float>(frames);
  leftStep_ = (target_.left - leftTime_) * inv;
  rightStep_ = (target_.right - rightTime_) * inv;
  feedbackStep_ = (targetFeedback_ - feedback_) * inv;
  sendStep_ = (targetSend_ - send_) * inv;
}

void Delay::arrive() {
  leftTime_ = target_.left;
  rightTime_ = target_.right;
  feedback_ = targetFeedback_;
  send_ = targetSend_;
  leftStep_ = rightStep_ = feedbackStep_ = sendStep_ = 0.0f;
}

void Delay::render(float* left, float* right, int frames, bool synthIdle) {
  if (frames <= 0) return;
  // The tail moves once per span whatever the split: raising is idempotent, and the decay of the
  // whole span is applied at its first idle call only.
  if (!synthIdle) {
    tail_ = std::max(tail_, tailRise_);
  } else if (!tailDecayed_) {
    tailDecayed_ = true;
    tail_ *= tailDecay_;
    // Below the threshold the estimate no longer matters (sound returning raises it above any
    // value this small), so it settles at zero and an idle delay needs no further arithmetic.
    if (tail_ <= kSilence) tail_ = 0.0f;
  }
  if (tail_ <= kSilence) return;

  if (leftTime_ <= 0.0f) arrive();
  const int ramped = std::min(frames, remaining_);
  remaining_ -= ramped;
  process(left, right, ramped);
  if (remaining_ == 0) {
    arrive();
    process(left + ramped, right + ramped, frames - ramped);
  }
}

void Delay::process(float* left, float* right, int frames) {
  float* leftRing = leftRing_.samples();
  float* rightRing = rightRing_.samples();
  const int length = leftRing_.length();
  const float rate = sampleRate_;
  const float leftStep = leftStep_, rightStep = rightStep_, feedbackStep = feedbackStep_,
              sendStep = sendStep_;
  int write = leftRing_.writePosition();
  float leftTime = leftTime_, rightTime = rightTime_, feedback = feedback_, send = send_;
  for (int i = 0; i < frames; ++i) {
    leftTime += leftStep;
    rightTime += rightStep;
    feedback += feedbackStep;
    send += sendStep;
    // Whole samples, at least one (the slot being written is the oldest) and at most the ring.
    const int leftDelay = std::clamp(static_cast<int>(leftTime * rate + 0.5f), 1, length - 1);
    const int rightDelay = std::clamp(static_cast<int>(rightTime * rate + 0.5f), 1, length - 1);
    int leftRead = write - leftDelay;
    if (leftRead < 0) leftRead += length;
    int rightRead = write - rightDelay;
    if (rightRead < 0) rightRead += length;
    const float delayedLeft = leftRing[leftRead];
    const float delayedRight = rightRing[rightRead];
    leftRing[write] = delayedLeft * feedback + left[i] * send;
    rightRing[write] = right[i] * send + delayedRight * feedback;
    left[i] += delayedLeft;
    right[i] += delayedRight;
    if (++write == length) write = 0;
  }
  leftRing_.setWritePosition(write);
  rightRing_.setWritePosition(write);
  leftTime_ = leftTime;
  rightTime_ = rightTime;
  feedback_ = feedback;
  send_ = send;
}

}  // namespace ziv
