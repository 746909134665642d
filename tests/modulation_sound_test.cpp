// Envelopes, wheels and modulation heard through the whole instance: envelope times measured
// from rendered audio, no clicks at stage changes, and the wheels reaching the pitch.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "engine/modulation/lfo.h"
#include "engine/modulation/mod_routing.h"
#include "test_host.h"

namespace ziv {
namespace {

using testing::fundamentalHz;
using testing::TestHost;

constexpr float kRate = 44100.0f;
constexpr int kBlock = 128;

// Every parameter at its default, then a near-sine: the sub oscillator at shape 0.25 alone, filters
// open, no effects.
void sinePatch(TestHost& host) {
  for (int i = 0; i < kHostParamCount; ++i) host.plugin().setParameter(i, normalisedDefault(paramTable()[i]));
  host.setPhysical(kOsc1Gain, 0.0f);
  host.setPhysical(kSubGain, 1.0f);
  host.setPhysical(kSubShape, 0.25f);
  host.setPhysical(kSubOctave, 0.0f);
  for (int cutoff : {kFilter1Cutoff, kFilter2Cutoff}) host.setPhysical(cutoff, 1.0f);
  for (int amount : {kFilter1EnvAmt, kFilter2EnvAmt, kFilter1KeyTracking, kFilter2KeyTracking})
    host.setPhysical(amount, 0.0f);
  host.process(kBlock);  // the new values become the block's starting values
}

// Peak level in each window of `window` samples (the envelope of a steady tone).
std::vector<float> envelopeOf(const std::vector<float>& x, int window) {
  std::vector<float> peaks;
  for (std::size_t i = 0; i + window <= x.size(); i += window) {
    float peak = 0.0f;
    for (int k = 0; k < window; ++k) peak = std::max(peak, std::fabs(x[i + k]));
    peaks.push_back(peak);
  }
  return peaks;
}

TEST(EnvelopeSound, AttackDecayAndReleaseTakeTheirTimes) {
  TestHost host;
  sinePatch(host);
  // Attack 4 x 0.5^3 = 0.5 s; decay 10 x 0.2^2 = 0.4 s to sustain 0.6^2 = 0.36; release 10 x 0.3^2 = 0.9 s.
  host.setPhysical(kAmpEnvAttack, 0.5f);
  host.setPhysical(kAmpEnvDecay, 0.2f);
  host.setPhysical(kAmpEnvSustain, 0.6f);
  host.setPhysical(kAmpEnvRelease, 0.3f);
  host.noteOn(0, 69);
  std::vector<float> held = host.play(1.5, kBlock);
  host.noteOff(0, 69);
  const std::vector<float> released = host.play(1.2, kBlock);

  constexpr int kWindow = 110;  // a period of the 440 Hz tone, 2.5 ms
  const std::vector<float> env = envelopeOf(held, kWindow);
  const float peak = *std::max_element(env.begin(), env.end());
  const double peakSeconds = (std::max_element(env.begin(), env.end()) - env.begin()) * kWindow / kRate;
  EXPECT_NEAR(peakSeconds, 0.5, kBlock / kRate + kWindow / kRate);
  EXPECT_NEAR(env[static_cast<int>(0.25 * kRate / kWindow)] / peak, 0.5f, 0.02f) << "a straight attack";
  // One tenth into the decay the curve has fallen by 1 - e^-1 of its way to the sustain level.
  const float tenth = env[static_cast<int>(0.54 * kRate / kWindow)] / peak;
  EXPECT_NEAR(tenth, 0.36f + 0.64f * std::exp(-1.0f), 0.02f);
  EXPECT_NEAR(env[static_cast<int>(1.2 * kRate / kWindow)] / peak, 0.36f, 0.01f) << "sustain level";

  const std::vector<float> tail = envelopeOf(released, kWindow);
  EXPECT_NEAR(tail[static_cast<int>(0.09 * kRate / kWindow)] / peak, 0.36f * std::exp(-1.0f), 0.02f);
  // The curve ends at e^-10 of its span and then drops to silence: after 0.9 s, give or take a
  // block, and the voice is free again.
  const auto silentFrom =
      std::find_if(tail.begin(), tail.end(), [&](float level) { return level < 1e-6f * peak; });
  EXPECT_NEAR((silentFrom - tail.begin()) * kWindow / kRate, 0.9, 0.01);
  EXPECT_EQ(host.engine().soundingVoiceCount(), 0);
}

TEST(EnvelopeSound, StageChangesDoNotClick) {
  // A fast envelope (4 ms attack, 40 ms decay, 20 ms release) on a 440 Hz sine: no sample may
  // step further than the sine's own slope plus the attack's.
  TestHost host;
  sinePatch(host);
  host.setPhysical(kAmpEnvAttack, 0.1f);
  host.setPhysical(kAmpEnvDecay, 0.063f);
  host.setPhysical(kAmpEnvSustain, 0.5f);
  host.setPhysical(kAmpEnvRelease, 0.045f);
  host.noteOn(37, 69);  // mid-block: the envelope still starts at a sub-block start
  std::vector<float> out = host.play(0.2, kBlock);
  host.noteOff(50, 69);
  const std::vector<float> tail = host.play(0.1, kBlock);
  out.insert(out.end(), tail.begin(), tail.end());

  float peak = 0.0f, largestStep = 0.0f;
  for (std::size_t i = 1; i < out.size(); ++i) {
    peak = std::max(peak, std::fabs(out[i]));
    largestStep = std::max(largestStep, std::fabs(out[i] - out[i - 1]));
  }
  const float sineSlope = 2.0f * kPi * 440.0f / kRate;
  const float attackSlope = 1.0f / (0.004f * kRate);
  EXPECT_GT(peak, 0.05f);
  EXPECT_LT(largestStep, 1.1f * peak * (sineSlope + attackSlope));
}

TEST(WheelSound, PitchWheelAndModWheelReachThePitch) {
  TestHost host;
  sinePatch(host);
  host.setPhysical(kAmpEnvAttack, 0.0f);
  host.setPhysical(kAmpEnvSustain, 1.0f);
  host.setPhysical(kPitchBendRange, 12.0f);
  host.noteOn(0, 57);
  EXPECT_NEAR(fundamentalHz(host.play(0.3, kBlock)), 220.0, 0.5);

  host.midi(0, 0xE0, 0x7f, 0x7f);  // full bend up: one octave at a range of 12
  EXPECT_NEAR(fundamentalHz(host.play(0.3, kBlock)), 220.0 * std::pow(2.0, 8191.0 / 8192.0), 1.0);
  host.midi(0, 0xE0, 0x00, 0x40);  // centre

  // The mod wheel moves "VOICE: Pitch" with the cube of its amount: 0.5^3 of the entry's range of
  // 2 x 24 semitones at full wheel is 6 semitones.
  const ModTargetList list = modTargets(ModSource::kModWheel);
  const int position =
      static_cast<int>(std::find(list.targets, list.targets + list.count, kVoicePitch) - list.targets);
  host.plugin().setParameter(kModWheelTarget1, static_cast<float>(position) / (list.count - 1));
  host.setPhysical(kModWheelAmt1, 0.5f);
  host.controller(0, 1, 127);
  EXPECT_NEAR(fundamentalHz(host.play(0.3, kBlock)), 220.0 * std::pow(2.0, 0.5), 1.0);
  host.controller(0, 1, 0);
  EXPECT_NEAR(fundamentalHz(host.play(0.3, kBlock)), 220.0, 0.5);
}

TEST(GlobalLfoSound, SampleAndHoldKeepsEachVoiceAtItsNoteOnValue) {
  // The global LFO, synced to one bar as a square, opens or shuts "VOICE: Gain" (+1 in the first
  // half bar, silence in the second). A note struck in the first half keeps sounding through the
  // second only with S/H on.
  for (bool sampleAndHold : {false, true}) {
    TestHost host;
    sinePatch(host);
    SynthEngine& engine = host.engine();
    const ModTargetList list = modTargets(ModSource::kGlobalLfo);
    const int position =
        static_cast<int>(std::find(list.targets, list.targets + list.count, kVoiceGain) - list.targets);
    engine.setParameter(kGlobalLfoTarget1, static_cast<float>(position) / (list.count - 1), false);
    host.setPhysical(kGlobalLfoAmt1, 1.0f);
    host.setPhysical(kGlobalLfoDepth, 1.0f);
    host.setPhysical(kGlobalLfoSync, 1.0f);
    host.setPhysical(kGlobalLfoRate, 8.0f);  // one bar
    host.setPhysical(kGlobalLfoWaveform, static_cast<float>(kLfoSquare));
    host.setPhysical(kGlobalLfoSampleHold, sampleAndHold ? 1.0f : 0.0f);
    host.setPhysical(kAmpEnvAttack, 0.0f);
    host.setPhysical(kAmpEnvSustain, 1.0f);
    engine.smoothParameters(1.0f);
    engine.endProcess();

    std::vector<float> left(kBlock), right(kBlock);
    engine.renderBlock(left.data(), right.data(), kBlock, 0.5, 120.0);  // first half bar: +1
    engine.noteOn(69, 1.0f);
    float loudest = 0.0f;
    for (int block = 0; block < 20; ++block) {
      engine.smoothParameters(1.0f);
      engine.renderBlock(left.data(), right.data(), kBlock, 3.0, 120.0);  // second half bar: -1
      for (float x : left) loudest = std::max(loudest, std::fabs(x));
    }
    if (sampleAndHold) {
      EXPECT_GT(loudest, 0.1f) << "held at the +1 it had at note on";
    } else {
      EXPECT_EQ(loudest, 0.0f) << "follows the LFO into silence";
    }
  }
}

}  // namespace
}  // namespace ziv
