// Cutting an aimed span into pieces changes nothing. For each effect unit, random settings over
// many spans, each span rendered once in one call and once cut at random points (single samples
// among them), with re-aims before a span is used up and calls past its end: the two runs must
// agree bit for bit, span after span. The chain makes its idle decisions per call; there samples
// may differ only at the silence threshold's level. And the chorus, bypassed at mix 0 while sound
// plays, fades its wet path in without a click when the mix comes up.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <random>
#include <utility>
#include <vector>

#include "engine/dsp.h"
#include "engine/effects/chorus.h"
#include "engine/effects/dc_blocker.h"
#include "engine/effects/delay.h"
#include "engine/effects/limiter.h"
#include "engine/effects/master_eq.h"
#include "engine/effects/mix_chain.h"
#include "engine/parameter.h"

namespace ziv {
namespace {

constexpr float kRate = 44100.0f;
constexpr int kSpans = 1500;
// Spans alternate in stretches of sound and of silence, long enough for tails to ring out and
// for the idle stops to be reached.
constexpr int kStretch = 120;

using Rng = std::mt19937;

int uniformInt(Rng& rng, int lo, int hi) {
  return std::uniform_int_distribution<int>(lo, hi)(rng);
}
float uniformFloat(Rng& rng, float lo, float hi) {
  return std::uniform_real_distribution<float>(lo, hi)(rng);
}

// Each rig owns one unit at kRate and says how it is aimed and rendered.
struct ChorusRig {
  using Settings = ChorusSettings;
  Chorus unit;
  ChorusRig() { unit.setSampleRate(kRate); }
  static Settings random(Rng& rng) {
    const float mix = uniformInt(rng, 0, 2) == 0 ? 0.0f : uniformFloat(rng, 0.0f, 1.0f);
    return {uniformFloat(rng, 0, 1), uniformFloat(rng, 0, 1), uniformFloat(rng, 0, 1),
            uniformFloat(rng, 0, 1), mix};
  }
  void aim(int frames, const Settings& s) { unit.aim(frames, s); }
  void render(float* l, float* r, int n, bool idle) { unit.render(l, r, n, idle); }
};

struct DelayRig {
  using Settings = DelaySettings;
  Delay unit;
  DelayRig() { unit.setSampleRate(kRate); }
  static Settings random(Rng& rng) {
    Settings s;
    s.synced = uniformInt(rng, 0, 1) == 1;
    s.steps = s.synced ? uniformInt(rng, 1, 4) : uniformInt(rng, 1, 24);
    s.tempoBpm = uniformFloat(rng, 60.0f, 240.0f);
    s.width = uniformFloat(rng, -1, 1);
    s.feedback = uniformFloat(rng, 0, 1);
    s.send = uniformFloat(rng, 0, 1);
    return s;
  }
  void aim(int frames, const Settings& s) { unit.aim(frames, s); }
  void render(float* l, float* r, int n, bool idle) { unit.render(l, r, n, idle); }
};

struct LimiterRig {
  using Settings = bool;  // on
  Limiter unit;
  LimiterRig() { unit.setSampleRate(kRate); }
  static Settings random(Rng& rng) { return uniformInt(rng, 0, 5) != 0; }
  void aim(int, Settings on) { unit.aim(on); }
  void render(float* l, float* r, int n, bool idle) { unit.render(l, r, n, idle); }
};

struct DcBlockerRig {
  struct Settings {};
  DcBlocker left, right;
  DcBlockerRig() {
    left.setSampleRate(kRate);
    right.setSampleRate(kRate);
  }
  static Settings random(Rng&) { return {}; }
  void aim(int, Settings) {
    left.aim();
    right.aim();
  }
  void render(float* l, float* r, int n, bool) {
    left.render(l, n);
    right.render(r, n);
  }
};

struct MasterEqRig {
  using Settings = MasterEqSettings;
  MasterEq unit;
  MasterEqRig() { unit.setSampleRate(kRate); }
  static Settings random(Rng& rng) {
    return {uniformFloat(rng, 0, 1), uniformFloat(rng, 0, 1), uniformFloat(rng, -1, 1),
            uniformFloat(rng, -1, 1), uniformFloat(rng, 0, 1)};
  }
  void aim(int frames, const Settings& s) { unit.aim(frames, s); }
  void render(float* l, float* r, int n, bool) { unit.render(l, r, n); }
};

// The chain over its own parameter records, whose global values the settings replace.
struct MixChainRig {
  using Settings = std::vector<std::pair<int, float>>;
  std::vector<Parameter> params = std::vector<Parameter>(kParamCount);
  MixChain unit;
  MixChainRig() {
    for (int i = 0; i < kParamCount; ++i) params[i].describe(paramTable()[i]);
    unit.setSampleRate(kRate);
  }
  static Settings random(Rng& rng) {
    Settings s;
    for (int index : {kChorusDelay, kChorusRate, kChorusDepth, kChorusWidth, kDelayTime, kDelayWidth,
                      kDelayFeedback, kDelaySend})
      s.emplace_back(index, uniformFloat(rng, 0, 1));
    s.emplace_back(kChorusMix, uniformInt(rng, 0, 2) == 0 ? 0.0f : uniformFloat(rng, 0, 1));
    s.emplace_back(kMasterLimiter, static_cast<float>(uniformInt(rng, 0, 1)));
    for (int index : {kMasterEqFreqLow, kMasterEqFreqHigh, kMasterEqGainLow, kMasterEqGainHigh, kMasterGain})
      s.emplace_back(index, uniformFloat(rng, 0, 1));
    return s;
  }
  void aim(int frames, const Settings& s) {
    for (const auto& [index, value] : s) params[index].globalValue = value;
    unit.aim(frames, params.data(), 120.0);
  }
  // Idle spans carry zeros: no voice sounded.
  void render(float* l, float* r, int n, bool idle) { unit.render(l, r, n, !idle); }
};

// A span's input: zeros while idle, else noise over a sine, now and then above full scale.
void fillInput(Rng& rng, int span, bool idle, float* left, float* right, int frames) {
  const float level = span % 7 == 0 ? 2.0f : 0.5f;
  for (int i = 0; i < frames; ++i) {
    const float tone = std::sin(0.05f * static_cast<float>(span * kMaxBlock + i));
    left[i] = idle ? 0.0f : level * (0.7f * tone + uniformFloat(rng, -0.3f, 0.3f));
    right[i] = idle ? 0.0f : level * (0.7f * tone * tone + uniformFloat(rng, -0.3f, 0.3f));
  }
}

// Renders kSpans spans through two fresh rigs, one call per span and cut into pieces, and hands
// each sample pair to `same(whole, cut)`, which reports whether they agree well enough.
template <typename Rig, typename Same>
void compareWholeAndCut(unsigned seed, Same same) {
  Rng rng(seed);
  Rig whole, cut;
  typename Rig::Settings settings = Rig::random(rng);
  for (int span = 0; span < kSpans; ++span) {
    if (uniformInt(rng, 0, 3) == 0) settings = Rig::random(rng);
    const int aimed = uniformInt(rng, 1, kMaxBlock);
    int rendered = aimed;
    const int kind = uniformInt(rng, 0, 5);
    if (kind == 0) rendered = uniformInt(rng, 1, aimed);          // re-aimed before its end
    if (kind == 1) rendered = uniformInt(rng, aimed, kMaxBlock);  // rendered past its end
    const bool idle = (span / kStretch) % 2 == 1;
    std::array<float, kMaxBlock> wl, wr, cl, cr;
    fillInput(rng, span, idle, wl.data(), wr.data(), rendered);
    cl = wl;
    cr = wr;

    whole.aim(aimed, settings);
    whole.render(wl.data(), wr.data(), rendered, idle);
    cut.aim(aimed, settings);
    for (int at = 0; at < rendered;) {
      const int n = uniformInt(rng, 0, 2) == 0 ? 1 : uniformInt(rng, 1, rendered - at);
      cut.render(cl.data() + at, cr.data() + at, n, idle);
      at += n;
    }
    for (int i = 0; i < rendered; ++i) {
      ASSERT_TRUE(same(wl[i], cl[i]) && same(wr[i], cr[i]))
          << "seed " << seed << ", span " << span << " sample " << i << ": " << wl[i] << " " << cl[i] << ", "
          << wr[i] << " " << cr[i];
    }
  }
}

bool identical(float a, float b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

constexpr unsigned kSeeds[] = {1u, 2u, 3u};

TEST(EffectsSplit, ChorusCutsChangeNoSample) {
  for (unsigned seed : kSeeds) compareWholeAndCut<ChorusRig>(seed, identical);
}

TEST(EffectsSplit, DelayCutsChangeNoSample) {
  for (unsigned seed : kSeeds) compareWholeAndCut<DelayRig>(seed, identical);
}

TEST(EffectsSplit, LimiterCutsChangeNoSample) {
  for (unsigned seed : kSeeds) compareWholeAndCut<LimiterRig>(seed, identical);
}

TEST(EffectsSplit, DcBlockerCutsChangeNoSample) {
  for (unsigned seed : kSeeds) compareWholeAndCut<DcBlockerRig>(seed, identical);
}

TEST(EffectsSplit, MasterEqCutsChangeNoSample) {
  for (unsigned seed : kSeeds) compareWholeAndCut<MasterEqRig>(seed, identical);
}

// Where a cut moves an idle decision, both renders are quiet: at most the silence threshold
// through the DC blockers' and the delay's quiet tails, scaled by the EQ (1.21 at its shelves'
// extremes with the default settings).
TEST(EffectsSplit, ChainCutsChangeOnlyQuietSamples) {
  constexpr float kQuiet = 4.0f * kSilence;
  for (unsigned seed : kSeeds) {
    compareWholeAndCut<MixChainRig>(seed, [](float a, float b) {
      return identical(a, b) || (std::fabs(a) <= kQuiet && std::fabs(b) <= kQuiet);
    });
  }
}

// At mix 0 the chorus is bypassed while a 440 Hz sine plays (the buffers pass untouched), but
// its rings are fed: when the mix comes up to 0.5 the wet path fades in over the real recent
// input, and no sample-to-sample step exceeds what the two sine paths can make.
TEST(ChorusBypass, MixZeroPassesUntouchedAndWakesWithoutAClick) {
  Chorus chorus;
  chorus.setSampleRate(kRate);
  ChorusSettings s{0.5f, 0.5f, 0.5f, 0.5f, 0.0f};
  const float step = 2.0f * kPi * 440.0f / kRate;  // the largest step of a unit sine
  float previous = 0.0f, largest = 0.0f;
  for (int b = 0; b < 400; ++b) {
    if (b == 200) s.mix = 0.5f;
    std::array<float, kMaxBlock> left, right;
    for (int i = 0; i < kMaxBlock; ++i) left[i] = right[i] = 0.5f * std::sin(step * (b * kMaxBlock + i));
    const std::array<float, kMaxBlock> input = left;
    chorus.aim(kMaxBlock, s);
    chorus.render(left.data(), right.data(), kMaxBlock, false);
    if (b < 200) {
      ASSERT_TRUE(chorus.bypassed());
      ASSERT_EQ(left, input);
    }
    for (float x : left) {
      largest = std::max(largest, std::fabs(x - previous));
      previous = x;
    }
  }
  EXPECT_FALSE(chorus.bypassed());
  // Dry and wet paths at sqrt(0.5) each, both 0.5 sines: about 0.5 x 1.414 x step, with room
  // for the wet path's vibrato and fade-in; a stale or emptied ring would step by 0.3 or more.
  EXPECT_LE(largest, 1.5f * 0.5f * std::sqrt(2.0f) * step);
}

}  // namespace
}  // namespace ziv
