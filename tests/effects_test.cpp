// The mix chain's units measured: delay times, echo decay and tail end; chorus delay range,
// slew and dry path; limiter ceiling and latency; EQ shelves against the cookbook; DC blocker;
// and the engine's chain across sample-rate changes, idle bypass and reset.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <vector>

#include "engine/dsp.h"
#include "engine/effects/chorus.h"
#include "engine/effects/dc_blocker.h"
#include "engine/effects/delay.h"
#include "engine/effects/limiter.h"
#include "engine/effects/master_eq.h"
#include "engine/effects/mix_chain.h"
#include "engine/synth_engine.h"
#include "test_host.h"

namespace ziv {
namespace {

constexpr float kRate = 44100.0f;
constexpr double kPiD = 3.14159265358979323846;

// Runs a stereo signal through `process(left, right, frames)` in blocks of kMaxBlock.
template <typename Process>
void renderBlocks(std::vector<float>& left, std::vector<float>& right, Process process) {
  for (size_t i = 0; i < left.size(); i += kMaxBlock) {
    const int n = static_cast<int>(std::min<size_t>(kMaxBlock, left.size() - i));
    process(left.data() + i, right.data() + i, n);
  }
}

// One aimed span rendered in one call: how a test steps a unit block by block.
void renderSpan(Delay& delay, float* left, float* right, int frames, const DelaySettings& s, bool synthIdle) {
  delay.aim(frames, s);
  delay.render(left, right, frames, synthIdle);
}
void renderSpan(Chorus& chorus, float* left, float* right, int frames, const ChorusSettings& s,
                bool synthIdle) {
  chorus.aim(frames, s);
  chorus.render(left, right, frames, synthIdle);
}
void renderSpan(Limiter& limiter, float* left, float* right, int frames, bool on, bool chainIdle) {
  limiter.aim(on);
  limiter.render(left, right, frames, chainIdle);
}
void renderSpan(MasterEq& eq, float* left, float* right, int frames, const MasterEqSettings& s) {
  eq.aim(frames, s);
  eq.render(left, right, frames);
}

int firstNonZero(const std::vector<float>& buf, int from = 0) {
  for (int i = from; i < static_cast<int>(buf.size()); ++i) {
    if (buf[i] != 0.0f) return i;
  }
  return -1;
}

// --- Delay ---

TEST(Delay, TimesFreeSyncedCappedAndWidth) {
  DelaySettings s;
  s.synced = false;
  s.steps = 24;
  EXPECT_FLOAT_EQ(Delay::times(s).left, 0.024f);
  EXPECT_FLOAT_EQ(Delay::times(s).right, 0.024f);

  s.synced = true;
  s.steps = 4;
  s.tempoBpm = 120.0;
  EXPECT_FLOAT_EQ(Delay::times(s).left, 0.5f);
  s.steps = 16;
  s.tempoBpm = 20.0;  // 12 s asked, 3 s given
  EXPECT_FLOAT_EQ(Delay::times(s).right, 3.0f);

  // Width shortens one side only, to 5 % at the extremes.
  s.steps = 4;
  s.tempoBpm = 120.0;
  s.width = 1.0f;
  EXPECT_NEAR(Delay::times(s).left, 0.025f, 1e-6f);
  EXPECT_FLOAT_EQ(Delay::times(s).right, 0.5f);
  s.width = -1.0f;
  EXPECT_FLOAT_EQ(Delay::times(s).left, 0.5f);
  EXPECT_NEAR(Delay::times(s).right, 0.025f, 1e-6f);
  s.width = 0.5f;  // c = 0.95 / 8
  EXPECT_NEAR(Delay::times(s).left, 0.5f * (1.0f - 0.95f / 8.0f), 1e-6f);
}

// An impulse through the delay at 120 BPM, 4 sixteenths, width +1: the left echo after 25 ms,
// the right after 0.5 s, each following echo smaller by the feedback (physical x 0.98).
TEST(Delay, EchoTimesAndFeedbackDecayPerEcho) {
  Delay delay;
  delay.setSampleRate(kRate);
  DelaySettings s;
  s.steps = 4;
  s.tempoBpm = 120.0;
  s.width = 1.0f;
  s.feedback = 0.5f;
  s.send = 0.8f;
  std::vector<float> left(2 * 44100, 0.0f), right(2 * 44100, 0.0f);
  left[0] = right[0] = 1.0f;
  bool first = true;
  renderBlocks(left, right, [&](float* l, float* r, int n) {
    renderSpan(delay, l, r, n, s, !first);
    first = false;
  });
  const int leftPeriod = static_cast<int>(std::lround(0.025 * kRate));
  const int rightPeriod = 22050;
  EXPECT_EQ(firstNonZero(left, 1), leftPeriod);
  EXPECT_EQ(firstNonZero(right, 1), rightPeriod);
  const float feedback = 0.5f * 0.98f;
  for (int echo = 1; echo <= 3; ++echo) {
    const float expected = 0.8f * std::pow(feedback, static_cast<float>(echo - 1));
    EXPECT_NEAR(left[echo * leftPeriod], expected, 1e-6f) << echo;
    EXPECT_NEAR(right[echo * rightPeriod], expected, 1e-6f) << echo;
    EXPECT_EQ(left[echo * leftPeriod + 1], 0.0f);
  }
}

// While the synth is idle the tail estimate falls by the feedback per echo period; the echoes
// ring on until it is below 2^-20, then the delay passes its input untouched until sound returns.
TEST(Delay, TailRingsOutThenStopsUntilSoundReturns) {
  Delay delay;
  delay.setSampleRate(kRate);
  DelaySettings s;
  s.synced = false;
  s.steps = 10;  // 10 ms
  s.feedback = 0.5f;
  s.send = 1.0f;
  float l[kMaxBlock] = {1.0f}, r[kMaxBlock] = {1.0f};
  renderSpan(delay, l, r, kMaxBlock, s, false);
  const float f = 0.49f, t = 0.01f;
  EXPECT_NEAR(delay.tail(), std::pow(f, -t), 1e-5f);

  // Blocks until the estimate reaches 2^-20: log(2^-20 / tail) / log(f) echo periods.
  const double periods = std::log(kSilence / delay.tail()) / std::log(f);
  const int expectedBlocks = static_cast<int>(std::ceil(periods * t * kRate / kMaxBlock));
  int blocks = 0;
  float lastEcho = 0.0f;
  while (!delay.isSilent() && blocks < 10000) {
    std::fill(l, l + kMaxBlock, 0.0f);
    std::fill(r, r + kMaxBlock, 0.0f);
    renderSpan(delay, l, r, kMaxBlock, s, true);
    for (float x : l) lastEcho = x != 0.0f ? x : lastEcho;
    ++blocks;
  }
  EXPECT_NEAR(blocks, expectedBlocks, 1);
  EXPECT_GT(lastEcho, 0.0f);
  EXPECT_LT(lastEcho, 1e-4f);

  // Stopped: the input passes unchanged, nothing is added.
  float probe[kMaxBlock], probeRight[kMaxBlock];
  for (int i = 0; i < kMaxBlock; ++i) probe[i] = probeRight[i] = 1e-3f * i;
  renderSpan(delay, probe, probeRight, kMaxBlock, s, true);
  for (int i = 0; i < kMaxBlock; ++i) ASSERT_EQ(probe[i], 1e-3f * i);

  // Sound returns: it runs again.
  renderSpan(delay, probe, probeRight, kMaxBlock, s, false);
  EXPECT_FALSE(delay.isSilent());
}

// --- Chorus ---

TEST(Chorus, MixZeroIsDryAndStopsAfterATenthOfASecondIdle) {
  Chorus chorus;
  chorus.setSampleRate(kRate);
  ChorusSettings s{0.5f, 0.5f, 0.5f, 0.5f, 0.0f};
  std::vector<float> left(4096), right(4096);
  for (size_t i = 0; i < left.size(); ++i) left[i] = right[i] = static_cast<float>(std::sin(0.01 * i));
  const std::vector<float> input = left;
  renderBlocks(left, right, [&](float* l, float* r, int n) { renderSpan(chorus, l, r, n, s, false); });
  EXPECT_EQ(left, input);
  EXPECT_EQ(right, input);

  const int idleBlocks = static_cast<int>(std::ceil(0.1 * kRate / kMaxBlock));
  float l[kMaxBlock] = {}, r[kMaxBlock] = {};
  for (int b = 0; b < idleBlocks - 1; ++b) renderSpan(chorus, l, r, kMaxBlock, s, true);
  EXPECT_FALSE(chorus.skipping());
  renderSpan(chorus, l, r, kMaxBlock, s, true);
  EXPECT_TRUE(chorus.skipping());
  // Raising the mix wakes it although the synth is still idle.
  s.mix = 0.5f;
  renderSpan(chorus, l, r, kMaxBlock, s, true);
  EXPECT_FALSE(chorus.skipping());
}

TEST(Chorus, ZeroDelayAndDepthIsOneSampleLate) {
  Chorus chorus;
  chorus.setSampleRate(kRate);
  const ChorusSettings s{0.0f, 0.3f, 0.0f, 0.5f, 1.0f};
  std::vector<float> left(1024), right(1024);
  for (size_t i = 0; i < left.size(); ++i) {
    left[i] = static_cast<float>(std::sin(0.05 * i));
    right[i] = static_cast<float>(std::cos(0.03 * i));
  }
  const std::vector<float> inLeft = left, inRight = right;
  renderBlocks(left, right, [&](float* l, float* r, int n) { renderSpan(chorus, l, r, n, s, false); });
  EXPECT_EQ(left[0], 0.0f);
  for (size_t i = 1; i < left.size(); ++i) {
    ASSERT_NEAR(left[i], inLeft[i - 1], 1e-6f) << i;
    ASSERT_NEAR(right[i], inRight[i - 1], 1e-6f) << i;
  }
}

// Full delay and depth sweep 0.05 .. 0.1 s; a jump of the delay knob and a fast deep sweep at a
// low rate both move the time by at most 0.0002 s per sample.
TEST(Chorus, DelayRangeAndSlewLimit) {
  Chorus chorus;
  chorus.setSampleRate(kRate);
  ChorusSettings s{1.0f, 0.5f, 1.0f, 1.0f, 0.5f};
  float l[kMaxBlock] = {}, r[kMaxBlock] = {};
  double lo = 1.0, hi = 0.0;
  for (int b = 0; b < 2000; ++b) {
    renderSpan(chorus, l, r, kMaxBlock, s, false);
    lo = std::min({lo, chorus.leftDelay(), chorus.rightDelay()});
    hi = std::max({hi, chorus.leftDelay(), chorus.rightDelay()});
  }
  EXPECT_NEAR(lo, 0.05, 1e-4);
  EXPECT_NEAR(hi, 0.1, 1e-4);
  EXPECT_GE(lo, 0.05 - 1e-9);
  EXPECT_LE(hi, 0.1 + 1e-9);

  const double maxStep = Chorus::kMaxSlewPerSample * kMaxBlock;
  Chorus jump;
  jump.setSampleRate(kRate);
  ChorusSettings still{0.0f, 0.0f, 0.0f, 0.0f, 0.5f};
  renderSpan(jump, l, r, kMaxBlock, still, false);
  EXPECT_NEAR(jump.leftDelay(), 0.0, 1e-12);
  still.delay = 1.0f;  // target 0.05 s
  renderSpan(jump, l, r, kMaxBlock, still, false);
  EXPECT_NEAR(jump.leftDelay(), maxStep, 1e-9);

  Chorus fast;
  fast.setSampleRate(8000.0f);
  const ChorusSettings deep{0.0f, 1.0f, 1.0f, 0.0f, 0.5f};
  renderSpan(fast, l, r, kMaxBlock, deep, false);
  double previous = fast.leftDelay(), largest = 0.0;
  for (int b = 0; b < 200; ++b) {
    renderSpan(fast, l, r, kMaxBlock, deep, false);
    largest = std::max(largest, std::fabs(fast.leftDelay() - previous));
    previous = fast.leftDelay();
  }
  EXPECT_LE(largest, maxStep + 1e-9);
  EXPECT_GT(largest, 0.99 * maxStep);  // the limit was reached
}

// --- Limiter ---

TEST(Limiter, LatencyIsTheLookAheadAndPeaksStayBelowFullScale) {
  EXPECT_EQ(Limiter::lookAhead(44100.0f), 63);
  EXPECT_EQ(Limiter::lookAhead(192000.0f), 63);
  EXPECT_EQ(Limiter::lookAhead(8000.0f), 32);

  Limiter limiter;
  limiter.setSampleRate(kRate);
  std::vector<float> left(1024, 0.0f), right(1024, 0.0f);
  left[100] = 0.5f;
  right[100] = -0.25f;
  renderBlocks(left, right, [&](float* l, float* r, int n) { renderSpan(limiter, l, r, n, true, false); });
  EXPECT_EQ(firstNonZero(left), 163);
  EXPECT_FLOAT_EQ(left[163], 0.5f);
  EXPECT_FLOAT_EQ(right[163], -0.25f);

  // A +6 dBFS burst (sine at 2.0) comes out below 1.0; a lone spike at 2.0 as P / (1 + P - 0.999).
  Limiter burst;
  burst.setSampleRate(kRate);
  std::vector<float> l(8192, 0.0f), r(8192, 0.0f);
  for (int i = 1000; i < 5000; ++i)
    l[i] = r[i] = static_cast<float>(2.0 * std::sin(2.0 * kPiD * 997.0 * i / kRate));
  l[7000] = 2.0f;
  renderBlocks(l, r, [&](float* a, float* b, int n) { renderSpan(burst, a, b, n, true, false); });
  float peak = 0.0f;
  for (float x : l) peak = std::max(peak, std::fabs(x));
  EXPECT_LT(peak, 1.0f);
  EXPECT_GT(peak, 0.99f);
  EXPECT_NEAR(l[7063], 2.0f / (1.0f + 2.0f - 0.999f), 1e-6f);
  // The gain dip starts inside the look-ahead, not at the spike.
  Limiter dip;
  dip.setSampleRate(kRate);
  std::vector<float> d(512, 0.5f), e(512, 0.5f);
  d[300] = 2.0f;
  renderBlocks(d, e, [&](float* a, float* b, int n) { renderSpan(dip, a, b, n, true, false); });
  EXPECT_FLOAT_EQ(e[300 + 63 - 63], 0.5f);
  EXPECT_LT(e[300 + 63 - 62], 0.5f);
  EXPECT_LT(e[300 + 63 - 1], e[300 + 63 - 30]);
}

TEST(Limiter, OffPassesUnchangedAndDiscardsItsDelay) {
  Limiter limiter;
  limiter.setSampleRate(kRate);
  float l[kMaxBlock], r[kMaxBlock];
  for (int i = 0; i < kMaxBlock; ++i) l[i] = r[i] = 3.0f;
  renderSpan(limiter, l, r, kMaxBlock, true, false);
  for (int i = 0; i < kMaxBlock; ++i) l[i] = r[i] = 0.25f;
  renderSpan(limiter, l, r, kMaxBlock, false, false);
  for (int i = 0; i < kMaxBlock; ++i) ASSERT_EQ(l[i], 0.25f);
  // Switched on again: the old samples are gone, it starts from silence.
  renderSpan(limiter, l, r, kMaxBlock, true, false);
  EXPECT_EQ(l[0], 0.0f);
  EXPECT_EQ(l[62], 0.0f);
  EXPECT_FLOAT_EQ(l[63], 0.25f);
}

// --- Master EQ and gain, DC blocker ---

// The cookbook shelves' magnitude at freqHz, with A passed directly and Q = 1/sqrt(2).
double cookbookShelf(bool high, double freqHz, double cornerHz, double a) {
  const double w0 = 2.0 * kPiD * cornerHz / kRate;
  const double cosW = std::cos(w0), alpha = std::sin(w0) / (2.0 * MasterEq::kShelfQ);
  const double s = 2.0 * std::sqrt(a) * alpha, sign = high ? -1.0 : 1.0;
  const double b0 = a * ((a + 1) - sign * (a - 1) * cosW + s);
  const double b1 = sign * 2 * a * ((a - 1) - sign * (a + 1) * cosW);
  const double b2 = a * ((a + 1) - sign * (a - 1) * cosW - s);
  const double a0 = (a + 1) + sign * (a - 1) * cosW + s;
  const double a1 = -sign * 2 * ((a - 1) + sign * (a + 1) * cosW);
  const double a2 = (a + 1) + sign * (a - 1) * cosW - s;
  const std::complex<double> z = std::polar(1.0, -2.0 * kPiD * freqHz / kRate);
  return std::abs((b0 + b1 * z + b2 * z * z) / (a0 + a1 * z + a2 * z * z));
}

double eqGain(double freqHz, const MasterEqSettings& settings) {
  MasterEq eq;
  eq.setSampleRate(kRate);
  const int settle = 16384, measure = 44100;
  std::vector<float> left(settle + measure), right(settle + measure);
  for (size_t i = 0; i < left.size(); ++i)
    left[i] = right[i] = static_cast<float>(std::sin(2.0 * kPiD * freqHz * i / kRate));
  renderBlocks(left, right, [&](float* l, float* r, int n) { renderSpan(eq, l, r, n, settings); });
  double s = 0.0, c = 0.0;
  for (int i = 0; i < measure; ++i) {
    const double phase = 2.0 * kPiD * freqHz * (settle + i) / kRate;
    s += right[settle + i] * std::sin(phase);
    c += right[settle + i] * std::cos(phase);
  }
  return 2.0 * std::hypot(s, c) / measure;
}

TEST(MasterEq, ShelfGainsAt50HzAnd10kHzMatchTheCookbook) {
  EXPECT_NEAR(MasterEq::lowShelfFrequency(0.0f), 50.0f, 1e-3f);
  EXPECT_NEAR(MasterEq::lowShelfFrequency(1.0f), 5000.0f, 0.1f);
  EXPECT_NEAR(MasterEq::highShelfFrequency(0.0f), 200.0f, 1e-3f);
  EXPECT_NEAR(MasterEq::highShelfFrequency(1.0f), 18000.0f, 0.5f);
  EXPECT_NEAR(MasterEq::masterGain(0.81632656f), 1.0f, 1e-6f);
  EXPECT_NEAR(MasterEq::masterGain(0.0f), 0.01f, 1e-7f);

  // Boosted low band and cut high band, then the reverse, then the centre setting with a gain.
  const MasterEqSettings cases[] = {{0.3f, 0.6f, 1.0f, -1.0f, 0.81632656f},
                                    {0.1f, 0.4f, -1.0f, 1.0f, 0.81632656f},
                                    {0.5f, 0.5f, 0.0f, 0.0f, 0.7f}};
  for (const MasterEqSettings& s : cases) {
    const double lowHz = MasterEq::lowShelfFrequency(s.freqLow),
                 highHz = MasterEq::highShelfFrequency(s.freqHigh);
    const double lowA = s.gainLow + 1.1, highA = s.gainHigh + 1.1, gain = MasterEq::masterGain(s.gain);
    for (double f : {50.0, 10000.0}) {
      const double expected =
          gain * cookbookShelf(false, f, lowHz, lowA) * cookbookShelf(true, f, highHz, highA);
      EXPECT_NEAR(eqGain(f, s), expected, 0.002 * expected) << f << " Hz, low A " << lowA;
    }
  }
}

// Each channel of the pair on its own: the left one carries an offset, the right one none.
TEST(DcBlocker, RemovesAnOffsetAndKeepsTheAudioBand) {
  DcBlocker left, right;
  left.setSampleRate(kRate);
  right.setSampleRate(kRate);
  std::vector<float> buf(44100), quiet(buf.size());
  for (size_t i = 0; i < buf.size(); ++i) {
    quiet[i] = 0.25f * static_cast<float>(std::sin(2.0 * kPiD * 1000.0 * i / kRate));
    buf[i] = 0.5f + quiet[i];
  }
  for (size_t i = 0; i < buf.size(); i += kMaxBlock) {
    DcBlocker::renderPair(left, right, buf.data() + i, quiet.data() + i,
                          std::min<int>(kMaxBlock, buf.size() - i));
  }
  for (const std::vector<float>* channel : {&buf, &quiet}) {
    double mean = 0.0, peak = 0.0;
    for (size_t i = buf.size() - 4410; i < buf.size(); ++i) {
      mean += (*channel)[i];
      peak = std::max(peak, std::fabs(static_cast<double>((*channel)[i])));
    }
    EXPECT_NEAR(mean / 4410, 0.0, 1e-4);
    EXPECT_NEAR(peak, 0.25, 0.003);
  }
  left.reset();
  EXPECT_TRUE(left.isQuiet());
}

// --- The chain ---

// The chain reading an engine's parameter records, fed a synthetic voice sum (the voices are
// not needed to exercise it).
struct ChainRig {
  SynthEngine engine;
  MixChain chain;

