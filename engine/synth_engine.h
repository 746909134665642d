// The synth engine: the parameter records of the patch, the pool of 64 voices, the held-note
// list and the note allocation that gives notes their voices (polyphony, unison, stealing,
// legato, glide, last-note priority), the fading copies of voices that new notes take over, and
// the rendering into stereo.
//
// Control ticks: every modulation source, envelope and unit setting is computed on a fixed grid
// of kControlFrames samples counted from the last reset, not per host block. At a tick's start
// the global LFO advances, every sounding voice reads its parameters and aims its units at the
// values due at the tick's end, and the effects do the same; the samples of the tick are then
// rendered in as many pieces as the host's blocks, sub-blocks and events cut it into, and each
// piece only continues what the tick set up. A note that starts inside a tick reads its
// parameters at its own frame and aims at the same tick end. So the audio does not depend on the
// host's block size; only the parameter smoothing, which follows the host's blocks by nature,
// does.
//
// Threads: every operation runs on the host's audio thread, except `setParameter`,
// `parameter`, `setListener` and the read-only queries, which any thread may call; they touch
// only the atomic stored values. Nothing here allocates after construction.
#pragma once

#include <array>
#include <atomic>
#include <bitset>
#include <cstddef>
#include <cstdint>

#include "engine/dsp.h"
#include "engine/effects/mix_chain.h"
#include "engine/machine_listener.h"
#include "engine/modulation/global_lfo.h"
#include "engine/parameter.h"
#include "engine/random.h"
#include "engine/voice.h"

namespace ziv {

class SynthEngine {
 public:
  // The program format version values are written under by default.
  static constexpr int kCurrentVersion = 1033;
  // Samples per control tick.
  static constexpr int kControlFrames = kMaxBlock;

  SynthEngine();
  SynthEngine(const SynthEngine&) = delete;
  SynthEngine& operator=(const SynthEngine&) = delete;

  // --- Parameters (any thread) ---
  int parameterCount() const { return kHostParamCount; }
  const Parameter& parameter(int index) const { return params_[index]; }
  // Stores `value` (clamped to 0..1) as the stored value of `index` and reports it to the listener.
  void setParameter(int index, float value, bool fromEditor);
  // Re-describes what depends on a stored value (the global LFO rate's mode on its sync switch).
  void parameterChanged(int index);
  // Writes the display text of `index` into `text` (capacity bytes, terminator included).
  void parameterDisplay(int index, char* text, std::size_t capacity) const;
  // The same for `normalised` in place of the stored value (for hosts that preview a value).
  void valueDisplay(int index, float normalised, char* text, std::size_t capacity) const;
  void setListener(MachineListener* listener) { listener_ = listener; }

  // The program format version under which values are currently being written.
  // Atomic because program loads on the user-interface thread and MIDI program changes on the
  // audio thread both set it around their writes.
  std::atomic<int> loadVersion{kCurrentVersion};

  // --- Audio thread ---
  void setSampleRate(float hz);
  float sampleRate() const { return sampleRate_; }
  void noteOn(int note, float velocity);
  void noteOff(int note);
  void allNotesOff(bool hard);
  // The wheels take their new values at once and hold them (no ramp).
  void setPitchWheel(float bend);
  void setController(int number, float value);
  // Moves every parameter's smoothed value to `fraction` of the way from its previous to its
  // stored value; called once per sub-block, after the events of its first frame, with
  // (k + 1) / K. Control ticks, and notes that start inside a tick, read the values in force when
  // their first frame renders.
  void smoothParameters(float fraction);
  // Renders 1..kMaxBlock frames into both buffers, overwriting them. songPositionBeats is the
  // song position at the end of these frames.
  void renderBlock(float* left, float* right, int frames, double songPositionBeats, double tempoBpm);
  // Ends a host block: the next block ramps from the values stored now.
  void endProcess();
  // Ends every ramp: each parameter takes its stored value at once, for the rest of the host
  // block too (a MIDI program change sounds from its own frame).
  void holdStoredValues();
  // Silences every voice, clears the held notes and the effects' delay lines, filters and
  // limiter, and ends any parameter ramp (the next block starts at the stored values).
  void reset();
  // The global chain's latency in samples at `rate` with the limiter switch's stored value: the
  // limiter's look-ahead while it is on, else 0. Any thread.
  int latencySamples(float rate) const;

