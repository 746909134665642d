// The global effect chain and its idle tests; see mix_chain.h.
#include "engine/effects/mix_chain.h"

#include <cmath>

#include "engine/dsp.h"

namespace ziv {
namespace {

bool blockIsQuiet(const float* left, const float* right, int frames) {
  float peak = 0.0f;
  for (int i = 0; i < frames; ++i) peak = std::fmax(peak, std::fmax(std::fabs(left[i]), std::fabs(right[i])));
  return peak <= kSilence;
}

}  // namespace

MixChain::MixChain() {
  setSampleRate(44100.0f);
}

int MixChain::latency(const Parameter& limiterSwitch, float limiterValue, float rate) {
  return limiterSwitch.stepped(limiterValue) == 1 ? Limiter::lookAhead(rate) : 0;
}

void MixChain::setSampleRate(float rate) {
  if (!usableSampleRate(rate)) return;  // keeps the last good rate
  dcLeft_.setSampleRate(rate);
  dcRight_.setSampleRate(rate);
  chorus_.setSampleRate(rate);
  delay_.setSampleRate(rate);
  eq_.setSampleRate(rate);
  // The shelves' history and last frequencies belong to the old rate: start them afresh.
  eq_.reset();
  limiter_.setSampleRate(rate);
}

void MixChain::reset() {
  dcLeft_.reset();
  dcRight_.reset();
  chorus_.reset();
  delay_.reset();
  eq_.reset();
  limiter_.reset();
  chainIdle_ = false;
}

void MixChain::aim(int frames, const Parameter* params, double tempoBpm) {
  dcLeft_.aim();
  dcRight_.aim();

  ChorusSettings chorus;
  chorus.delay = params[kChorusDelay].globalValue;
  chorus.rate = params[kChorusRate].globalValue;
  chorus.depth = params[kChorusDepth].globalValue;
  chorus.width = params[kChorusWidth].globalValue;
  chorus.mix = params[kChorusMix].globalValue;
  chorus_.aim(frames, chorus);

  const Parameter& sync = params[kDelaySync];
  DelaySettings delay;
  delay.steps = params[kDelayTime].globalStepped();
  delay.synced = sync.stepped(sync.baseValue()) == 1;
  delay.tempoBpm = tempoBpm;
  delay.width = params[kDelayWidth].globalPhysical();
  delay.feedback = params[kDelayFeedback].globalPhysical();
  delay.send = params[kDelaySend].globalPhysical();
  delay_.aim(frames, delay);

  MasterEqSettings eq;
  eq.freqLow = params[kMasterEqFreqLow].globalValue;
  eq.freqHigh = params[kMasterEqFreqHigh].globalValue;
  eq.gainLow = params[kMasterEqGainLow].globalPhysical();
  eq.gainHigh = params[kMasterEqGainHigh].globalPhysical();
  eq.gain = params[kMasterGain].globalValue;
  eq_.aim(frames, eq);

  limiter_.aim(params[kMasterLimiter].globalStepped() == 1);
}

bool MixChain::render(float* left, float* right, int frames, bool voicesSounded) {
  if (frames <= 0) return !voicesSounded;
  // While the buffers are known to hold only zeros, a unit at rest can be passed over: its
  // output would be exactly zero too. That makes an idle chain cost a few tests per call.
  bool zeros = !voicesSounded;
  if (!zeros) {
    replaceNonFinite(left, frames);
    replaceNonFinite(right, frames);
  }

  if (!zeros || !dcLeft_.isAtRest() || !dcRight_.isAtRest()) {
    DcBlocker::renderPair(dcLeft_, dcRight_, left, right, frames);
    zeros = false;
  }
  const bool voicesIdle = !voicesSounded && dcLeft_.isQuiet() && dcRight_.isQuiet();

  chorus_.render(left, right, frames, voicesIdle);
  zeros = zeros && chorus_.bypassed();
  const bool synthIdle = voicesIdle && (zeros || blockIsQuiet(left, right, frames));

  delay_.render(left, right, frames, synthIdle);

  chainIdle_ = synthIdle && delay_.isSilent() && eq_.isSilent();
  if (!chainIdle_) eq_.render(left, right, frames);

  // Zeros in, every unit at rest: the delay added nothing (it adds only while not silent), the EQ
  // did not run, and the limiter lets its input through.
  zeros = zeros && chainIdle_ && limiter_.passesThrough();
  limiter_.render(left, right, frames, chainIdle_);
  return zeros;
}

}  // namespace ziv