  void set(int index, float value) { engine.setParameter(index, value, false); }
  // Renders `frames` of input into `left`/`right` in sub-blocks; `sounding` says voices rendered.
  void render(std::vector<float>& left, std::vector<float>& right, bool sounding) {
    engine.smoothParameters(1.0f);
    renderBlocks(left, right, [&](float* l, float* r, int n) {
      chain.aim(n, &engine.parameter(0), 120.0);
      chain.render(l, r, n, sounding);
    });
  }
};

// A patch with every effect on: fast deep chorus, delay with feedback, EQ boost, limiter.
void setBusyPatch(ChainRig& rig) {
  rig.set(kChorusMix, 0.5f);
  rig.set(kChorusDepth, 1.0f);
  rig.set(kChorusRate, 1.0f);
  rig.set(kDelaySend, 1.0f);
  rig.set(kDelayFeedback, 1.0f);
  rig.set(kMasterLimiter, 1.0f);
  rig.set(kMasterEqGainLow, 1.0f);
  rig.set(kMasterGain, 1.0f);
}

// Rates change between blocks while sound and echoes run, also beyond the rings' design rate:
// the output stays finite and within the limiter's ceiling, and the latency follows the rate.
TEST(MixChain, SampleRateChangesBetweenBlocksStayClean) {
  ChainRig rig;
  setBusyPatch(rig);
  float peak = 0.0f;
  int n = 0;
  for (float rate : {44100.0f, 96000.0f, 22050.0f, 192000.0f, 384000.0f, 8000.0f, 48000.0f}) {
    rig.chain.setSampleRate(rate);
    EXPECT_EQ(rig.engine.latencySamples(rate), Limiter::lookAhead(rate));
    std::vector<float> left(8000), right(8000);
    for (size_t i = 0; i < left.size(); ++i, ++n) {
      left[i] = static_cast<float>(0.9 * std::sin(0.07 * n) + 0.2);
      right[i] = static_cast<float>(0.9 * std::sin(0.11 * n) - 0.2);
    }
    rig.render(left, right, true);
    for (size_t i = 0; i < left.size(); ++i) {
      ASSERT_TRUE(std::isfinite(left[i]) && std::isfinite(right[i])) << rate;
      peak = std::max({peak, std::fabs(left[i]), std::fabs(right[i])});
    }
  }
  EXPECT_GT(peak, 0.5f);
  EXPECT_LT(peak, 1.0f);
}

// After the sound stops the echoes ring on, then the chain goes idle (EQ skipped) and the output
// is exactly zero; reset() clears the delay lines at once.
TEST(MixChain, EchoesOutliveTheSoundThenTheChainIdles) {
  ChainRig rig;
  rig.set(kDelaySend, 1.0f);
  rig.set(kDelayFeedback, 0.6f);
  rig.set(kDelaySync, 0.0f);  // milliseconds
  rig.set(kDelayTime, 1.0f);  // 24 ms
  std::vector<float> left(4410, 0.5f), right(4410, 0.5f);
  rig.render(left, right, true);
  EXPECT_FALSE(rig.chain.chainIdle());

  std::vector<float> quiet(kMaxBlock), quietRight(kMaxBlock);
  int blocks = 0, ringing = 0;
  while (!rig.chain.chainIdle() && blocks < 100000) {
    std::fill(quiet.begin(), quiet.end(), 0.0f);
    std::fill(quietRight.begin(), quietRight.end(), 0.0f);
    rig.render(quiet, quietRight, false);
    ++blocks;
    for (float x : quiet) ringing += std::fabs(x) > 1e-3f ? 1 : 0;
  }
  ASSERT_TRUE(rig.chain.chainIdle());
  EXPECT_GT(ringing, 1000);  // the echoes were heard after the input stopped
  for (int b = 0; b < 4; ++b) {
    std::fill(quiet.begin(), quiet.end(), 0.0f);
    rig.render(quiet, quietRight, false);
  }
  for (float x : quiet) ASSERT_EQ(x, 0.0f);

  // Sound again, then a reset: the next silent block carries no echo.
  std::fill(left.begin(), left.end(), 0.5f);
  rig.render(left, right, true);
  rig.chain.reset();
  std::vector<float> after(44100, 0.0f), afterRight(44100, 0.0f);
  rig.render(after, afterRight, false);
  for (float x : after) ASSERT_EQ(x, 0.0f);
}

// Through the engine: a loud chord with the limiter on stays below full scale; after the voices
// end the synced echoes (0.375 s at 120 BPM) still sound, then the output falls to exact zero.
TEST(MixChain, InTheEngineEchoesOutliveTheVoices) {
  testing::TestHost host;
  VstTest& plugin = host.plugin();
  plugin.initProgram();  // a plain saw, whatever sound the factory bank starts on
  plugin.setParameter(kDelaySend, 1.0f);
  plugin.setParameter(kDelayFeedback, 0.5f);
  plugin.setParameter(kMasterLimiter, 1.0f);
  plugin.setParameter(kMasterGain, 1.0f);
  plugin.setParameter(kUnisonVoices, 1.0f);
  plugin.resume();  // the settings hold from the first frame
  for (int note = 48; note <= 72; note += 4) host.noteOn(0, note, 127);
  float peak = 0.0f;
  for (int b = 0; b < 40; ++b) {
    host.process(512);
    for (float x : host.left) peak = std::max(peak, std::fabs(x));
  }
  EXPECT_GT(peak, 0.9f);
  EXPECT_LT(peak, 1.0f);

  for (int note = 48; note <= 72; note += 4) host.noteOff(0, note);
  int blocks = 0;
  while (host.engine().soundingVoiceCount() > 0 && blocks++ < 1000) host.process(512);
  ASSERT_EQ(host.engine().soundingVoiceCount(), 0);
  float echo = 0.0f;
  for (int b = 0; b < 40; ++b) {
    host.process(512);
    for (float x : host.left) echo = std::max(echo, std::fabs(x));
  }
  EXPECT_GT(echo, 1e-3f);
  for (int b = 0; b < 2000; ++b) host.process(512);
  for (float x : host.left) ASSERT_EQ(x, 0.0f);
}

// The instance reports the limiter's look-ahead as its latency: a change made outside processing
// is announced at once; one made inside it (a MIDI program change) waits for the host's next call
// outside processing, as does the display refresh it asks for.
TEST(Latency, AnnouncedOutsideProcessingOnly) {
  testing::TestHost host;
  VstTest& plugin = host.plugin();
  const vst2::AEffect& effect = *plugin.getAeffect();
  EXPECT_EQ(effect.initialDelay, 0);

  plugin.setProgram(1);
  plugin.setParameter(kMasterLimiter, 1.0f);
  EXPECT_EQ(effect.initialDelay, 63);
  EXPECT_EQ(host.record().ioChangedCount, 1);
  plugin.setParameter(kMasterGain, 0.5f);  // no change, no call
  EXPECT_EQ(host.record().ioChangedCount, 1);
  plugin.setProgram(0);
  EXPECT_EQ(effect.initialDelay, 0);
  EXPECT_EQ(host.record().ioChangedCount, 2);

  const int displayUpdates = host.record().updateDisplayCount;
  host.midi(0, 0xC0, 1, 0);
  host.process(64);
  EXPECT_EQ(effect.initialDelay, 0);
  EXPECT_EQ(host.record().ioChangedCount, 2);
  EXPECT_EQ(host.record().updateDisplayCount, displayUpdates);
  plugin.dispatcher(vst2::effEditIdle, 0, 0, nullptr, 0.0f);
  EXPECT_EQ(effect.initialDelay, 63);
  EXPECT_EQ(host.record().ioChangedCount, 3);
  EXPECT_EQ(host.record().updateDisplayCount, displayUpdates + 1);

  plugin.setSampleRate(8000.0f);
  plugin.resume();
  EXPECT_EQ(effect.initialDelay, 32);
  EXPECT_EQ(host.record().ioChangedCount, 4);
}

}  // namespace
}  // namespace ziv
