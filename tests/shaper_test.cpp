// The shaper's fixed latency in every mode and in bypass, and its reset.
#include "engine/shaper.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "engine/dsp.h"
#include "engine/random.h"

namespace ziv {
namespace {

constexpr int kLength = 16 * kMaxBlock;

std::vector<float> noise(int length, float level) {
  Random random(7);
  std::vector<float> x(length);
  for (float& v : x) v = level * (2.0f * random.next() / Random::kMax - 1.0f);
  return x;
}

std::vector<float> shape(const std::vector<float>& in, int mode, float drive, float mix) {
  Shaper shaper;
  shaper.setSampleRate(44100.0f);
  shaper.reset();
  std::vector<float> out = in;
  for (int i = 0; i < kLength; i += kMaxBlock) shaper.render(out.data() + i, kMaxBlock, mode, drive, mix);
  return out;
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
  shaper.render(buf.data(), kMaxBlock, kShaperFold, 1.0f, 0.7f);
  shaper.reset();
  std::vector<float> silence(kMaxBlock, 0.0f);
  shaper.render(silence.data(), kMaxBlock, kShaperFold, 1.0f, 0.7f);
  for (float v : silence) EXPECT_EQ(v, 0.0f);
}

}  // namespace
}  // namespace ziv
