// One voice slot of the engine's fixed pool.
//
// A voice holds the note it plays, its place in a unison stack, its gliding pitch and its
// envelopes. Once per control tick the engine has it read the parameters (control), then renders
// the tick's samples in one or more pieces (render), wherever the host cut its blocks. Its
// amplitude envelope's stage is its life: attack, decay, sustain, release, finished; a finished
// voice whose output has rung out below the silence threshold is silent, the free state. Voices
// are never created or destroyed while the engine runs. Every operation here runs on the audio
// thread.
#pragma once

#include <cstdint>

#include "engine/envelope.h"
#include "engine/modulation/voice_modulation.h"
#include "engine/parameter.h"
#include "engine/voice_chain.h"

namespace ziv {

// How a note claims a slot: a fresh start, a monophonic legato continuation of a held voice,
// or a retrigger of a voice that is still sounding.
enum class StartMode { kFresh = 0, kLegato = 1, kRetrigger = 2 };

struct VoiceStart {
  int note = 0;
  float glideStart = 0.0f;  // pitch the voice glides from, in semitones
  float velocity = 0.0f;
  int unisonIndex = 0;
  int unisonCount = 1;
  StartMode mode = StartMode::kFresh;
  float globalLfoHold = 0.0f;
  bool legato = false;  // polyphonic legato: take over the previous voice's envelopes
  const struct Voice* previous = nullptr;
  int randomOffset = 0;                          // 0..32767, the place within a unison slot
  int randomPhase = 0;                           // 0..32767, the oscillators' start phase
  int noiseSeed[VoiceChain::kOscillators] = {};  // 0..32767, the noise read positions
};

// The voice's output gain and pan as the engine ramps them over a control tick.
struct VoiceOutput {
  float gain = -1.0f;  // the gain reached so far; below 0 for a fresh voice (no ramp yet)
  float step = 0.0f;   // per sample, to the tick's target
  float target = 0.0f;
  int remaining = 0;  // samples until the target
  float panLeft = 0.0f;
  float panRight = 0.0f;
};

struct Voice {
  int note = -1;
  float velocity = 0.0f;
  float pitch = 0.0f;
  float glideDistance = 0.0f;
  float unisonPosition = 0.0f;
  float panPosition = 0.0f;
  float unisonGain = 1.0f;
  float globalLfoHold = 0.0f;
  // Samples rendered since the note started: counted, not summed as seconds, so that the oldest
  // voice is the same whatever blocks the host used.
  std::int64_t age = 0;
  float startPhase = 0.0f;
  VoiceOutput output;

  EnvelopeState ampEnvelope;
  EnvelopeState filterEnvelope;
  VoiceModulation modulation;  // the mod envelope and the voice LFO

  void setSampleRate(float rate);
  void start(const VoiceStart& request);
  // Enters release in every envelope not already releasing.
  void release();
  // Silences the voice at once (hard all-notes-off, engine reset).
  void kill();
  // Lets the sound as it stands fade to silence over kFadeSeconds, after which the voice is
  // silent. The engine gives this to a copy of a voice that a new note takes over, so the old
  // note ends without a click while the new one starts.
  void fadeOut();
  // Samples left of a fade-out; 0 when the voice is not fading.
  int fadeRemaining() const { return fadeRemaining_; }

  int stage() const { return static_cast<int>(ampEnvelope.stage); }
  bool held() const { return ampEnvelope.held(); }
  // Silent is decided at control tick ends (refreshSilence), when the voice is killed and when
  // a note starts, never in mid-tick: a voice sounds for whole ticks, whatever the host's blocks.
  bool isSilent() const { return silent_; }
  void refreshSilence();

  // Applies the voice's own modulation to the parameters' voice values, advances glide and
  // envelopes by `frames` samples (1..kMaxBlock) and aims the sound chain and the amplitude
  // envelope's gain at where they are due after them.
  void control(Parameter* params, int frames);
  // Renders the next `frames` samples of the aimed span into `out` (overwriting it).
  void render(float* out, int frames);

  // The sounding pitch in semitones before the per-oscillator offsets.
  float soundingPitch(const Parameter* params) const;

 private:
  void glide(float dt, const Parameter* params);
  // Semitones of the pitch wheel: its bend range times its position.
  static float pitchBend(const Parameter* params);

  // Multiplies out[0..frames) by the fade-out's falling line; ends the voice when it reaches 0.
  void applyFade(float* out, int frames);

  float sampleRate_ = 44100.0f;
  bool silent_ = true;
  EnvelopeTimes ampTimes_;  // the last control's, for a release in mid-span
  EnvelopeGain ampGain_;
  int fadeRemaining_ = 0;
  int fadeLength_ = 0;
  VoiceChain chain_;
};

}  // namespace ziv
