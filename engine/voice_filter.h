// FILTER 1 and FILTER 2 of a voice: a multi-mode resonant filter built on FilterElement.
//
// Modes: 0 "LP", 1 "HP", 2 "BP" (one element each) and 3 "VOX", a formant filter of three
// band-pass elements in parallel whose frequencies, bandwidths and levels interpolate a table of
// ten vowels. The controls map as follows (voice_filter.cpp has the constants):
// - Cutoff (0..1) spans 20 Hz to 20.5 kHz exponentially: 10 octaves above 20 Hz, so 0.5 is
//   about 640 Hz and every 0.1 is one octave.
// - Key tracking (-1..1) moves the cutoff by keyTracking x (pitch - 60) / 12 octaves: at 1 it
//   follows the played pitch one to one around middle C (MIDI note 60), at -1 it moves the other
//   way, at 0 it ignores the note.
// - Env Amt (-1..1) times the filter envelope level (0..1) moves the cutoff by up to 8 octaves
//   (full amount from cutoff 0 opens to about 5 kHz).
// - Q (0..1) spans 0.707 (Butterworth, no resonance) to 25 exponentially. LP and HP lose half of
//   the resonant peak's rise in their pass band (gain sqrt(0.707 / Q)), so full Q rings clearly
//   (+14 dB peak over a pass band 14 dB down) without jumping in level; BP keeps a 0 dB peak
//   lifted by (Q / 0.707)^(1/4) to make up part of the energy its narrowing band removes.
// - VOX: the cutoff (with key tracking and envelope, same octave sums) sweeps the ten vowels,
//   dark to bright, across the 10-octave range; Q narrows the formants from twice their natural
//   bandwidth (Q 0) through natural (Q 0.4) to a quarter of it (Q 1).
// Settings arrive once per aimed span; the VOX formant gains ramp linearly across it, like the
// elements' coefficients, and the span renders the same in any number of pieces.
// Limits: frequencies beyond 8 Hz .. 0.499 x rate are clamped by the element; the frequency slew
// of the element (10 pi rad/s of w0) applies to every mode.
#pragma once

#include <limits>

#include "engine/dsp.h"
#include "engine/filter_element.h"

namespace ziv {

enum VoiceFilterMode { kFilterLowPass = 0, kFilterHighPass = 1, kFilterBandPass = 2, kFilterVox = 3 };

// One aimed span's settings, read by the voice from its parameter voice values.
struct VoiceFilterInput {
  int mode = kFilterLowPass;  // VoiceFilterMode; out-of-range values act as LP
  float cutoff = 1.0f;        // normalised 0..1
  float q = 0.0f;             // normalised 0..1
  float envAmount = 0.0f;     // -1..1
  float envLevel = 0.0f;      // filter envelope level 0..1
  float keyTracking = 0.0f;   // -1..1
  float pitch = 60.0f;        // the voice's sounding pitch in semitones (MIDI note scale)
};

class VoiceFilter {
 public:
  static constexpr int kFormants = 3;
  static constexpr int kVowels = 10;

  // Audio thread, or any thread while the engine does not render.
  void setSampleRate(float rate);

  // Voice start: clears every element (each fades out its old ringing). Audio thread, or any
  // thread while the engine does not render.
  void reset();

  // Aims the next `frames` samples (1..kMaxBlock) at these settings, from where the samples
  // rendered so far left the filter. A change to or from VOX restarts the elements here. Audio
  // thread, or any thread while the engine does not render.
  void aim(int frames, const VoiceFilterInput& in);

  // Filters buf[0..frames) in place: the next samples of the aimed span. Same threads as aim.
  void render(float* buf, int frames);

  // True when every element's recent output is at or below kSilence. Audio thread, or any
  // thread while the engine does not render.
  bool isSilent() const;

  // The cutoff frequency in Hz that the settings ask for before the element's clamp and slew.
  static float cutoffHz(const VoiceFilterInput& in);
  // The resonance Q of the LP, HP and BP modes for a normalised Q.
  static float resonance(float q);

  // One vowel of the VOX table: formant frequencies (Hz), bandwidths (Hz) and levels (dB).
  struct Vowel {
    const char* name;
    float frequency[kFormants];
    float bandwidth[kFormants];
    float levelDb[kFormants];
  };
  static const Vowel kVowelTable[kVowels];

  // The VOX formants for a setting: position 0..1 through the table (from cutoffHz), normalised
  // Q. Outputs frequency, Q and linear gain (with the alternating sign) of each formant.
  static void voxFormants(float position, float q, float* frequency, float* formantQ, float* gain);
  // The VOX table position (0..1) for the settings.
  static float voxPosition(const VoiceFilterInput& in);

 private:
  void aimVox(int frames, const VoiceFilterInput& in);
  void renderVox(float* buf, int frames);

  FilterElement elements_[kFormants];
  int mode_ = kFilterLowPass;  // the aimed span's mode
  // The LP, HP and BP modes' last inputs and results of exp2 and pow, which run again only when
  // their inputs move (NaN: nothing computed yet).
  float cutoffOctaves_ = std::numeric_limits<float>::quiet_NaN();
  float cutoffHz_ = 0.0f;
  float qSetting_ = std::numeric_limits<float>::quiet_NaN();
  float resonance_ = 0.0f;
  int gainMode_ = -1;
  float gainResonance_ = std::numeric_limits<float>::quiet_NaN();
  float modeGain_ = 0.0f;
  // The VOX formant gains: those of the last rendered sample (valid while VOX runs), the aimed
  // span's, the per-sample step between them and the samples of the span still to render.
  bool voxGainsValid_ = false;
  float voxGain_[kFormants] = {};
  float voxTarget_[kFormants] = {};
  float voxStep_[kFormants] = {};
  int voxRampLeft_ = 0;
  float scratch_[kFormants - 1][kMaxBlock] = {};
};

}  // namespace ziv
