// The shaper's fixed latency in every mode and in bypass, its reset, the curves it applies to
// slow signals, the flat and in-phase wet path for small signals, its aliasing at high notes, and
// the same samples however its aimed spans are cut.
#include "engine/shaper.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "engine/dsp.h"
#include "engine/random.h"
#include "span_split.h"

namespace ziv {
namespace {

constexpr int kLength = 16 * kMaxBlock;

std::vector<float> noise(int length, float level) {
  Random random(7);
  std::vector<float> x(length);
  for (float& v : x) v = level * (2.0f * random.next() / Random::kMax - 1.0f);
  return x;
}

// One span aimed and shaped whole.
void shapeSpan(Shaper& shaper, float* buf, int frames, int mode, float drive, float mix) {
  shaper.aim(frames, mode, drive, mix);
  shaper.render(buf, frames);
}

std::vector<float> shape(const std::vector<float>& in, int mode, float drive, float mix) {
  Shaper shaper;
  shaper.setSampleRate(44100.0f);
  shaper.reset();
  std::vector<float> out = in;
  const int length = static_cast<int>(in.size());
  for (int i = 0; i < length; i += kMaxBlock)
    shapeSpan(shaper, out.data() + i, std::min(kMaxBlock, length - i), mode, drive, mix);
  return out;
}

std::vector<float> sine(int length, double cyclesPerSample, double level) {
  std::vector<float> x(length);
  for (int i = 0; i < length; ++i)
    x[i] = static_cast<float>(level * std::sin(2.0 * kPi * cyclesPerSample * i));
  return x;
}

// The curves as the shaper documents them, at a drive: what a slowly moving input must follow.
double documentedCurve(int mode, double drive, double x) {
  switch (mode) {
    case kShaperSine:
      return std::sin(std::pow(4.0 * kPi, drive) * x);
    case kShaperCrush: {
      const double levels = 32.0 * std::pow(2.0 / 32.0, drive);
      const double u = levels * x;
      return (u - std::sin(2.0 * kPi * u) / (2.0 * kPi)) / levels;
    }
    case kShaperFold: {
      const double s = std::fmod(std::fmod(std::pow(8.0, drive) * x + 1.0, 4.0) + 4.0, 4.0);
      return s <= 2.0 ? s - 1.0 : 3.0 - s;
    }
    default: {
      const double u = std::clamp(std::pow(16.0, drive) * x, -1.5, 1.5);
      return u - 4.0 * u * u * u / 27.0;
    }
  }
}

// The lag (0..20 samples) at which the output best matches the input.
int bestLag(const std::vector<float>& in, const std::vector<float>& out) {
  int best = -1;
  double bestScore = -1.0;
  for (int lag = 0; lag <= 20; ++lag) {
    double score = 0.0;
    for (int i = 32; i < kLength; ++i) score += static_cast<double>(in[i - lag]) * out[i];
    if (score > bestScore) {
      bestScore = score;
      best = lag;
    }
  }
  return best;
}

TEST(Shaper, SevenSamplesLateInEveryModeAndInBypass) {
  const std::vector<float> in = noise(kLength, 0.5f);
  // Bypass (mix 0) is an exact delay line.
  const std::vector<float> bypass = shape(in, kShaperClip, 1.0f, 0.0f);
  for (int i = 0; i < Shaper::kLatency; ++i) EXPECT_EQ(bypass[i], 0.0f);
  for (int i = Shaper::kLatency; i < kLength; ++i) ASSERT_EQ(bypass[i], in[i - Shaper::kLatency]) << i;
  // The shaped paths are correlated best with the input 7 samples back, at low and full drive
  // (full drive with a quiet input, where every curve still rises monotonically).
  const std::vector<float> quiet = noise(kLength, 0.05f);
  for (int mode = kShaperClip; mode <= kShaperFold; ++mode) {
    EXPECT_EQ(bestLag(in, shape(in, mode, 0.0f, 1.0f)), Shaper::kLatency) << mode;
    EXPECT_EQ(bestLag(in, shape(in, mode, 0.5f, 0.5f)), Shaper::kLatency) << mode;
    EXPECT_EQ(bestLag(quiet, shape(quiet, mode, 1.0f, 1.0f)), Shaper::kLatency) << mode;
  }
}

TEST(Shaper, ResetClearsItsMemory) {
  Shaper shaper;
  shaper.setSampleRate(44100.0f);
  std::vector<float> buf = noise(kMaxBlock, 1.0f);
  shapeSpan(shaper, buf.data(), kMaxBlock, kShaperFold, 1.0f, 0.7f);
  shaper.reset();
  std::vector<float> silence(kMaxBlock, 0.0f);
  shapeSpan(shaper, silence.data(), kMaxBlock, kShaperFold, 1.0f, 0.7f);
  for (float v : silence) EXPECT_EQ(v, 0.0f);
}

// Slow signals pass the antialiasing unchanged: the output is the curve of the input 7 samples
// back, in every mode and at every drive. A quiet input keeps every double-rate step below the
// antiderivative quotient's precision limit, so it exercises the limits used there instead.
TEST(Shaper, SlowInputFollowsTheDocumentedCurves) {
  constexpr int kSlowLength = 36 * kMaxBlock;  // a whole period of 10 Hz
  for (double level : {1.0, 0.001}) {
    const std::vector<float> in = sine(kSlowLength, 10.0 / 44100.0, level);
    for (int mode = kShaperClip; mode <= kShaperFold; ++mode) {
      for (float drive : {0.0f, 0.5f, 1.0f}) {
        const std::vector<float> out = shape(in, mode, drive, 1.0f);
        // The fold's corners are rounded by the band limit; the other curves are smooth.
        const double tolerance = (mode == kShaperFold ? 5e-3 : 5e-4) * level;
        double worst = 0.0;
        for (int i = Shaper::kLatency + 32; i < kSlowLength; ++i) {
          const double expected = documentedCurve(mode, drive, in[i - Shaper::kLatency]);
          worst = std::max(worst, std::fabs(out[i] - expected));
        }
        EXPECT_LT(worst, tolerance) << "mode " << mode << " drive " << drive << " level " << level;
      }
    }
  }
}

// Small signals, where every curve but the crusher's is a straight line at drive 0, come through
// the wet path at their level and exactly in phase with the dry path up to 10 kHz, at full and
// half mix (no comb filtering between the two).
TEST(Shaper, SmallSignalsPassFlatAndInPhase) {
  constexpr int kToneLength = 32 * kMaxBlock;
  for (double hz : {200.0, 2500.0, 6000.0, 10000.0}) {
    const double w = 2.0 * kPi * hz / 44100.0;
    const std::vector<float> in = sine(kToneLength, hz / 44100.0, 0.01);
    for (int mode : {kShaperClip, kShaperSine, kShaperFold}) {
      for (float mix : {1.0f, 0.5f}) {
        const std::vector<float> out = shape(in, mode, 0.0f, mix);
        // Project onto the input's sine and cosine 7 samples back.
        double inPhase = 0.0, quadrature = 0.0;
        const int start = 8 * kMaxBlock;
        for (int i = start; i < kToneLength; ++i) {
          inPhase += out[i] * std::sin(w * (i - Shaper::kLatency));
          quadrature += out[i] * std::cos(w * (i - Shaper::kLatency));
        }
        const double scale = 2.0 / (0.01 * (kToneLength - start));
        const double gainDb = 20.0 * std::log10(std::hypot(inPhase, quadrature) * scale);
        const double phaseDegrees = std::atan2(quadrature, inPhase) * 180.0 / kPi;
        EXPECT_NEAR(gainDb, 0.0, 0.6) << hz << " Hz, mode " << mode << ", mix " << mix;
        EXPECT_NEAR(phaseDegrees, 0.0, 1.0) << hz << " Hz, mode " << mode << ", mix " << mix;
      }
    }
  }
}

// Absurd input levels (a broken filter upstream) keep the output finite, and the curves that
// saturate or fold keep it within a little over full scale.
TEST(Shaper, ExtremeInputStaysFiniteAndBounded) {
  std::vector<float> in(4 * kMaxBlock);
  for (int i = 0; i < static_cast<int>(in.size()); ++i) {
    const float level = i < 2 * kMaxBlock ? 1e30f : 3e5f;
    in[i] = (i % 3 == 0 ? -level : level) * (1.0f + 0.001f * i);
  }
  for (int mode = kShaperClip; mode <= kShaperFold; ++mode) {
    for (float drive : {0.0f, 1.0f}) {
      const std::vector<float> out = shape(in, mode, drive, 1.0f);
      for (int i = 0; i < static_cast<int>(out.size()); ++i) {
        ASSERT_TRUE(std::isfinite(out[i])) << "mode " << mode << " drive " << drive << " at " << i;
        if (mode != kShaperCrush) {
          ASSERT_LT(std::fabs(out[i]), 2.0f) << "mode " << mode << " at " << i;
        }
      }
    }
  }
}

// A full-scale sine at full drive whose period is 41 / cycles samples: every harmonic lies on a
// multiple of cycles in the 41-point spectrum of one period, any other bin holds only aliases.
// Their power relative to the harmonics', in dB.
double aliasRatioDb(int mode, int cycles) {
  constexpr int kPeriod = 41;
  const std::vector<float> out = shape(sine(40 * kMaxBlock, cycles / 41.0, 1.0), mode, 1.0f, 1.0f);
  const int span = kPeriod * 100;
  const int start = static_cast<int>(out.size()) - span;
  double harmonics = 0.0, aliases = 0.0;
  for (int bin = 1; bin <= kPeriod / 2; ++bin) {
    double re = 0.0, im = 0.0;
    for (int i = 0; i < span; ++i) {
      re += out[start + i] * std::cos(2.0 * kPi * bin * i / kPeriod);
      im += out[start + i] * std::sin(2.0 * kPi * bin * i / kPeriod);
    }
    (bin % cycles == 0 ? harmonics : aliases) += re * re + im * im;
  }
  return 10.0 * std::log10(aliases / harmonics);
}

// Notes near 96 and 103 (2151 Hz and 3227 Hz at 44.1 kHz) through every curve at full drive:
// the aliases over the whole band stay 40 dB below the harmonics.
TEST(Shaper, HighNotesAliasLittleAtFullDrive) {
  for (int cycles : {2, 3}) {
    for (int mode = kShaperClip; mode <= kShaperFold; ++mode) {
      EXPECT_LT(aliasRatioDb(mode, cycles), -40.0) << "mode " << mode << ", " << cycles << " cycles in 41";
    }
  }
}

struct ShaperRig : testing::MonoRig<Shaper> {
  static constexpr bool kHoldsTargets = true;
  void aim(int frames, Random& r) {
    const int mode = r.next() % 6 - 1;  // -1 and 4 lie outside the modes
    const float drive = testing::uniform(r, -0.1f, 1.1f);
    const float mix = r.next() % 4 == 0 ? 0.0f : testing::uniform(r, 0.0f, 1.0f);
    unit.aim(frames, mode, drive, mix);
  }
};

// Loud, slow, dying and quiet input through every mode, switched, bypassed and ramped at random,
// cut anywhere: the same samples as whole spans. The input's level and steps move across the
// thresholds of the quiet-input paths: full-scale noise; a slow full-scale sine, whose steps
// narrow at its crests; noise decaying to 1e-9, then silence; bursts of noise over a whisper.
TEST(Shaper, SameSamplesWhateverTheSplitOfItsSpans) {
  constexpr int kQuarter = 128 * kMaxBlock;
  std::vector<float> in = noise(4 * kQuarter, 1.0f);
  const std::vector<float> slow = sine(kQuarter, 20.0 / 44100.0, 1.0);
  std::copy(slow.begin(), slow.end(), in.begin() + kQuarter);
  for (int i = 0; i < kQuarter; ++i) {
    in[2 * kQuarter + i] *= i < 3 * kQuarter / 4 ? std::pow(1e-9f, i / (0.75f * kQuarter)) : 0.0f;
    in[3 * kQuarter + i] *= i / kMaxBlock % 8 == 0 ? 0.3f : 1e-6f;
  }
  ShaperRig rig;
  EXPECT_TRUE(testing::rendersTheSameWhateverTheCuts(rig, {in, std::vector<float>(in.size())}));
}

}  // namespace
}  // namespace ziv
