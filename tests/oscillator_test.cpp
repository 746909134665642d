// The tone sources measured: the band-limited step table, the saw/pulse core's shapes, offset,
// sync and silence behaviour, the noise table's reproducibility and the sub oscillator; the saw/
// pulse core and the sub render the same samples however their aimed spans are cut.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "engine/dsp.h"
#include "engine/oscillators/blep_table.h"
#include "engine/oscillators/noise_oscillator.h"
#include "engine/oscillators/saw_pulse_oscillator.h"
#include "engine/oscillators/sub_oscillator.h"
#include "engine/random.h"
#include "span_split.h"

namespace ziv {
namespace {

constexpr float kRate = 44100.0f;
// The noise table's first and last values, pinned so that a change of the generator shows.
constexpr float kNoiseFirst = 0.758932889f;
constexpr float kNoiseLast = 0.552997291f;

struct SawSettings {
  float pitch = 57.0f;  // 220 Hz
  float gain = 1.0f;
  int mode = SawPulseOscillator::kSaw;
  float shape = 0.0f;
  double ratio = 1.0;
};

// One span aimed and rendered whole.
void renderSpan(SawPulseOscillator& osc, float* out, int frames, const SawSettings& s,
                bool jumpGain = false) {
  osc.aim(frames, s.pitch, s.gain, s.mode, s.shape, s.ratio, jumpGain);
  osc.render(out, frames);
}

// Renders `frames` samples in engine-sized spans from a fresh start at `phase`.
std::vector<float> renderSaw(const SawSettings& s, int frames, double phase = 0.0) {
  SawPulseOscillator osc;
  osc.setSampleRate(kRate);
  osc.start(phase);
  std::vector<float> out(frames, 0.0f);
  for (int i = 0; i < frames; i += kMaxBlock)
    renderSpan(osc, out.data() + i, std::min(kMaxBlock, frames - i), s);
  return out;
}

double mean(const std::vector<float>& x, int from, int count) {
  double sum = 0.0;
  for (int i = from; i < from + count; ++i) sum += x[i];
  return sum / count;
}

TEST(BlepTable, LeadingValuesAndShape) {
  const BlepTable& table = BlepTable::instance();
  const float row0[] = {1.0f, 0.9987f, 0.9385f, 0.4833f, -0.1746f};
  const float row128[] = {0.9997f, 0.9891f, 0.7846f, 0.1003f, -0.1849f};
  for (int k = 0; k < 5; ++k) {
    EXPECT_NEAR(table.row(0)[k], row0[k], 0.001f) << k;
    EXPECT_NEAR(table.row(128)[k], row128[k], 0.001f) << k;
  }
  for (int k = 0; k + 1 < BlepTable::kTaps; ++k) EXPECT_EQ(table.row(256)[k], table.row(0)[k + 1]);
  // The residual has rung out by the last tap of every row.
  for (int r = 0; r <= BlepTable::kPhases; ++r) EXPECT_NEAR(table.row(r)[BlepTable::kTaps - 1], 0.0f, 1e-6f);
  // The direct-current constant belongs to this table: within a few percent of the original
  // design's 2.755.
  EXPECT_NEAR(table.dcPerStep(), 2.755, 0.05);
}

// Amplitude of the component at freqHz (whole cycles over the span give an exact reading).
double amplitudeAt(const std::vector<float>& x, int from, int count, double freqHz) {
  double s = 0.0, c = 0.0;
  for (int i = 0; i < count; ++i) {
    const double phase = 2.0 * 3.14159265358979323846 * freqHz * i / kRate;
    s += x[from + i] * std::sin(phase);
    c += x[from + i] * std::cos(phase);
  }
  return 2.0 * std::hypot(s, c) / count;
}

TEST(SawPulseOscillator, SawWithShapeZeroIsOneSawOfDoubleAmplitudeWithoutOffset) {
  // A saw of peak amplitude 2 has harmonics of 4 / (pi k). One second at 220 Hz (A3) and a
  // mean check also at C7, where a wrong direct-current constant would show most.
  SawSettings s;
  const std::vector<float> low = renderSaw(s, 44100, 0.3);
  const double hz = 440.0 * std::pow(2.0, (57.0 - 69.0) / 12.0);
  for (int k = 1; k <= 6; ++k) {
    EXPECT_NEAR(amplitudeAt(low, 0, 44100, k * hz), 4.0 / (3.14159265358979 * k), 0.01) << k;
  }
  EXPECT_NEAR(mean(low, 0, 44100), 0.0, 2e-3);
  s.pitch = 96.0f;
  const std::vector<float> high = renderSaw(s, 44100, 0.7);
  EXPECT_NEAR(mean(high, 0, 44100), 0.0, 5e-4);
  EXPECT_LT(*std::max_element(high.begin(), high.end()), 2.4f);
}

TEST(SawPulseOscillator, PulseWidthFollowsShape) {
  // The difference of the two saws is 2 (1 - w) for a fraction w of the cycle and -2 w
  // otherwise: zero mean, and harmonics 4 / (pi k) |sin(pi k w)|, with w = 0.5 + 0.49 shape.
  SawSettings s;
  s.mode = SawPulseOscillator::kPulse;
  s.pitch = 45.0f;  // 110 Hz
  const double hz = 110.0, pi = 3.14159265358979;
  for (const float shape : {-1.0f, -0.5f, 0.0f, 0.5f, 1.0f}) {
    s.shape = shape;
    const double width = 0.5 + 0.49 * shape;
    const std::vector<float> out = renderSaw(s, 44100, 0.1);
    EXPECT_NEAR(mean(out, 0, 44100), 0.0, 1e-4) << shape;
    for (int k = 1; k <= 3; ++k) {
      EXPECT_NEAR(amplitudeAt(out, 0, 44100, k * hz), 4.0 / (pi * k) * std::fabs(std::sin(pi * k * width)),
                  0.005)
          << shape << " " << k;
    }
  }
}

TEST(SawPulseOscillator, SyncAtWholeRatiosAddsNothing) {
  // Ratio 1: every master wrap meets a slave wrap, so the sync restarts change nothing; the
  // same holds for ratio 2 an octave lower (the slave is then the same saw).
  for (const int mode : {SawPulseOscillator::kSaw, SawPulseOscillator::kPulse}) {
    SawSettings plain;
    plain.mode = mode;
    plain.shape = 0.3f;
    plain.pitch = 69.0f;
    SawSettings octave = plain;
    octave.pitch = 57.0f;
    octave.ratio = 2.0;
    SawSettings nearlyOne = plain;
    nearlyOne.ratio = 1.0 + 1e-9;
    const std::vector<float> a = renderSaw(plain, 8192, 0.25);
    const std::vector<float> b = renderSaw(octave, 8192, 0.125);
    const std::vector<float> c = renderSaw(nearlyOne, 8192, 0.25);
    for (int i = 0; i < 8192; ++i) {
      ASSERT_NEAR(a[i], b[i], 2e-3) << mode << " " << i;
      ASSERT_NEAR(a[i], c[i], 2e-3) << mode << " " << i;
    }
  }
  // A ratio between whole numbers restarts the slave once per master cycle: the output repeats
  // at the master's frequency, which now carries energy.
  SawSettings synced;
  synced.ratio = 1.5;
  const std::vector<float> out = renderSaw(synced, 44100);
  EXPECT_GT(amplitudeAt(out, 0, 44100, 220.0), 0.1);
}

TEST(SawPulseOscillator, SilentBlocksKeepThePhaseRunning) {
  // One oscillator plays throughout; the other is silent for 20 blocks in the middle. When it
  // sounds again it has primed itself with 10 samples, so it runs 10 samples ahead of the first.
  SawPulseOscillator steady, paused;
  for (SawPulseOscillator* o : {&steady, &paused}) {
    o->setSampleRate(kRate);
    o->start(0.4);
  }
  SawSettings s;
  s.pitch = 62.3f;
  s.mode = SawPulseOscillator::kPulse;
  s.shape = 0.2f;
  s.ratio = 1.3;
  SawSettings off = s;
  off.gain = 0.0f;
  std::vector<float> a(40 * kMaxBlock, 0.0f), b(40 * kMaxBlock, 0.0f);
  for (int block = 0; block < 40; ++block) {
    const bool silent = block >= 10 && block < 30;  // block 10 fades out
    renderSpan(steady, a.data() + block * kMaxBlock, kMaxBlock, s);
    renderSpan(paused, b.data() + block * kMaxBlock, kMaxBlock, silent ? off : s, !silent);
  }
  for (int i = 11 * kMaxBlock; i < 30 * kMaxBlock; ++i) ASSERT_EQ(b[i], 0.0f);
  // From the second audible block on, the corrections the priming could not know have rung out.
  for (int i = 31 * kMaxBlock; i + 10 < 40 * kMaxBlock; ++i) ASSERT_NEAR(b[i], a[i + 10], 1e-3) << i;
}

TEST(SawPulseOscillator, FadesOutAboveNyquist) {
  // 440 x 2^(70/12) Hz is above half of 44.1 kHz: nothing sounds.
  SawSettings s;
  s.pitch = 139.0f;
  const std::vector<float> out = renderSaw(s, 1024);
  for (float v : out) ASSERT_EQ(v, 0.0f);
  // Synced an octave up, a note just below Nyquist also falls silent.
  s.pitch = 125.0f;
  s.ratio = 2.0;
  const std::vector<float> synced = renderSaw(s, 1024);
  for (float v : synced) ASSERT_EQ(v, 0.0f);
}

// One span of noise aimed and rendered in one call.
void renderNoise(NoiseOscillator& osc, float* out, int frames, float pitch, float gain, float narrowness) {
  osc.aim(frames, pitch, gain, narrowness);
  osc.render(out, frames);
}

TEST(NoiseOscillator, TableIsFixedUniformNoise) {
  const float* table = NoiseOscillator::table();
  double sum = 0.0, squares = 0.0;
  for (int i = 0; i < NoiseOscillator::kTableSize; ++i) {
    ASSERT_GT(table[i], -1.0f);
    ASSERT_LT(table[i], 1.0f);
    sum += table[i];
    squares += table[i] * table[i];
  }
  const double n = NoiseOscillator::kTableSize;
  EXPECT_NEAR(sum / n, 0.0, 0.01);
  EXPECT_NEAR(std::sqrt(squares / n), 1.0 / std::sqrt(3.0), 0.01);
  // The same values on every run and on every build.
  EXPECT_EQ(table[0], kNoiseFirst);
  EXPECT_EQ(table[NoiseOscillator::kTableSize - 1], kNoiseLast);
}

TEST(NoiseOscillator, SameSeedSameNoise) {
  auto render = [](int seed, float narrowness) {
    NoiseOscillator osc;
    osc.setSampleRate(kRate);
    osc.start(seed);
    std::vector<float> out(4096, 0.0f);
    for (int i = 0; i < 4096; i += kMaxBlock)
      renderNoise(osc, out.data() + i, kMaxBlock, 60.0f, 1.0f, narrowness);
    return out;
  };
  EXPECT_EQ(render(1234, 0.0f), render(1234, 0.0f));
  EXPECT_EQ(render(1234, 1.0f), render(1234, 1.0f));
  EXPECT_NE(render(1234, 0.0f), render(1235, 0.0f));
}

TEST(NoiseOscillator, NarrownessFocusesTheNoiseOnTheNote) {
  // Shape +1 puts most of the power near the note (C4, 261.6 Hz), shape -1 spreads it.
  auto nearNoteShare = [](float narrowness) {
    NoiseOscillator osc;
    osc.setSampleRate(kRate);
    osc.start(99);
    std::vector<float> out(44100, 0.0f);
    for (int i = 0; i < 44100; i += kMaxBlock) {
      renderNoise(osc, out.data() + i, std::min(kMaxBlock, 44100 - i), 60.0f, 1.0f, narrowness);
    }
    double total = 0.0;
    for (float v : out) total += v * v;
    double near = 0.0;
    for (int hz = 230; hz <= 295; ++hz) near += 0.5 * std::pow(amplitudeAt(out, 0, 44100, hz), 2.0) * 44100;
    return near / total;
  };
  EXPECT_GT(nearNoteShare(1.0f), 0.5);
  EXPECT_LT(nearNoteShare(0.0f), 0.05);
}

// Modulation takes the pitch far below note 0, where the band-pass stops at its lowest frequency;
// a lift made for the pitch asked for instead of the band the filter has once multiplied the
// noise by hundreds.
TEST(NoiseOscillator, PitchesBelowTheLowestBandKeepTheUsualLevel) {
  for (float narrowness : {0.5f, 0.7f, 1.0f}) {
    NoiseOscillator osc;
    osc.setSampleRate(kRate);
    osc.start(7);
    std::vector<float> out(kMaxBlock);
    float peak = 0.0f;
    for (int block = 0; block < 1000; ++block) {
      std::fill(out.begin(), out.end(), 0.0f);
      renderNoise(osc, out.data(), kMaxBlock, block % 20 < 10 ? -80.0f : -30.0f, 1.0f, narrowness);
      for (float x : out) peak = std::max(peak, std::fabs(x));
    }
    EXPECT_LT(peak, 4.0f) << narrowness;
  }
}

TEST(SubOscillator, ShapesAndPhase) {
  auto render = [](float shape, float gain, int frames, SubOscillator& osc) {
    std::vector<float> out(frames, 0.0f);
    for (int i = 0; i < frames; i += kMaxBlock) {
      const int span = std::min(kMaxBlock, frames - i);
      osc.aim(span, 45.0f, gain, shape);
      osc.render(out.data() + i, span);
    }
    return out;
  };
  // Shape 0.25 is close to a sine that starts at the start phase; shape 0 has flat peaks.
  SubOscillator osc;
  osc.setSampleRate(kRate);
  osc.start(0.0);
  const std::vector<float> sine = render(0.25f, 1.0f, 4096, osc);
  const double f = 110.0 / kRate;
  for (int i = 0; i < 4096; ++i) ASSERT_NEAR(sine[i], std::sin(2.0 * 3.14159265358979 * f * i), 0.03) << i;
  osc.start(0.25);
  const std::vector<float> flat = render(0.0f, 1.0f, 8, osc);
  EXPECT_NEAR(flat[0], 1.0f, 1e-6f);
  EXPECT_NEAR(flat[1], 1.0f, 1e-3f);
  // Silent blocks add nothing and keep the phase moving.
  osc.start(0.0);
  const std::vector<float> silent = render(0.0f, 0.0f, 100 * kMaxBlock, osc);
  for (float v : silent) ASSERT_EQ(v, 0.0f);
  const double expected = f * 100 * kMaxBlock;
  EXPECT_NEAR(osc.phase(), expected - std::floor(expected), 1e-6);
}

using testing::uniform;

// Spans that play, fall silent (one in four), pass the Nyquist frequency, sync, switch between
// saw and pulse and jump their gain, cut anywhere: the same samples as whole spans.
struct SawPulseRig : testing::MonoRig<SawPulseOscillator> {
  static constexpr bool kHoldsTargets = true;
  void restart() { unit.start(0.3); }
  void aim(int frames, Random& r) {
    const float pitch = uniform(r, 30.0f, 140.0f);
    const float gain = r.next() % 4 == 0 ? 0.0f : uniform(r, 0.0f, 1.0f);
    const int mode = r.next() % 2;
    const float shape = uniform(r, -1.0f, 1.0f);
    const double ratio = r.next() % 2 == 0 ? 1.0 : std::pow(2.0, uniform(r, 0.0f, 30.0f) / 12.0);
    unit.aim(frames, pitch, gain, mode, shape, ratio, r.next() % 8 == 0);
  }
};

TEST(SawPulseOscillator, SameSamplesWhateverTheSplitOfItsSpans) {
  SawPulseRig rig;
  EXPECT_TRUE(testing::rendersTheSameWhateverTheCuts(rig, testing::silentInput()));
}

struct SubRig : testing::MonoRig<SubOscillator> {
  static constexpr bool kHoldsTargets = true;
  void restart() { unit.start(0.6); }
  void aim(int frames, Random& r) {
    const float gain = r.next() % 4 == 0 ? 0.0f : uniform(r, 0.0f, 1.0f);
    unit.aim(frames, uniform(r, 20.0f, 110.0f), gain, uniform(r, -1.0f, 1.0f));
  }
};

TEST(SubOscillator, SameSamplesWhateverTheSplitOfItsSpans) {
  SubRig rig;
  EXPECT_TRUE(testing::rendersTheSameWhateverTheCuts(rig, testing::silentInput()));
}

}  // namespace
}  // namespace ziv
