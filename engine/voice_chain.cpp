// A voice's sources, filters and shaper wired in order; see voice_chain.h.
#include "engine/voice_chain.h"

#include <algorithm>
#include <cmath>

namespace ziv {
namespace {

constexpr int kNoiseWaveform = 2;  // "Noise"; 0 "Saw" and 1 "Pulse" are the saw/pulse modes
constexpr float kSemitonesPerOctave = 12.0f;
constexpr float kCentsPerSemitone = 100.0f;
constexpr float kInternalPitchSpan = 24.0f;  // semitones per unit of the internal pitch entries

// The parameter rows of one OSC.
struct OscParams {
  int waveform, gain, shape, octave, semi, cents, sync, pitch;
};
constexpr OscParams kOscParams[VoiceChain::kOscillators] = {
    {kOsc1Waveform, kOsc1Gain, kOsc1Shape, kOsc1Octave, kOsc1Semi, kOsc1Cents, kOsc1Sync, kOsc1Pitch},
    {kOsc2Waveform, kOsc2Gain, kOsc2Shape, kOsc2Octave, kOsc2Semi, kOsc2Cents, kOsc2Sync, kOsc2Pitch},
};

struct FilterParams {
  int cutoff, q, envAmount, mode, keyTracking;
};
constexpr FilterParams kFilter1Params = {kFilter1Cutoff, kFilter1Q, kFilter1EnvAmt, kFilter1Mode,
                                         kFilter1KeyTracking};
constexpr FilterParams kFilter2Params = {kFilter2Cutoff, kFilter2Q, kFilter2EnvAmt, kFilter2Mode,
                                         kFilter2KeyTracking};

VoiceFilterInput filterInput(const Parameter* params, const FilterParams& rows, const VoiceChainInput& in) {
  VoiceFilterInput f;
  f.mode = params[rows.mode].voiceStepped();
  f.cutoff = params[rows.cutoff].voiceValue;
  f.q = params[rows.q].voiceValue;
  f.envAmount = params[rows.envAmount].voicePhysical();
  f.envLevel = in.filterEnvLevel;
  f.keyTracking = params[rows.keyTracking].voicePhysical();
  f.pitch = in.pitch;
  return f;
}

}  // namespace

void VoiceChain::setSampleRate(float rate) {
  for (int n = 0; n < kOscillators; ++n) {
    osc_[n].setSampleRate(rate);
    noise_[n].setSampleRate(rate);
  }
  sub_.setSampleRate(rate);
  filter1_.setSampleRate(rate);
  shaper_.setSampleRate(rate);
  filter2_.setSampleRate(rate);
}

void VoiceChain::restart(const int noiseSeed[kOscillators]) {
  filter1_.reset();
  shaper_.reset();
  filter2_.reset();
  filtersSilent_ = true;
  for (int n = 0; n < kOscillators; ++n) noise_[n].start(noiseSeed[n]);
}

void VoiceChain::startSources(double phase) {
  for (SawPulseOscillator& osc : osc_) osc.start(phase);
  sub_.start(phase);
}

void VoiceChain::aim(int frames, const Parameter* params, const VoiceChainInput& in) {
  for (int n = 0; n < kOscillators; ++n) {
    const OscParams& rows = kOscParams[n];
    const float pitch = in.pitch + kSemitonesPerOctave * params[rows.octave].voiceStepped() +
                        params[rows.semi].voiceStepped() +
                        params[rows.cents].voiceStepped() / kCentsPerSemitone +
                        kInternalPitchSpan * params[rows.pitch].voicePhysical();
    const float gain = in.sourcesOn ? params[rows.gain].voiceValue : 0.0f;
    const float shape = params[rows.shape].voicePhysical();
    const int waveform = params[rows.waveform].voiceStepped();
    noiseOn_[n] = waveform == kNoiseWaveform;
    if (noiseOn_[n]) {
      noise_[n].aim(frames, pitch, gain, (shape + 1.0f) * 0.5f);
    } else {
      const float exponent = params[rows.sync].voicePhysical() / kSemitonesPerOctave;
      if (exponent != syncExponent_[n]) {
        syncExponent_[n] = exponent;
        syncRatio_[n] = std::pow(2.0, exponent);
      }
      osc_[n].aim(frames, pitch, gain, waveform, shape, syncRatio_[n], in.jumpGain);
    }
  }

  const float subPitch = in.pitch + kSemitonesPerOctave * params[kSubOctave].voiceStepped() +
                         kInternalPitchSpan * params[kSubPitch].voicePhysical();
  const float subGain = in.sourcesOn ? params[kSubGain].voiceValue : 0.0f;
  sub_.aim(frames, subPitch, subGain, params[kSubShape].voicePhysical());

  filter1_.aim(frames, filterInput(params, kFilter1Params, in));
  shaper_.aim(frames, params[kShaperMode].voiceStepped(), params[kShaperDrive].voiceValue,
              params[kShaperMix].voiceValue);
  filter2_.aim(frames, filterInput(params, kFilter2Params, in));
}

void VoiceChain::render(float* out, int frames) {
  std::fill(out, out + frames, 0.0f);
  for (int n = 0; n < kOscillators; ++n) {
    if (noiseOn_[n]) {
      noise_[n].render(out, frames);
    } else {
      osc_[n].render(out, frames);
    }
  }
  sub_.render(out, frames);
  filter1_.render(out, frames);
  shaper_.render(out, frames);
  filter2_.render(out, frames);
  filtersSilent_ = filter1_.isSilent() && filter2_.isSilent();
}

}  // namespace ziv
