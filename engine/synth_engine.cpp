#include "engine/synth_engine.h"

#include <algorithm>
#include <cmath>

#include "engine/modulation/mod_routing.h"
#include "plugin/parameter_display.h"

namespace ziv {
namespace {

// Sample-rate changes smaller than this are rounding noise from the host, not a new rate.
constexpr float kSampleRateTolerance = 0.001f;
// The summed voices are scaled down by this much to leave headroom for chords and unison.
constexpr float kVoiceHeadroom = 0.25f;

float clampUnit(float value) {
  if (!(value >= 0.0f)) return 0.0f;  // also catches NaN
  return value > 1.0f ? 1.0f : value;
}

}  // namespace

SynthEngine::SynthEngine() {
  for (int index : paramBuildOrder()) params_[index].describe(paramTable()[index]);
  for (Voice& v : voices_) v.setSampleRate(sampleRate_);
  for (Voice& v : fading_) v.setSampleRate(sampleRate_);
  mixChain_.setSampleRate(sampleRate_);
}

void SynthEngine::setParameter(int index, float value, bool fromEditor) {
  if (index < 0 || index >= kParamCount) return;
  value = clampUnit(value);
  params_[index].base.store(value, std::memory_order_relaxed);
  storedChanges_.fetch_add(1, std::memory_order_release);
  parameterChanged(index);
  if (listener_ != nullptr) listener_->onParameterChanged(index, value, fromEditor);
}

void SynthEngine::parameterChanged(int index) {
  if (index != kGlobalLfoSync) return;
  // The global LFO's rate knob means a tempo division (0..23) while synced, a frequency otherwise;
  // its stored value is left as it is.
  Parameter& rate = params_[kGlobalLfoRate];
  const bool synced = params_[kGlobalLfoSync].baseValue() > 0.5f;
  rate.hi.store(synced ? kTempoDivisionCount - 1 : 1, std::memory_order_relaxed);
  rate.constant.store(synced ? 1.0f / (kTempoDivisionCount - 1) : 0.0f, std::memory_order_relaxed);
  rate.display.store(synced ? DisplayRule::kTempoDivision : DisplayRule::kRate, std::memory_order_relaxed);
}

void SynthEngine::parameterDisplay(int index, char* text, std::size_t capacity) const {
  const bool valid = index >= 0 && index < kParamCount;
  valueDisplay(index, valid ? params_[index].baseValue() : 0.0f, text, capacity);
}

void SynthEngine::valueDisplay(int index, float normalised, char* text, std::size_t capacity) const {
  if (text == nullptr || capacity == 0) return;
  if (index < 0 || index >= kParamCount) {
    text[0] = '\0';
    return;
  }
  const Parameter& p = params_[index];
  formatParamValue(p.display.load(std::memory_order_relaxed), p.lo.load(std::memory_order_relaxed),
                   p.hi.load(std::memory_order_relaxed), p.info->choices, normalised, text, capacity);
}

void SynthEngine::setSampleRate(float hz) {
  // An unusable rate keeps the last good one.
  if (!usableSampleRate(hz) || std::fabs(hz - sampleRate_) < kSampleRateTolerance) return;
  sampleRate_ = hz;
  for (Voice& v : voices_) v.setSampleRate(hz);
  for (Voice& v : fading_) v.setSampleRate(hz);
  mixChain_.setSampleRate(hz);
}

void SynthEngine::removeHeld(int note, bool* removed) {
  int kept = 0;
  for (int i = 0; i < heldCount_; ++i) {
    if (heldNotes_[i] == note) {
      *removed = true;
    } else {
      heldNotes_[kept++] = heldNotes_[i];
    }
  }
  heldCount_ = kept;
}

SynthEngine::NoteChoice SynthEngine::chooseGlide(int note, bool legatoMode, bool autoGlide) const {
  const Voice& last = voices_[lastVoice_];
  if (!legatoMode || !last.held()) {
    // Auto glide: a note glides only from a note that is still held; without it, every note
    // glides from the previous one.
    float glideStart = static_cast<float>(note);
    if (last.held()) {
      glideStart = last.pitch;
    } else if (!autoGlide) {
      glideStart = lastNote_;
    }
    return {glideStart, false};
  }
  return {last.pitch, true};
}

void SynthEngine::startVoice(int slot, int note, const NoteChoice& choice, int unisonIndex, int unisonCount,
                             StartMode mode, const Voice* previous) {
  VoiceStart request;
  request.note = note;
  request.glideStart = choice.glideStart;
  request.velocity = noteVelocity_[note];
  request.unisonIndex = unisonIndex;
  request.unisonCount = unisonCount;
  request.mode = mode;
  request.globalLfoHold = globalLfo_.source(params_.data());
  request.legato = choice.legato;
  request.previous = previous;
  if (unisonCount > 1) {
    request.randomOffset = random_.next();
    request.randomPhase = random_.next();
  }
  if (mode != StartMode::kLegato) {
    for (int& seed : request.noiseSeed) seed = random_.next();
  }
  // A note that takes over a sounding voice restarts its envelopes from zero; rather than cut the
  // old sound there (a click), a copy of it fades out while the new note starts. A monophonic
  // legato continuation keeps the sound, and a voice started on this same frame has not been
  // heard yet: neither needs a copy.
  const Voice& old = voices_[slot];
  if (mode != StartMode::kLegato && !old.isSilent() && old.age > 0) fadeOutCopy(old);
  Voice& voice = voices_[slot];
  voice.start(request);
  lastVoice_ = slot;
  // Inside a control tick the note reads its parameters on its own frame, once that frame's
  // events and smoothing step are in force, and aims at the tick's end like every other voice.
  // On a tick's first frame the tick's start does that.
  voicesActive_ = true;
  if (tickLeft_ > 0) startingVoices_.set(static_cast<std::size_t>(slot));
}

void SynthEngine::controlStartingVoices() {
  startVoiceValues();
  for (int slot = 0; slot < kVoiceCount; ++slot) {
    Voice& voice = voices_[slot];
    if (startingVoices_.test(static_cast<std::size_t>(slot)) && !voice.isSilent())
      controlVoice(voice, tickLeft_);
  }
  startingVoices_.reset();
}

void SynthEngine::noteOn(int note, float velocity) {
  if (note < 0 || note > 127) return;
  if (lastNote_ < 0.0f) lastNote_ = static_cast<float>(note);

  const bool legatoMode = params_[kLegatoMode].globalStepped() != 0;
  const bool autoGlide = params_[kAutoGlide].globalStepped() != 0;
  const int unison = std::clamp(params_[kUnisonVoices].globalStepped(), 1, 8);
  const int polyphony = std::clamp(params_[kPolyphony].globalStepped(), 1, 24);

  bool removed = false;
  removeHeld(note, &removed);
  heldNotes_[heldCount_++] = note;
  noteVelocity_[note] = velocity;

  const NoteChoice choice = chooseGlide(note, legatoMode, autoGlide);
  const Voice* previous = &voices_[lastVoice_];
  lastNote_ = static_cast<float>(note);

  if (polyphony != 1) {
    allocatePolyphonic(note, choice, polyphony, unison, previous);
  } else {
    allocateMonophonic(note, choice, unison, legatoMode);
  }
}

void SynthEngine::allocatePolyphonic(int note, const NoteChoice& choice, int polyphony, int unison,
                                     const Voice* previous) {
  const int slots = std::min(polyphony * unison, kVoiceCount);
  int placed = 0;
  // Free slots first.
  for (int slot = 0; slot < slots && placed < unison; ++slot) {
    if (voices_[slot].isSilent()) {
      startVoice(slot, note, choice, placed++, unison, StartMode::kFresh, previous);
    }
  }
  // Then the voices already playing this key.
  for (int slot = 0; slot < slots && placed < unison; ++slot) {
    Voice& v = voices_[slot];
    if (v.note == note) {
      startVoice(slot, note, choice, placed++, unison,
                 v.isSilent() ? StartMode::kFresh : StartMode::kRetrigger, previous);
    }
  }
  // Then steal.
  while (placed < unison) {
    startVoice(chooseVictim(slots), note, choice, placed++, unison, StartMode::kRetrigger, previous);
  }
}

void SynthEngine::fadeOutCopy(const Voice& voice) {
  // A free place, else the copy nearest the end of its fade (the quietest to cut short).
  Voice* place = &fading_[0];
  for (Voice& f : fading_) {
    if (f.isSilent()) {
      place = &f;
      break;
    }
    if (f.fadeRemaining() < place->fadeRemaining()) place = &f;
  }
  *place = voice;
  place->fadeOut();
}

int SynthEngine::chooseVictim(int slots) const {
  // A releasing voice is preferred to a held one, an older to a younger; but as the comparison
  // runs slot by slot, an older held voice can still displace a releasing best. Ties keep the
  // lower slot.
  int best = 0;
  for (int slot = 1; slot < slots; ++slot) {
    const Voice& candidate = voices_[slot];
    const Voice& current = voices_[best];
    if ((!candidate.held() && current.held()) || candidate.age > current.age) best = slot;
  }
  return best;
}

void SynthEngine::allocateMonophonic(int note, const NoteChoice& choice, int unison, bool legatoMode) {
  const NoteChoice mono{choice.glideStart, false};
  for (int k = 0; k < unison; ++k) {
    const Voice& v = voices_[k];
    StartMode mode = StartMode::kRetrigger;
    if (v.held()) {
      mode = legatoMode ? StartMode::kLegato : StartMode::kRetrigger;
    } else if (v.isSilent()) {
      mode = StartMode::kFresh;
    }
    startVoice(k, note, mono, k, unison, mode, nullptr);
  }
}

void SynthEngine::noteOff(int note) {
  bool removed = false;
  removeHeld(note, &removed);
  if (removed && heldCount_ > 0 && params_[kPolyphony].globalStepped() == 1) {
    // Last-note priority: return to the most recent key still held.
    const int back = heldNotes_[heldCount_ - 1];
    noteOn(back, noteVelocity_[back]);
  }
  for (Voice& v : voices_) {
    if (v.note == note && !v.isSilent()) v.release();
  }
}

void SynthEngine::allNotesOff(bool hard) {
  heldCount_ = 0;
  if (hard) {
    // An immediate cut: the fading copies go too.
    for (Voice& v : voices_) v.kill();
    for (Voice& v : fading_) v.kill();
    return;
  }
  for (Voice& v : voices_) {
    if (!v.isSilent()) v.release();
  }
}

void SynthEngine::setWheel(int index, float value) {
  // The wheels are played, not automated: a move takes effect on its own frame instead of
  // ramping across the host block, so a note sent with a bend sounds bent from its first sample.
  params_[index].hold(value);
  parameterChanged(index);
  if (index == kModWheel) updateGlobalValues();
}

void SynthEngine::setPitchWheel(float bend) {
  setWheel(kPitchWheel, clampUnit((bend + 1.0f) * 0.5f));
}

void SynthEngine::setController(int number, float value) {
  if (number == 1) setWheel(kModWheel, clampUnit(value));
}

void SynthEngine::smoothParameters(float fraction) {
  // Nothing stored since every value settled: there is nothing to smooth.
  const std::uint32_t changes = storedChanges_.load(std::memory_order_acquire);
  if (valuesSettled_ && changes == settledChanges_) return;
  bool moved = false, settled = true;
  for (Parameter& p : params_) {
    const float base = p.baseValue();
    const float smoothed = p.previous + (base - p.previous) * fraction;
    moved = moved || smoothed != p.smoothed;
    settled = settled && smoothed == base && p.previous == base;
    p.smoothed = smoothed;
  }
  // The global values always follow the smoothed ones: with nothing moved they stand.
  if (moved) updateGlobalValues();
  valuesSettled_ = settled;
  settledChanges_ = changes;
}

void SynthEngine::updateGlobalValues() {
  for (Parameter& p : params_) p.globalValue = p.smoothed;
  // The mod wheel moves the global values (the global LFO's rate and depth among them) before
  // anything reads them.
  applyModSource(params_.data(), ModSource::kModWheel, params_[kModWheel].smoothed, ModStage::kGlobal);
}

void SynthEngine::endProcess() {
  // Settled since: every previous value is its stored one already.
  if (valuesSettled_ && storedChanges_.load(std::memory_order_acquire) == settledChanges_) return;
  for (Parameter& p : params_) p.previous = p.baseValue();
}

void SynthEngine::holdStoredValues() {
  for (Parameter& p : params_) p.hold(p.baseValue());
  updateGlobalValues();
}

void SynthEngine::reset() {
  heldCount_ = 0;
  for (Voice& v : voices_) v.kill();
  for (Voice& v : fading_) v.kill();
  mixChain_.reset();
  tickLeft_ = 0;  // the control grid counts from here
  startingVoices_.reset();
  voicesActive_ = false;
  // Nothing was playing to glide from: values set while the engine was off (a program chosen
  // before the transport starts) hold from the first sample, so a chord on the first frame gets
  // the program's polyphony and not a value half-way from the previous one.
  holdStoredValues();
}

int SynthEngine::latencySamples(float rate) const {
  const Parameter& limiter = params_[kMasterLimiter];
  return MixChain::latency(limiter, limiter.baseValue(), rate);
}

namespace {

int countSounding(const std::array<Voice, kVoiceCount>& pool) {
  int count = 0;
  for (const Voice& v : pool) count += v.isSilent() ? 0 : 1;
  return count;
}

}  // namespace

int SynthEngine::soundingVoiceCount() const {
  return countSounding(voices_);
}

int SynthEngine::fadingVoiceCount() const {
  return countSounding(fading_);
}

void SynthEngine::startVoiceValues() {
  for (int i = 0; i < kParamCount; ++i) {
    if (i != kPitchWheel && i != kModWheel) params_[i].voiceValue = params_[i].globalValue;
  }
}

void SynthEngine::controlVoice(Voice& voice, int frames) {
  // Only the modulation targets can differ from the global values after the previous voice:
  // every voice-stage source's list is a head of the global LFO's.
  const ModTargetList targets = modTargets(ModSource::kGlobalLfo);
  for (int t = 0; t < targets.count; ++t) {
    const int i = targets.targets[t];
    if (i != kNoModTarget) params_[i].voiceValue = params_[i].globalValue;
  }
  const bool sampleAndHold = params_[kGlobalLfoSampleHold].globalStepped() != 0;
  applyModSource(params_.data(), ModSource::kGlobalLfo, sampleAndHold ? voice.globalLfoHold : globalLfoValue_,
                 ModStage::kVoice);
  voice.control(params_.data(), frames);

  // Output gain, ramped from where it stands (a fresh voice starts at its gain). Modulation may
  // take the gain below zero (silence) but not above its range's top (+12 dB): its sources stack
  // without a clamp, and five of them at full amount reach gains of hundreds.
  const Parameter& gainParam = params_[kVoiceGain];
  const float gainBase = std::clamp(gainParam.voicePhysical(), 0.0f, gainParam.physical(1.0f));
  const float target = gainBase * gainBase * voice.unisonGain;
  VoiceOutput& output = voice.output;
  if (output.gain < 0.0f) output.gain = target;
  output.step = (target - output.gain) / static_cast<float>(frames);
  output.target = target;
  output.remaining = frames;

  const float width = params_[kUnisonWidth].globalPhysical();
  const float pan = std::clamp((width * voice.panPosition + 1.0f) * 0.5f, 0.0f, 1.0f);
  output.panLeft = kVoiceHeadroom * std::sqrt(pan);
  output.panRight = kVoiceHeadroom * std::sqrt(1.0f - pan);
}

void SynthEngine::renderVoice(Voice& voice, float* left, float* right, int frames) {
  // Read before rendering: a fading copy that ends in these frames is killed by its render.
  const VoiceOutput output = voice.output;
  voice.render(voiceBuffer_, frames);
  float gain = output.gain;
  for (int i = 0; i < frames; ++i) {
    gain += output.step;
    const float sample = gain * voiceBuffer_[i];
    left[i] += output.panLeft * sample;
    right[i] += output.panRight * sample;
  }
  if (voice.isSilent()) return;
  // The ramp ends exactly on its target, not on the sum of its steps.
  voice.output.remaining -= frames;
  voice.output.gain = voice.output.remaining > 0 ? gain : output.target;
}

void SynthEngine::startTick(double songPositionBeats, double tempoBpm) {
  tickLeft_ = kControlFrames;
  startingVoices_.reset();  // every sounding voice reads its parameters now
  const float dt = static_cast<float>(kControlFrames) / sampleRate_;
  globalLfo_.advance(params_.data(), dt, songPositionBeats);
  globalLfoValue_ = globalLfo_.source(params_.data());

  if (voicesActive_) {
    startVoiceValues();
    for (auto* pool : {&voices_, &fading_}) {
      for (Voice& v : *pool) {
        if (!v.isSilent()) controlVoice(v, kControlFrames);
      }
    }
  }
  // The global effects see the global LFO too (never a voice's held value); afterwards the
  // global values return to what a note starting inside the tick must read.
  applyModSource(params_.data(), ModSource::kGlobalLfo, globalLfoValue_, ModStage::kGlobal);
  mixChain_.aim(kControlFrames, params_.data(), tempoBpm);
  updateGlobalValues();
}

void SynthEngine::renderPiece(float* left, float* right, int frames) {
  std::fill(left, left + frames, 0.0f);
  std::fill(right, right + frames, 0.0f);
  bool voicesSounded = false;
  if (voicesActive_) {
    for (auto* pool : {&voices_, &fading_}) {
      for (Voice& v : *pool) {
        if (v.isSilent()) continue;
        renderVoice(v, left, right, frames);
        voicesSounded = true;
      }
    }
  }
  if (mixChain_.render(left, right, frames, voicesSounded)) return;  // zeros: nothing to limit

  // Whatever went wrong upstream, the host never receives a NaN, an infinity or a blast.
  limitToCeiling(left, frames);
  limitToCeiling(right, frames);
}

void SynthEngine::renderBlock(float* left, float* right, int frames, double songPositionBeats,
                              double tempoBpm) {
  if (frames <= 0) return;
  frames = std::min(frames, kMaxBlock);
  const double beatsPerFrame = tempoBpm / 60.0 / sampleRate_;
  for (int done = 0; done < frames;) {
    // A tick starting here ends kControlFrames on; its song position is extrapolated from the
    // position at the end of these frames.
    if (tickLeft_ == 0)
      startTick(songPositionBeats + (done + kControlFrames - frames) * beatsPerFrame, tempoBpm);
    if (startingVoices_.any()) controlStartingVoices();
    const int piece = std::min(frames - done, tickLeft_);
    renderPiece(left + done, right + done, piece);
    tickLeft_ -= piece;
    done += piece;
    if (tickLeft_ == 0 && voicesActive_) {
      // Voices that have rung out are freed on the grid too.
      voicesActive_ = false;
      for (auto* pool : {&voices_, &fading_}) {
        for (Voice& v : *pool) {
          v.refreshSilence();
          voicesActive_ = voicesActive_ || !v.isSilent();
        }
      }
    }
  }
}

}  // namespace ziv
