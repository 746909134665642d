#include "engine/voice.h"

#include <algorithm>
#include <cmath>

#include "engine/dsp.h"
#include "engine/random.h"

namespace ziv {
namespace {

// Glides shorter than this many squared seconds jump straight to the note.
constexpr float kGlideThreshold = 1e-6f;
// How long the sound of a stolen or retriggered voice takes to fade out: long enough that the
// fall is no steeper than a low note's own waveform, short enough not to smear the new note.
constexpr float kFadeSeconds = 0.005f;

}  // namespace

void Voice::setSampleRate(float rate) {
  sampleRate_ = rate;
  chain_.setSampleRate(rate);
}

void Voice::start(const VoiceStart& request) {
  pitch = request.glideStart;
  velocity = request.velocity;
  note = request.note;
  age = 0;
  silent_ = false;
  globalLfoHold = request.globalLfoHold;
  glideDistance = std::fabs(request.glideStart - static_cast<float>(request.note));
  unisonGain = 1.0f / std::sqrt(static_cast<float>(request.unisonCount));

  if (request.unisonCount > 1) {
    // Spread evenly over -1..1, each voice pushed at most half a slot off its place.
    const float x = 2.0f * request.unisonIndex / static_cast<float>(request.unisonCount - 1) - 1.0f;
    unisonPosition =
        x + (request.randomOffset * (1.0f / Random::kMax) - 0.5f) / static_cast<float>(request.unisonCount);
    panPosition = (request.unisonCount % 2 == 1) ? x : std::fabs(x);
    if (request.unisonIndex % 2 == 1) panPosition = -panPosition;
    startPhase = request.randomPhase / static_cast<float>(Random::kMax);
    startPhase -= std::floor(startPhase);
  } else {
    unisonPosition = 0.0f;
    panPosition = 0.0f;
    startPhase = 0.0f;
  }

  if (request.legato && request.previous != nullptr) {
    // Glide on from the previous voice without retriggering its envelopes or its LFO.
    ampEnvelope = request.previous->ampEnvelope;
    ampGain_ = request.previous->ampGain_;
    filterEnvelope = request.previous->filterEnvelope;
    modulation = request.previous->modulation;
    globalLfoHold = request.previous->globalLfoHold;
  } else if (request.mode == StartMode::kLegato) {
    // The attack goes on from the gain reached on this sample, not from the tick's end.
    ampEnvelope.level = static_cast<float>(ampGain_.gain());
    restartEnvelopeFromLevel(ampEnvelope);
    restartEnvelopeFromLevel(filterEnvelope);
    restartEnvelopeFromLevel(modulation.modEnvelope);
    return;
  } else {
    ampEnvelope.clear();
    ampGain_.jumpTo(ampEnvelope);
    filterEnvelope.clear();
    modulation.modEnvelope.clear();
    modulation.lfo.restart();  // a triggered LFO
  }

  chain_.restart(request.noiseSeed);
  if (request.mode == StartMode::kFresh) {
    output.gain = -1.0f;
    chain_.startSources(startPhase);
  }
}

void Voice::release() {
  if (ampEnvelope.stage != kStageRelease) {
    // The envelope was advanced to the end of the aimed span: the release starts from the gain of
    // this sample instead, and the rest of the span is aimed again from there.
    ampEnvelope.level = static_cast<float>(ampGain_.gain());
    releaseEnvelope(ampEnvelope);
    const int left = ampGain_.remaining();
    if (left > 0) ampGain_.aim(ampEnvelope, ampTimes_, left, sampleRate_);
  }
  releaseEnvelope(filterEnvelope);
  releaseEnvelope(modulation.modEnvelope);
}

void Voice::kill() {
  fadeRemaining_ = 0;
  ampEnvelope = EnvelopeState{};
  filterEnvelope = EnvelopeState{};
  modulation.modEnvelope = EnvelopeState{};
  ampGain_.jumpTo(ampEnvelope);
  output.gain = -1.0f;
  silent_ = true;
  const int seeds[VoiceChain::kOscillators] = {};
  chain_.restart(seeds);
}

void Voice::fadeOut() {
  fadeLength_ = std::max(1, static_cast<int>(kFadeSeconds * sampleRate_));
  fadeRemaining_ = fadeLength_;
}

void Voice::applyFade(float* out, int frames) {
  const int fading = std::min(frames, fadeRemaining_);
  const float step = 1.0f / static_cast<float>(fadeLength_);
  for (int i = 0; i < fading; ++i) out[i] *= static_cast<float>(fadeRemaining_ - 1 - i) * step;
  std::fill(out + fading, out + frames, 0.0f);
  fadeRemaining_ -= fading;
  if (fadeRemaining_ == 0) kill();
}

void Voice::refreshSilence() {
  silent_ = silent_ ||
            (ampEnvelope.stage == kStageFinished && ampEnvelope.level <= kSilence && chain_.filtersSilent());
}

float Voice::pitchBend(const Parameter* params) {
  return params[kPitchBendRange].voicePhysical() * params[kPitchWheel].globalPhysical();
}

float Voice::soundingPitch(const Parameter* params) const {
  return pitch + pitchBend(params) + params[kVoicePitch].voicePhysical() * 24.0f +
         0.5f * unisonPosition * params[kUnisonDetune].voiceValue;
}

void Voice::glide(float dt, const Parameter* params) {
  const float g = params[kGlideTime].voiceValue;
  const float target = static_cast<float>(note);
  if (g * g <= kGlideThreshold) {
    pitch = target;
    return;
  }
  const float step = dt * glideDistance / (g * g);
  if (pitch < target) {
    pitch = std::fmin(pitch + step, target);
  } else {
    pitch = std::fmax(pitch - step, target);
  }
}

void Voice::control(Parameter* params, int frames) {
  const float dt = static_cast<float>(frames) / sampleRate_;
  // Modulation first: it may move the glide time and the envelopes' times.
  modulation.apply(params, velocity, pitch + pitchBend(params), dt);
  glide(dt, params);
  advanceEnvelope(filterEnvelope, dt, filterEnvelopeTimes(params));

  // The oscillators: an instant attack starts them at full level; once the amplitude envelope
  // has finished they fade out so the filters can ring down and the voice become silent.
  VoiceChainInput chain;
  chain.pitch = soundingPitch(params);
  chain.filterEnvLevel = filterEnvelope.level;
  chain.jumpGain = ampEnvelope.stage == kStageAttack && ampEnvelope.level <= 0.0f &&
                   params[kAmpEnvAttack].voiceValue <= 0.0f;
  chain.sourcesOn = ampEnvelope.stage != kStageFinished;
  chain_.aim(frames, params, chain);

  ampTimes_ = ampEnvelopeTimes(params);
  ampGain_.aim(ampEnvelope, ampTimes_, frames, sampleRate_);
}

void Voice::render(float* out, int frames) {
  chain_.render(out, frames);
  ampGain_.apply(out, frames);
  if (fadeRemaining_ > 0) applyFade(out, frames);
  age += frames;
}

}  // namespace ziv
