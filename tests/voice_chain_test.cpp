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

using testing::TestHost;

constexpr int kBlock = 256;

void setPhysical(TestHost& host, int index, float physical) {
  const Parameter& p = host.engine().parameter(index);
  const float lo = static_cast<float>(p.lo.load()), hi = static_cast<float>(p.hi.load());
  host.engine().setParameter(index, (physical - lo) / (hi - lo), false);
}

// One plain source, both filters open, no shaping, instant attack, full sustain.
void plainPatch(TestHost& host) {
  setPhysical(host, kOsc1Gain, 1.0f);
  setPhysical(host, kOsc2Gain, 0.0f);
  setPhysical(host, kSubGain, 0.0f);
  for (int cutoff : {kFilter1Cutoff, kFilter2Cutoff}) setPhysical(host, cutoff, 1.0f);
  for (int amount : {kFilter1EnvAmt, kFilter2EnvAmt, kFilter1KeyTracking, kFilter2KeyTracking})
    setPhysical(host, amount, 0.0f);
  setPhysical(host, kShaperMix, 0.0f);
  setPhysical(host, kAmpEnvAttack, 0.0f);
  setPhysical(host, kAmpEnvSustain, 1.0f);
}

// Renders `seconds` of audio and returns the left channel.
std::vector<float> play(TestHost& host, double seconds) {
  std::vector<float> out;
  const int blocks = static_cast<int>(seconds * 44100.0 / kBlock);
  for (int b = 0; b < blocks; ++b) {
    host.process(kBlock);
    out.insert(out.end(), host.left.begin(), host.left.end());
  }
  return out;
}

// Fundamental frequency from the rising zero crossings of the second half of x.
double fundamentalHz(const std::vector<float>& x) {
  double first = -1.0, last = -1.0;
  int crossings = 0;
  for (size_t i = x.size() / 2; i + 1 < x.size(); ++i) {
    if (x[i] < 0.0f && x[i + 1] >= 0.0f) {
      const double t = i + x[i] / static_cast<double>(x[i] - x[i + 1]);
      if (first < 0.0) first = t;
      last = t;
      ++crossings;
    }
  }
  return crossings > 1 ? (crossings - 1) * 44100.0 / (last - first) : 0.0;
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
    setPhysical(host, kOsc1Octave, static_cast<float>(c.octave));
    setPhysical(host, kOsc1Semi, static_cast<float>(c.semi));
    setPhysical(host, kOsc1Cents, static_cast<float>(c.cents));
    if (c.sub) {
      setPhysical(host, kOsc1Gain, 0.0f);
      setPhysical(host, kSubGain, 1.0f);
      setPhysical(host, kSubShape, 0.25f);
    }
    host.noteOn(0, c.note);
    const std::vector<float> out = play(host, 0.5);
    EXPECT_NEAR(fundamentalHz(out), noteHz(c.expectedNote), noteHz(c.expectedNote) * 1e-3) << c.note;
  }
}

TEST(VoiceChain, ReleasedVoicesBecomeSilent) {
  TestHost host;
  plainPatch(host);
  setPhysical(host, kAmpEnvRelease, 0.1f);
  setPhysical(host, kFilter1Q, 1.0f);
  setPhysical(host, kPolyphony, 8.0f);
  for (int note : {40, 52, 64}) host.noteOn(0, note);
  play(host, 0.2);
  EXPECT_EQ(host.engine().soundingVoiceCount(), 3);
  for (int note : {40, 52, 64}) host.noteOff(0, note);
  play(host, 1.0);
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
      chain.render(out, kMaxBlock, params.data(), in);
      for (float v : out) {
        ASSERT_TRUE(std::isfinite(v)) << trial << " " << block;
        peak = std::max(peak, std::fabs(v));
      }
    }
    VoiceChainInput stop;
    stop.sourcesOn = false;
    for (int block = 0; block < 2000 && !chain.filtersSilent(); ++block)
      chain.render(out, kMaxBlock, params.data(), stop);
    EXPECT_TRUE(chain.filtersSilent()) << trial;
  }
  EXPECT_LE(peak, kBound);
}

}  // namespace
}  // namespace ziv
