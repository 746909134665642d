// The sound chain of one voice: OSC 1, OSC 2 and SUB summed, then FILTER 1, SHAPER, FILTER 2.
//
// Each OSC plays its saw/pulse core or, with the "Noise" waveform, its noise oscillator, at the
// voice's pitch plus its own octave, semitone, cents and internal pitch offset; its sync ratio
// is 2^(Sync / 12). SUB plays at the voice's pitch plus its octave and pitch offset. The filters
// take the filter envelope's level for their envelope amount and the voice's pitch for key
// tracking. The chain reads the parameters' voice values once per control tick, when the voice
// aims it; the pieces of audio rendered until the next aim only continue what the aim set up,
// so where the host cuts its blocks changes nothing. The amplitude envelope and the output gain
// are applied by the voice and the engine after this chain. Limits: frames per call at most
// kMaxBlock. Every operation runs on the audio thread (or any thread while the engine does not
// render); nothing allocates.
#pragma once

#include "engine/oscillators/noise_oscillator.h"
#include "engine/oscillators/saw_pulse_oscillator.h"
#include "engine/oscillators/sub_oscillator.h"
#include "engine/parameter.h"
#include "engine/shaper.h"
#include "engine/voice_filter.h"

namespace ziv {

// What the voice knows about this control tick that the chain needs.
struct VoiceChainInput {
  float pitch = 60.0f;          // the voice's sounding pitch in semitones, before OSC offsets
  float filterEnvLevel = 0.0f;  // 0..1
  bool jumpGain = false;        // the oscillators take their gain at once (instant attack)
  bool sourcesOn = true;        // false once the amplitude envelope has finished
};

class VoiceChain {
 public:
  static constexpr int kOscillators = 2;

  void setSampleRate(float rate);

  // Clears both filters and the shaper and reseeds the two noise oscillators (every start but
  // the monophonic legato continuation).
  void restart(const int noiseSeed[kOscillators]);
  // A fresh voice: every source starts at `phase` (cycles) and takes its first settings without
  // ramps; the correction rings are cleared.
  void startSources(double phase);

  // Reads the parameters' voice values and sets every unit's ramps to reach them after `frames`
  // samples (1..kMaxBlock).
  void aim(int frames, const Parameter* params, const VoiceChainInput& in);
  // Renders the next `frames` samples of the aimed span into out, overwriting it.
  void render(float* out, int frames);

  // Both filters' recent outputs are at or below the silence threshold. Kept as a flag, updated
  // by every render and restart: the engine asks this of all 64 voices every block.
  bool filtersSilent() const { return filtersSilent_; }

 private:
  bool filtersSilent_ = true;
  // Each OSC plays its noise oscillator (waveform "Noise") rather than its saw/pulse core.
  bool noiseOn_[kOscillators] = {false, false};
  // Each OSC's last Sync / 12 and the 2^(Sync / 12) it gave: pow runs only when Sync moves.
  float syncExponent_[kOscillators] = {0.0f, 0.0f};
  double syncRatio_[kOscillators] = {1.0, 1.0};
  SawPulseOscillator osc_[kOscillators];
  NoiseOscillator noise_[kOscillators];
  SubOscillator sub_;
  VoiceFilter filter1_;
  Shaper shaper_;
  VoiceFilter filter2_;
};

}  // namespace ziv