  // --- Observation (tests, editor) ---
  const Voice& voice(int slot) const { return voices_[slot]; }
  int lastVoice() const { return lastVoice_; }
  int heldNoteCount() const { return heldCount_; }
  int heldNote(int position) const { return heldNotes_[position]; }
  int soundingVoiceCount() const;
  // Copies of taken-over voices still fading out.
  int fadingVoiceCount() const;

 private:
  struct NoteChoice {
    float glideStart;
    bool legato;
  };

  NoteChoice chooseGlide(int note, bool legatoMode, bool autoGlide) const;
  void startVoice(int slot, int note, const NoteChoice& choice, int unisonIndex, int unisonCount,
                  StartMode mode, const Voice* previous);
  void allocatePolyphonic(int note, const NoteChoice& choice, int polyphony, int unison,
                          const Voice* previous);
  void allocateMonophonic(int note, const NoteChoice& choice, int unison, bool legatoMode);
  int chooseVictim(int slots) const;
  // Hands a copy of a sounding voice that a new note takes over to the fading pool.
  void fadeOutCopy(const Voice& voice);
  void removeHeld(int note, bool* removed);
  // Stores a wheel's value and puts it in force at once, without a ramp.
  void setWheel(int index, float value);
  // Global values: the smoothed values plus the mod wheel's global modulation.
  void updateGlobalValues();
  // Sets every voice value but the wheels' to its global value, before voices read them;
  // controlVoice then restores only what a voice's modulation may have moved.
  void startVoiceValues();
  // Starts a control tick: the global LFO, every sounding voice and the effects read their
  // parameters. songPositionBeats is the song position at the tick's end.
  void startTick(double songPositionBeats, double tempoBpm);
  // Has a voice read its parameters and aim at the values due `frames` samples on.
  void controlVoice(Voice& voice, int frames);
  // Has the voices that notes started inside the current tick read their parameters.
  void controlStartingVoices();
  // Renders the next `frames` samples of the current tick (at most what is left of it).
  void renderPiece(float* left, float* right, int frames);
  // Renders one voice into the sum.
  void renderVoice(Voice& voice, float* left, float* right, int frames);

  std::array<Parameter, kParamCount> params_;
  // Counts the values stored by setParameter (any thread). When the last smoothing found every
  // smoothed and previous value equal to its stored one (valuesSettled_) and the count has not
  // moved since (settledChanges_), smoothing and the block's end have nothing to do.
  std::atomic<std::uint32_t> storedChanges_{0};
  std::uint32_t settledChanges_ = 0;
  bool valuesSettled_ = false;
  std::array<Voice, kVoiceCount> voices_;
  // Copies of stolen and retriggered voices, fading out under the new notes. As many as there are
  // slots, so that even a chord that takes over every slot at once fades all of them.
  std::array<Voice, kVoiceCount> fading_;
  std::array<int, 128> heldNotes_{};
  int heldCount_ = 0;
  std::array<float, 128> noteVelocity_{};
  float lastNote_ = -1.0f;
  int lastVoice_ = 0;
  float sampleRate_ = 44100.0f;
  int tickLeft_ = 0;  // samples of the current control tick not yet rendered
  // Some voice may sound: false once a tick has ended with every voice silent, until a note
  // starts. While it is false, ticks and pieces pass the voices by.
  bool voicesActive_ = false;
  // Slots whose notes started inside the current tick and have not read their parameters yet.
  std::bitset<kVoiceCount> startingVoices_;
  GlobalLfo globalLfo_;
  float globalLfoValue_ = 0.0f;  // the global LFO's routing source in the current tick
  Random random_;
  MixChain mixChain_;
  MachineListener* listener_ = nullptr;
  alignas(16) float voiceBuffer_[kMaxBlock] = {};
};

}  // namespace ziv
