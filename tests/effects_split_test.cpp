// Cutting an aimed span into pieces changes nothing: the chorus, the delay, the limiter, the DC
// blocker and the master EQ render the same bit for bit however their spans are cut; the chain
// makes its idle decisions per call, so there samples may differ only at the silence threshold's
// level. And the chorus, bypassed at mix 0 while sound plays, fades its wet path in without a
// click when the mix comes up.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
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
#include "engine/random.h"
#include "span_split.h"

namespace ziv {
namespace {

constexpr float kRate = 44100.0f;

using testing::uniform;

// The chorus mix for the `aims`th aim: 0, the chorus bypassed, in one span of three at random and
// through every third run of kBypassRun spans, long enough for silence to stop the rings' feeding.
float chorusMix(int aims, Random& r) {
  constexpr int kBypassRun = 256;
  const bool bypassed = r.next() % 3 == 0 || aims / kBypassRun % 3 == 2;
  return bypassed ? 0.0f : uniform(r, 0, 1);
}

struct ChorusRig : testing::SplitRig {
  Chorus chorus;
  int aims = 0;
  int skippingAims = 0;  // spans aimed while the chorus skipped its work
  ChorusRig() { chorus.setSampleRate(kRate); }
  void restart() { chorus.reset(); }
  void aim(int frames, Random& r) {
    skippingAims += chorus.skipping();
    chorus.aim(frames, {uniform(r, 0, 1), uniform(r, 0, 1), uniform(r, 0, 1), uniform(r, 0, 1),
                        chorusMix(aims++, r)});
  }
  void render(float* left, float* right, int frames, bool idle) { chorus.render(left, right, frames, idle); }
  std::pair<bool, bool> state() const { return {chorus.bypassed(), chorus.skipping()}; }
};

struct DelayRig : testing::SplitRig {
  Delay delay;
  DelayRig() { delay.setSampleRate(kRate); }
  void restart() { delay.reset(); }
  void aim(int frames, Random& r) {
    DelaySettings s;
    s.synced = r.next() % 2 == 0;
    s.steps = 1 + r.next() % (s.synced ? 4 : 24);
    s.tempoBpm = uniform(r, 60, 240);
    s.width = uniform(r, -1, 1);
    s.feedback = uniform(r, 0, 1);
    s.send = uniform(r, 0, 1);
    delay.aim(frames, s);
  }
  void render(float* left, float* right, int frames, bool idle) { delay.render(left, right, frames, idle); }
  bool state() const { return delay.isSilent(); }
};

struct LimiterRig : testing::SplitRig {
  Limiter limiter;
  LimiterRig() { limiter.setSampleRate(kRate); }
  void restart() { limiter.reset(); }
  void aim(int, Random& r) { limiter.aim(r.next() % 6 != 0); }
  void render(float* left, float* right, int frames, bool idle) { limiter.render(left, right, frames, idle); }
};

struct DcBlockerRig : testing::SplitRig {
  DcBlocker left, right;
  DcBlockerRig() {
    left.setSampleRate(kRate);
    right.setSampleRate(kRate);
  }
  void restart() {
    left.reset();
    right.reset();
  }
  void aim(int, Random&) {
    left.aim();
    right.aim();
  }
  void render(float* l, float* r, int frames, bool) {
    left.render(l, frames);
    right.render(r, frames);
  }
  std::pair<bool, bool> state() const { return {left.isAtRest(), right.isAtRest()}; }
};

struct MasterEqRig : testing::SplitRig {
  MasterEq eq;
  MasterEqRig() { eq.setSampleRate(kRate); }
  void restart() { eq.reset(); }
  void aim(int frames, Random& r) {
    eq.aim(frames,
           {uniform(r, 0, 1), uniform(r, 0, 1), uniform(r, -1, 1), uniform(r, -1, 1), uniform(r, 0, 1)});
  }
  void render(float* left, float* right, int frames, bool) { eq.render(left, right, frames); }
  bool state() const { return eq.isSilent(); }
};

// The chain over its own parameter records, whose global values the settings replace.
struct MixChainRig : testing::SplitRig {
  std::vector<Parameter> params = std::vector<Parameter>(kParamCount);
  MixChain chain;
  int aims = 0;
  MixChainRig() {
    for (int i = 0; i < kParamCount; ++i) params[i].describe(paramTable()[i]);
    chain.setSampleRate(kRate);
  }
  // Parameter records do not copy; every aim sets the values it reads.
  MixChainRig(const MixChainRig& other) : MixChainRig() {
    chain = other.chain;
    aims = other.aims;
  }
  void restart() { chain.reset(); }
  void aim(int frames, Random& r) {
    for (int index :
         {kChorusDelay, kChorusRate, kChorusDepth, kChorusWidth, kDelayTime, kDelayWidth, kDelayFeedback,
          kDelaySend, kMasterEqFreqLow, kMasterEqFreqHigh, kMasterEqGainLow, kMasterEqGainHigh, kMasterGain})
      params[index].globalValue = uniform(r, 0, 1);
    params[kChorusMix].globalValue = chorusMix(aims++, r);
    params[kMasterLimiter].globalValue = static_cast<float>(r.next() % 2);
    chain.aim(frames, params.data(), 120.0);
  }
  // Idle spans carry zeros: no voice sounded.
  void render(float* left, float* right, int frames, bool idle) { chain.render(left, right, frames, !idle); }
};

TEST(EffectsSplit, ChorusCutsChangeNoSample) {
  ChorusRig rig;
  EXPECT_TRUE(testing::rendersTheSameWhateverTheCuts(rig, testing::soundAndSilence()));
  EXPECT_GT(rig.skippingAims, 0) << "the chorus never stopped feeding its rings";
}

TEST(EffectsSplit, DelayCutsChangeNoSample) {
  DelayRig rig;
  EXPECT_TRUE(testing::rendersTheSameWhateverTheCuts(rig, testing::soundAndSilence()));
}

TEST(EffectsSplit, LimiterCutsChangeNoSample) {
  LimiterRig rig;
  EXPECT_TRUE(testing::rendersTheSameWhateverTheCuts(rig, testing::soundAndSilence()));
}

TEST(EffectsSplit, DcBlockerCutsChangeNoSample) {
  DcBlockerRig rig;
  EXPECT_TRUE(testing::rendersTheSameWhateverTheCuts(rig, testing::soundAndSilence()));
}

TEST(EffectsSplit, MasterEqCutsChangeNoSample) {
  MasterEqRig rig;
  EXPECT_TRUE(testing::rendersTheSameWhateverTheCuts(rig, testing::soundAndSilence()));
}

// Where a cut moves an idle decision, both renders are quiet: at most the silence threshold
// through the DC blockers' and the delay's quiet tails, scaled by the EQ (1.21 at its shelves'
// extremes with the default settings).
TEST(EffectsSplit, ChainCutsChangeOnlyQuietSamples) {
  constexpr float kQuiet = 4.0f * kSilence;
  MixChainRig rig;
  EXPECT_TRUE(testing::rendersTheSameWhateverTheCuts(rig, testing::soundAndSilence(), [](float a, float b) {
    return testing::BitIdentical()(a, b) || (std::fabs(a) <= kQuiet && std::fabs(b) <= kQuiet);
  }));
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
