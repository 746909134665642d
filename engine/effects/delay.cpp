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
  leftRing_.setLength(ringLength(rate));
  rightRing_.setLength(ringLength(rate));
}

void Delay::reset() {
  leftRing_.clear();
  rightRing_.clear();
  leftTime_ = rightTime_ = 0.0f;
  tail_ = 0.0f;
}

bool Delay::isSilent() const {
  return tail_ <= kSilence;
}

void Delay::render(float* left, float* right, int frames, const DelaySettings& settings, bool synthIdle) {
  if (frames <= 0) return;
  const DelayTimes next = times(settings);
  const float nextFeedback = std::clamp(settings.feedback, 0.0f, 1.0f) * kMaxFeedback;
  const float nextSend = std::max(settings.send, 0.0f);

  const float longest = std::max({next.left, next.right, leftTime_, rightTime_, kMinTailTime});
  const float feedbackBound = std::max({nextFeedback, feedback_, kMinTailFeedback});
  if (!synthIdle) {
    tail_ = std::max(tail_, std::pow(feedbackBound, -longest) * std::max(send_, nextSend));
  } else if (tail_ > 0.0f) {
    tail_ *= std::pow(feedbackBound, static_cast<float>(frames) / (longest * sampleRate_));
    // Below the threshold the estimate no longer matters (sound returning raises it above any
    // value this small), so it settles at zero and an idle delay needs no further arithmetic.
    if (tail_ <= kSilence) tail_ = 0.0f;
  }
  if (tail_ <= kSilence) return;

  if (leftTime_ <= 0.0f) {
    leftTime_ = next.left;
    rightTime_ = next.right;
    feedback_ = nextFeedback;
    send_ = nextSend;
  }
  const float inv = 1.0f / static_cast<float>(frames);
  const float leftStep = (next.left - leftTime_) * inv;
  const float rightStep = (next.right - rightTime_) * inv;
  const float feedbackStep = (nextFeedback - feedback_) * inv;
  const float sendStep = (nextSend - send_) * inv;

  float* leftRing = leftRing_.samples();
  float* rightRing = rightRing_.samples();
  const int length = leftRing_.length();
  const float rate = sampleRate_;
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
  leftTime_ = next.left;
  rightTime_ = next.right;
  feedback_ = nextFeedback;
  send_ = nextSend;
}

}  // namespace ziv
