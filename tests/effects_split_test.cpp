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

// The chorus mix for the `aims`th aim: 0, the chorus bypassed, for one draw in three and through
// every third run of kBypassRun aims, long enough for silence to stop the rings' feeding.
float chorusMix(int aims, Random& r) {
  constexpr int kBypassRun = 256;
  const bool bypassed = r.next() % 3 == 0 || aims / kBypassRun % 3 == 2;
  return bypassed ? 0.0f : uniform(r, 0, 1);
}

struct ChorusRig : testing::UnitRig<Chorus> {
  int aims = 0;
  int skippingAims = 0;  // spans aimed while the chorus skipped its work
  void aim(int frames, Random& r) {
    skippingAims += unit.skipping();
    unit.aim(frames,
             {uniform(r, 0, 1), uniform(r, 0, 1), uniform(r, 0, 1), uniform(r, 0, 1), chorusMix(aims++, r)});
  }
  void render(float* left, float* right, int frames, bool idle) { unit.render(left, right, frames, idle); }
  std::pair<bool, bool> state() const { return {unit.bypassed(), unit.skipping()}; }
};

struct DelayRig : testing::UnitRig<Delay> {
  void aim(int frames, Random& r) {
    DelaySettings s;
    s.synced = r.next() % 2 == 0;
    s.steps = 1 + r.next() % (s.synced ? 4 : 24);
    s.tempoBpm = uniform(r, 60, 240);
    s.width = uniform(r, -1, 1);
    s.feedback = uniform(r, 0, 1);
    s.send = uniform(r, 0, 1);
    unit.aim(frames, s);
  }
  void render(float* left, float* right, int frames, bool idle) { unit.render(left, right, frames, idle); }
  bool state() const { return unit.isSilent(); }
};

struct LimiterRig : testing::UnitRig<Limiter> {
  void aim(int, Random& r) { unit.aim(r.next() % 6 != 0); }
  void render(float* left, float* right, int frames, bool idle) { unit.render(left, right, frames, idle); }
};

struct DcBlockerRig : testing::SplitRig {
  std::array<DcBlocker, 2> blockers;  // left, right
  DcBlockerRig() {
    for (DcBlocker& b : blockers) b.setSampleRate(testing::kSplitRate);
  }
  void restart() {
    for (DcBlocker& b : blockers) b.reset();
  }
  void aim(int, Random&) {
    for (DcBlocker& b : blockers) b.aim();
  }
  void render(float* left, float* right, int frames, bool) {
    DcBlocker::renderPair(blockers[0], blockers[1], left, right, frames);
  }
  std::pair<bool, bool> state() const { return {blockers[0].isAtRest(), blockers[1].isAtRest()}; }
};

struct MasterEqRig : testing::UnitRig<MasterEq> {
  void aim(int frames, Random& r) {
    unit.aim(frames,
             {uniform(r, 0, 1), uniform(r, 0, 1), uniform(r, -1, 1), uniform(r, -1, 1), uniform(r, 0, 1)});
  }
  void render(float* left, float* right, int frames, bool) { unit.render(left, right, frames); }
  bool state() const { return unit.isSilent(); }
};

// The chain over its own parameter records, whose global values the settings replace.
struct MixChainRig : testing::UnitRig<MixChain> {
  std::vector<Parameter> params = std::vector<Parameter>(kParamCount);
  int aims = 0;
  MixChainRig() {
    for (int i = 0; i < kParamCount; ++i) params[i].describe(paramTable()[i]);
  }
  // Parameter records do not copy; every aim sets the values it reads.
  MixChainRig(const MixChainRig& other) : MixChainRig() {
    unit = other.unit;
    aims = other.aims;
  }
  void aim(int frames, Random& r) {
    for (int index :
         {kChorusDelay, kChorusRate, kChorusDepth, kChorusWidth, kDelayTime, kDelayWidth, kDelayFeedback,
          kDelaySend, kMasterEqFreqLow, kMasterEqFreqHigh, kMasterEqGainLow, kMasterEqGainHigh, kMasterGain})
      params[index].globalValue = uniform(r, 0, 1);
    params[kChorusMix].globalValue = chorusMix(aims++, r);
    params[kMasterLimiter].globalValue = static_cast<float>(r.next() % 2);
    unit.aim(frames, params.data(), 120.0);
  }
  // Idle spans carry zeros: no voice sounded.
  void render(float* left, float* right, int frames, bool idle) { unit.render(left, right, frames, !idle); }
};

TEST(EffectsSplit, CutsChangeNoSampleOfAnyEffect) {
  const testing::SplitInput input = testing::soundAndSilence();
  ChorusRig chorus;
  EXPECT_TRUE(testing::rendersTheSameWhateverTheCuts(chorus, input)) << "chorus";
  EXPECT_GT(chorus.skippingAims, 0) << "the chorus never stopped feeding its rings";
  DelayRig delay;
  EXPECT_TRUE(testing::rendersTheSameWhateverTheCuts(delay, input)) << "delay";
  LimiterRig limiter;
  EXPECT_TRUE(testing::rendersTheSameWhateverTheCuts(limiter, input)) << "limiter";
  DcBlockerRig dcBlocker;
  EXPECT_TRUE(testing::rendersTheSameWhateverTheCuts(dcBlocker, input)) << "DC blocker";
  MasterEqRig eq;
  EXPECT_TRUE(testing::rendersTheSameWhateverTheCuts(eq, input)) << "master EQ";
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
