// Notes through the whole instance: they sound at the pitch the oscillator settings ask for,
// and stay finite and bounded for extreme and random settings.
#include "engine/voice_chain.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "engine/random.h"
#include "test_host.h"

namespace ziv {
namespace {

using testing::fundamentalHz;
using testing::TestHost;

constexpr int kBlock = 256;

// One plain source, both filters open, no shaping, instant attack, full sustain; from the init
// patch, so that no factory program's modulation or resonance is left over.
void plainPatch(TestHost& host) {
  host.plugin().initProgram();
  host.setPhysical(kOsc1Gain, 1.0f);
  host.setPhysical(kOsc2Gain, 0.0f);
  host.setPhysical(kSubGain, 0.0f);
  for (int cutoff : {kFilter1Cutoff, kFilter2Cutoff}) host.setPhysical(cutoff, 1.0f);
  for (int amount : {kFilter1EnvAmt, kFilter2EnvAmt, kFilter1KeyTracking, kFilter2KeyTracking})
    host.setPhysical(amount, 0.0f);
  host.setPhysical(kShaperMix, 0.0f);
  host.setPhysical(kAmpEnvAttack, 0.0f);
  host.setPhysical(kAmpEnvSustain, 1.0f);
}

double noteHz(double note) {
  return 440.0 * std::pow(2.0, (note - 69.0) / 12.0);
}

TEST(VoiceChain, NotesSoundAtTheirPitch) {
  struct Case {
    int note, octave, semi, cents;
    bool sub;
    double expectedNote;
  };
  const Case cases[] = {
      {69, 0, 0, 0, false, 69.0},   {45, 0, 0, 0, false, 45.0}, {60, 1, 7, 0, false, 79.0},
      {60, 0, -5, 50, false, 55.5}, {64, 0, 0, 0, true, 52.0},  // SUB an octave down
  };
  for (const Case& c : cases) {
    TestHost host;
    plainPatch(host);
    host.setPhysical(kOsc1Octave, static_cast<float>(c.octave));
    host.setPhysical(kOsc1Semi, static_cast<float>(c.semi));
    host.setPhysical(kOsc1Cents, static_cast<float>(c.cents));
    if (c.sub) {
      host.setPhysical(kOsc1Gain, 0.0f);
      host.setPhysical(kSubGain, 1.0f);
      host.setPhysical(kSubShape, 0.25f);
    }
    host.noteOn(0, c.note);
    const std::vector<float> out = host.play(0.5);
    EXPECT_NEAR(fundamentalHz(out), noteHz(c.expectedNote), noteHz(c.expectedNote) * 1e-3) << c.note;
  }
}

TEST(VoiceChain, ReleasedVoicesBecomeSilent) {
  TestHost host;
  plainPatch(host);
  host.setPhysical(kAmpEnvRelease, 0.1f);
  host.setPhysical(kFilter1Q, 1.0f);
  host.setPhysical(kPolyphony, 8.0f);
  host.plugin().resume();  // the settings hold from the first frame
  for (int note : {40, 52, 64}) host.noteOn(0, note);
  host.play(0.2);
  EXPECT_EQ(host.engine().soundingVoiceCount(), 3);
  for (int note : {40, 52, 64}) host.noteOff(0, note);
  host.play(1.0);
  EXPECT_EQ(host.engine().soundingVoiceCount(), 0);
}

// Extreme and random settings, chords over the whole keyboard: the output stays finite and
// within a generous bound (no filter or oscillator blows up).
TEST(VoiceChain, BoundedForExtremeAndRandomSettings) {
  constexpr float kBound = 4.0f;
  Random random(2024);
  for (int trial = 0; trial < 12; ++trial) {
    TestHost host;
    for (int index = 0; index < kHostParamCount; ++index) {
      float value = random.next() / static_cast<float>(Random::kMax);
      if (trial == 0) value = 0.0f;
      if (trial == 1) value = 1.0f;
      host.engine().setParameter(index, value, false);
    }
    for (int k = 0; k < 6; ++k) host.noteOn(0, trial < 2 ? 10 + 20 * k : random.next() % 128, 127);
    host.midi(kBlock / 2, 0xE0, random.next() & 0x7f, random.next() & 0x7f);  // pitch wheel
    for (int b = 0; b < 60; ++b) {
      if (b == 40) host.controller(0, 123, 0);  // all notes off: releases and tails
      host.process(kBlock);
      for (int i = 0; i < kBlock; ++i) {
        ASSERT_TRUE(std::isfinite(host.left[i]) && std::isfinite(host.right[i])) << trial;
        ASSERT_LE(std::fabs(host.left[i]), kBound) << trial;
        ASSERT_LE(std::fabs(host.right[i]), kBound) << trial;
      }
    }
  }
}

// The chain on its own, with voice values jumping every block (as modulation can make them)
// over their whole ranges at every key: every sample is finite and stays within the bound that
// the loudest legitimate settings reach (two full-Q filters in series, noise lifted for low
// pitches: a few hundred); and once the sources stop, the filters ring down to silence, so
// nothing was left unstable.
TEST(VoiceChain, ChainBoundedUnderJumpingSettings) {
  constexpr float kBound = 1000.0f;
  std::vector<Parameter> params(kParamCount);
  for (int i = 0; i < kParamCount; ++i) {
    params[i].lo.store(paramTable()[i].lo);
    params[i].hi.store(paramTable()[i].hi);
  }
  Random random(99);
  auto unit = [&random] { return random.next() / static_cast<float>(Random::kMax); };
  float peak = 0.0f;
  for (int trial = 0; trial < 8; ++trial) {
    VoiceChain chain;
    chain.setSampleRate(trial % 2 == 0 ? 44100.0f : 96000.0f);
    const int seeds[VoiceChain::kOscillators] = {random.next(), random.next()};
    chain.restart(seeds);
    chain.startSources(unit());
    float out[kMaxBlock];
    for (int block = 0; block < 400; ++block) {
      if (block % 50 == 0) {
        for (Parameter& p : params) p.voiceValue = unit();
      } else {
        params[random.next() % kParamCount].voiceValue = unit();
      }
      VoiceChainInput in;
      in.pitch = 127.0f * unit();
      in.filterEnvLevel = unit();
      in.jumpGain = unit() < 0.1f;
      chain.aim(kMaxBlock, params.data(), in);
      chain.render(out, kMaxBlock);
      for (float v : out) {
        ASSERT_TRUE(std::isfinite(v)) << trial << " " << block;
        peak = std::max(peak, std::fabs(v));
      }
    }
    VoiceChainInput stop;
    stop.sourcesOn = false;
    for (int block = 0; block < 2000 && !chain.filtersSilent(); ++block) {
      chain.aim(kMaxBlock, params.data(), stop);
      chain.render(out, kMaxBlock);
    }
    EXPECT_TRUE(chain.filtersSilent()) << trial;
  }
  EXPECT_LE(peak, kBound);
}

}  // namespace
}  // namespace ziv
