// The filter element against the cookbook's responses, its clamp, restart fade, silence
// test and stability, and the voice filter's control mapping and vowel formants; and the
// element, the voice filter and the noise oscillator (which runs an element) rendering the same
// whatever pieces their aimed spans are cut into.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "engine/dsp.h"
#include "engine/filter_element.h"
#include "engine/oscillators/noise_oscillator.h"
#include "engine/random.h"
#include "engine/voice_filter.h"
#include "span_split.h"

namespace ziv {
namespace {

constexpr float kRate = 44100.0f;
constexpr int kSettle = 8192;    // samples before measuring
constexpr int kMeasure = 44100;  // one second: whole cycles of every integer frequency
constexpr double kPiD = 3.14159265358979323846;

// One span aimed and rendered in one call, as the engine renders an undivided span.
void renderSpan(FilterElement& e, float* buf, int frames, int shape, float freqHz, float q, float gain,
                float shelf = 1.0f) {
  e.aim(frames, shape, freqHz, q, gain, shelf);
  e.render(buf, frames);
}

void renderSpan(VoiceFilter& v, float* buf, int frames, const VoiceFilterInput& in) {
  v.aim(frames, in);
  v.render(buf, frames);
}

// Runs a unit sine of freqHz through `process` (in blocks of kMaxBlock) and returns the
// output's amplitude at that frequency after settling.
template <typename Process>
double sineGain(double freqHz, Process process) {
  std::vector<float> buf(kSettle + kMeasure);
  for (size_t i = 0; i < buf.size(); ++i)
    buf[i] = static_cast<float>(std::sin(2.0 * kPiD * freqHz * i / kRate));
  for (size_t i = 0; i < buf.size(); i += kMaxBlock)
    process(buf.data() + i, static_cast<int>(std::min<size_t>(kMaxBlock, buf.size() - i)));
  double s = 0.0, c = 0.0;
  for (int i = 0; i < kMeasure; ++i) {
    const double phase = 2.0 * kPiD * freqHz * (kSettle + i) / kRate;
    s += buf[kSettle + i] * std::sin(phase);
    c += buf[kSettle + i] * std::cos(phase);
  }
  return 2.0 * std::hypot(s, c) / kMeasure;
}

double elementGain(int shape, double freqHz, float cutoff, float q, float gain, float shelf = 1.0f) {
  FilterElement e;
  e.setSampleRate(kRate);
  return sineGain(freqHz, [&](float* b, int n) { renderSpan(e, b, n, shape, cutoff, q, gain, shelf); });
}

// The cookbook's published properties at DC, the cutoff and Nyquist.
TEST(FilterElement, MatchesCookbookAtCharacteristicFrequencies) {
  const float f0 = 1000.0f, q = 3.0f, g = 0.8f, a = 1.5f;
  const double tol = 0.01;
  // Low-pass: gain at DC, Q x gain at the cutoff; also for the shapes that fall back to it.
  for (int shape : {0, 3, 7, -1}) {
    EXPECT_NEAR(elementGain(shape, 20.0, f0, q, g), g, tol) << shape;
    EXPECT_NEAR(elementGain(shape, f0, f0, q, g), q * g, tol * q) << shape;
  }
  // High-pass: Q x gain at the cutoff, gain far above.
  EXPECT_NEAR(elementGain(1, f0, f0, q, g), q * g, tol * q);
  EXPECT_NEAR(elementGain(1, 20000.0, f0, q, g), g, tol);
  // Band-passes: 0 dB peak, and peak Q with constant skirt.
  EXPECT_NEAR(elementGain(2, f0, f0, q, g), g, tol);
  EXPECT_NEAR(elementGain(4, f0, f0, q, g), q * g, tol * q);
  // Shelves: A^2 at the shelved end, 1 at the other, A at the corner (all times the gain).
  EXPECT_NEAR(elementGain(5, 10.0, f0, 0.707f, g, a), a * a * g, tol);
  EXPECT_NEAR(elementGain(5, 20000.0, f0, 0.707f, g, a), g, tol);
  EXPECT_NEAR(elementGain(5, f0, f0, 0.707f, g, a), a * g, tol);
  EXPECT_NEAR(elementGain(6, 20000.0, f0, 0.707f, g, a), a * a * g, tol);
  EXPECT_NEAR(elementGain(6, 10.0, f0, 0.707f, g, a), g, tol);
  EXPECT_NEAR(elementGain(6, f0, f0, 0.707f, g, a), a * g, tol);
}

// Away from the characteristic points: the magnitude of the cookbook transfer function.
TEST(FilterElement, MatchesCookbookMagnitudeAcrossTheBand) {
  const double f0 = 2000.0, q = 1.5;
  const double w0 = 2.0 * kPiD * f0 / kRate, alpha = std::sin(w0) / (2.0 * q), cw = std::cos(w0);
  const double a[3] = {1.0 + alpha, -2.0 * cw, 1.0 - alpha};
  const double lp[3] = {(1.0 - cw) / 2.0, 1.0 - cw, (1.0 - cw) / 2.0};
  const double hp[3] = {(1.0 + cw) / 2.0, -(1.0 + cw), (1.0 + cw) / 2.0};
  const double bp[3] = {alpha, 0.0, -alpha};
  auto magnitude = [&](const double* b, double f) {
    const double w = 2.0 * kPiD * f / kRate;
    auto eval = [w](const double* c, double& re, double& im) {
      re = c[0] + c[1] * std::cos(w) + c[2] * std::cos(2.0 * w);
      im = -c[1] * std::sin(w) - c[2] * std::sin(2.0 * w);
    };
    double nr, ni, dr, di;
    eval(b, nr, ni);
    eval(a, dr, di);
    return std::hypot(nr, ni) / std::hypot(dr, di);
  };
  for (double f : {150.0, 900.0, 3100.0, 7000.0, 15000.0}) {
    EXPECT_NEAR(elementGain(0, f, f0, q, 1.0f), magnitude(lp, f), 2e-3) << f;
    EXPECT_NEAR(elementGain(1, f, f0, q, 1.0f), magnitude(hp, f), 2e-3) << f;
    EXPECT_NEAR(elementGain(2, f, f0, q, 1.0f), magnitude(bp, f), 2e-3) << f;
  }
}

// Frequencies outside [8 Hz, 0.499 rate] behave exactly as the nearest limit.
TEST(FilterElement, ClampsCutoff) {
  auto run = [](float freq) {
    FilterElement e;
    e.setSampleRate(kRate);
    std::vector<float> buf(512);
    for (size_t i = 0; i < buf.size(); ++i) buf[i] = (i % 37 < 18) ? 1.0f : -1.0f;
    for (int i = 0; i < 512; i += kMaxBlock) renderSpan(e, buf.data() + i, kMaxBlock, 0, freq, 2.0f, 1.0f);
    return buf;
  };
  auto maxDifference = [](const std::vector<float>& a, const std::vector<float>& b) {
    float d = 0.0f;
    for (size_t i = 0; i < a.size(); ++i) d = std::max(d, std::fabs(a[i] - b[i]));
    return d;
  };
  EXPECT_EQ(run(0.5f), run(8.0f));
  EXPECT_EQ(run(-100.0f), run(8.0f));
  EXPECT_LT(maxDifference(run(40000.0f), run(0.499f * kRate)), 1e-5f);
  EXPECT_GT(maxDifference(run(40000.0f), run(0.49f * kRate)), 1e-3f);
  EXPECT_GT(maxDifference(run(9.0f), run(8.0f)), 1e-4f);
}

// After a reset the output starts as the dry input and becomes, from sample 20 on, exactly the
// filter's output from cleared history; the blend itself has no jumps.
TEST(FilterElement, ResetFadesOutTheOldRingingWithoutClick) {
  std::vector<float> input(kMaxBlock);
  for (size_t i = 0; i < input.size(); ++i) input[i] = static_cast<float>(0.8 * std::sin(0.05 * i + 1.0));
  FilterElement restarted, continued, fresh, quietThenReset;
  for (FilterElement* e : {&restarted, &continued, &fresh, &quietThenReset}) e->setSampleRate(kRate);
  // Loud, ringing history for two of them; the same block of silence for the last.
  std::vector<float> loud(kMaxBlock, 5.0f), quiet(kMaxBlock, 0.0f), ignored = loud;
  renderSpan(restarted, loud.data(), kMaxBlock, 0, 300.0f, 8.0f, 1.0f);
  renderSpan(continued, ignored.data(), kMaxBlock, 0, 300.0f, 8.0f, 1.0f);
  renderSpan(quietThenReset, quiet.data(), kMaxBlock, 0, 300.0f, 8.0f, 1.0f);
  restarted.reset();
  quietThenReset.reset();

  std::vector<float> a = input, c = input, f = input, q = input;
  renderSpan(restarted, a.data(), kMaxBlock, 0, 300.0f, 8.0f, 1.0f);
  renderSpan(continued, c.data(), kMaxBlock, 0, 300.0f, 8.0f, 1.0f);
  renderSpan(fresh, f.data(), kMaxBlock, 0, 300.0f, 8.0f, 1.0f);
  renderSpan(quietThenReset, q.data(), kMaxBlock, 0, 300.0f, 8.0f, 1.0f);

  EXPECT_NEAR(a[0], c[0], 1e-4f) << "the output goes on where the old filter was";
  for (int i = FilterElement::kCrossfadeSamples; i < kMaxBlock; ++i) EXPECT_FLOAT_EQ(a[i], f[i]) << i;
  for (int i = 0; i < kMaxBlock; ++i)
    EXPECT_EQ(q[i], f[i]) << "a filter at rest starts from rest, no dry leak";
  // The old ringing leaves in a straight 20-sample fade: no step beyond the fade's own slope
  // plus the signal's.
  float peak = 0.0f, maxStep = 0.0f, signalStep = 0.0f;
  for (int i = 1; i < 40; ++i) {
    peak = std::max(peak, std::fabs(c[i]));
    maxStep = std::max(maxStep, std::fabs(a[i] - a[i - 1]));
    signalStep = std::max(signalStep, std::max(std::fabs(c[i] - c[i - 1]), std::fabs(f[i] - f[i - 1])));
  }
  EXPECT_LT(maxStep, peak / FilterElement::kCrossfadeSamples + 2.0f * signalStep);
}

TEST(FilterElement, SilenceFollowsTheLastTwoOutputs) {
  FilterElement e;
  e.setSampleRate(kRate);
  EXPECT_TRUE(e.isSilent());
  std::vector<float> buf(kMaxBlock, 0.5f);
  renderSpan(e, buf.data(), kMaxBlock, 0, 1000.0f, 10.0f, 1.0f);
  EXPECT_FALSE(e.isSilent());
  // A resonant tail decays below the threshold within a second and stays there.
  int blocks = 0;
  do {
    std::fill(buf.begin(), buf.end(), 0.0f);
    renderSpan(e, buf.data(), kMaxBlock, 0, 1000.0f, 10.0f, 1.0f);
  } while (!e.isSilent() && ++blocks < 400);
  EXPECT_LT(blocks, 400);
  EXPECT_LE(std::fabs(buf[kMaxBlock - 1]), kSilence);
  // A single loud sample at the end of a block is not silence.
  buf.assign(kMaxBlock, 0.0f);
  buf[kMaxBlock - 1] = 1.0f;
  renderSpan(e, buf.data(), kMaxBlock, 0, 1000.0f, 10.0f, 1.0f);
  EXPECT_FALSE(e.isSilent());
  e.reset();
  EXPECT_TRUE(e.isSilent());
}

// Jumping settings every block (shape, frequency across the whole range, full resonance) stays
// finite and bounded: the slew and the coefficient ramps keep the recursion stable.
TEST(FilterElement, StaysStableUnderRandomJumps) {
  FilterElement e;
  e.setSampleRate(kRate);
  unsigned seed = 12345;
  auto next = [&seed]() {
    seed = seed * 1664525u + 1013904223u;
    return (seed >> 8) / 16777216.0f;
  };
  std::vector<float> buf(kMaxBlock);
  float peak = 0.0f;
  for (int block = 0; block < 2000; ++block) {
    for (float& x : buf) x = 2.0f * next() - 1.0f;
    const int shape = static_cast<int>(next() * 7.0f);
    renderSpan(e, buf.data(), 1 + static_cast<int>(next() * (kMaxBlock - 1)), shape,
               20000.0f * next() * next(), 0.5f + 30.0f * next(), 1.0f, 0.1f + 2.0f * next());
    for (float y : buf) {
      ASSERT_TRUE(std::isfinite(y));
      peak = std::max(peak, std::fabs(y));
    }
  }
  EXPECT_LT(peak, 200.0f);
}

// The frequency moves by at most 10 pi rad/s of w0 (a jump from 100 Hz to 10 kHz takes about
// 45 ms).
TEST(FilterElement, SlewsLargeFrequencyJumps) {
  FilterElement e;
  e.setSampleRate(kRate);
  std::vector<float> buf(kMaxBlock, 0.0f);
  renderSpan(e, buf.data(), kMaxBlock, 2, 100.0f, 5.0f, 1.0f);
  FilterElement oneBlock = e;
  renderSpan(oneBlock, buf.data(), kMaxBlock, 2, 10000.0f, 5.0f, 1.0f);
  // One block after the jump the element sits at 100 Hz plus one block's slew (740 Hz), far from
  // its target: it filters exactly like an element started there.
  const double w = 2.0 * kPiD * 100.0 / kRate + 10.0 * kPiD * kMaxBlock / kRate;
  const double reachedHz = w * kRate / (2.0 * kPiD);
  EXPECT_LT(reachedHz, 1000.0);
  std::vector<float> probe(kMaxBlock);
  for (int i = 0; i < kMaxBlock; ++i) probe[i] = (i == 0) ? 1.0f : 0.0f;
  FilterElement a = oneBlock, b;
  b.setSampleRate(kRate);
  renderSpan(b, buf.data(), kMaxBlock, 2, static_cast<float>(reachedHz), 5.0f, 1.0f);
  // Both now filter the same impulse with the same coefficients once their targets hold still.
  std::vector<float> pa = probe, pb = probe;
  renderSpan(a, pa.data(), kMaxBlock, 2, static_cast<float>(reachedHz), 5.0f, 1.0f);
  renderSpan(b, pb.data(), kMaxBlock, 2, static_cast<float>(reachedHz), 5.0f, 1.0f);
  for (int i = 0; i < kMaxBlock; ++i) EXPECT_NEAR(pa[i], pb[i], 1e-5) << i;
}

// ---- Voice filter ----

TEST(VoiceFilter, MapsControlsToFrequencyAndResonance) {
  VoiceFilterInput in;
  in.cutoff = 0.5f;
  in.pitch = 60.0f;
  EXPECT_NEAR(VoiceFilter::cutoffHz(in), 640.0f, 0.01f);
  in.cutoff = 0.0f;
  EXPECT_NEAR(VoiceFilter::cutoffHz(in), 20.0f, 1e-3f);
  in.cutoff = 0.6f;  // one octave per 0.1
  EXPECT_NEAR(VoiceFilter::cutoffHz(in), 1280.0f, 0.02f);
  in.keyTracking = 1.0f;
  in.pitch = 72.0f;  // an octave above the reference follows one to one
  EXPECT_NEAR(VoiceFilter::cutoffHz(in), 2560.0f, 0.05f);
  in.keyTracking = -1.0f;
  EXPECT_NEAR(VoiceFilter::cutoffHz(in), 640.0f, 0.01f);
  in.keyTracking = 0.0f;
  in.envAmount = 1.0f;
  in.envLevel = 0.5f;  // half of 8 octaves
  EXPECT_NEAR(VoiceFilter::cutoffHz(in), 1280.0f * 16.0f, 0.5f);
  in.envAmount = -0.25f;
  in.envLevel = 1.0f;
  EXPECT_NEAR(VoiceFilter::cutoffHz(in), 320.0f, 0.01f);

  EXPECT_NEAR(VoiceFilter::resonance(0.0f), 0.70710678f, 1e-6f);
  EXPECT_NEAR(VoiceFilter::resonance(1.0f), 25.0f, 1e-4f);
  EXPECT_LT(VoiceFilter::resonance(0.3f), VoiceFilter::resonance(0.6f));
}

double voiceGain(const VoiceFilterInput& in, double f) {
  VoiceFilter v;
  v.setSampleRate(kRate);
  v.reset();
  return sineGain(f, [&](float* b, int n) { renderSpan(v, b, n, in); });
}

TEST(VoiceFilter, LowPassIsButterworthAtZeroQAndRingsAtFullQ) {
  VoiceFilterInput in;
  in.mode = kFilterLowPass;
  in.cutoff = 0.5f;  // 640 Hz
  EXPECT_NEAR(voiceGain(in, 640.0), std::sqrt(0.5), 0.01);
  EXPECT_NEAR(voiceGain(in, 50.0), 1.0, 0.01);
  in.q = 1.0f;
  const double passBand = voiceGain(in, 50.0);
  const double peak = voiceGain(in, 640.0);
  EXPECT_GT(peak / passBand, 20.0);  // a clear resonant peak (+26 dB over the pass band)
  EXPECT_LT(peak, 6.0);              // but the level does not explode

  // High-pass and band-pass put their emphasis where they should.
  in.q = 0.0f;
  in.mode = kFilterHighPass;
  EXPECT_LT(voiceGain(in, 80.0), 0.05);
  EXPECT_NEAR(voiceGain(in, 8000.0), 1.0, 0.01);
  in.mode = kFilterBandPass;
  EXPECT_NEAR(voiceGain(in, 640.0), 1.0, 0.01);
  EXPECT_LT(voiceGain(in, 80.0), 0.2);
}

// A saw through full resonance with the cutoff on a harmonic stays finite and bounded.
// The peak of a 110 Hz saw through a voice filter at full Q over 700 blocks of `frames`;
// `settle(block, input)` sets each block's mode and cutoff.
template <typename Settle>
float sawPeakAtFullQ(int frames, Settle settle) {
  VoiceFilter v;
  v.setSampleRate(kRate);
  v.reset();
  VoiceFilterInput in;
  in.q = 1.0f;
  float peak = 0.0f;
  std::vector<float> buf(frames);
  double phase = 0.0;
  for (int block = 0; block < 700; ++block) {
    settle(block, in);
    for (float& x : buf) {
      x = static_cast<float>(2.0 * phase - 1.0);
      phase = std::fmod(phase + 110.0 / kRate, 1.0);
    }
    renderSpan(v, buf.data(), frames, in);
    for (float y : buf) {
      if (!std::isfinite(y)) return INFINITY;
      peak = std::max(peak, std::fabs(y));
    }
  }
  return peak;
}

TEST(VoiceFilter, FullResonanceOnASawStaysBounded) {
  for (int mode = 0; mode < 4; ++mode) {
    const float peak = sawPeakAtFullQ(kMaxBlock, [mode](int block, VoiceFilterInput& in) {
      in.mode = mode;
      in.cutoff = 0.3f + 0.4f * static_cast<float>(block % 100) / 100.0f;
    });
    EXPECT_LT(peak, 20.0f) << mode;
    EXPECT_GT(peak, 0.05f) << mode;
  }
}

// Automation that flips VOX against another mode every block: the first element's resonance
// jumps between the first formant's and the cutoff's each time, which once ran away to infinity.
TEST(VoiceFilter, ModeFlipsEveryBlockAtFullQStayBounded) {
  for (int other = kFilterLowPass; other < kFilterVox; ++other) {
    for (int frames : {16, 64, kMaxBlock}) {
      for (float cutoff : {0.1f, 0.3f, 0.5f, 0.9f}) {
        for (int voxBlocks : {0, 1}) {  // VOX on even or on odd blocks
          const float peak = sawPeakAtFullQ(frames, [=](int block, VoiceFilterInput& in) {
            in.mode = block % 2 == voxBlocks ? kFilterVox : other;
            in.cutoff = cutoff;
          });
          EXPECT_LT(peak, 20.0f) << "mode " << other << ", " << frames << " frames, cutoff " << cutoff;
        }
      }
    }
  }
}

// With the cutoff on a vowel of the table, the response has local peaks at its formants.
TEST(VoiceFilter, VoxPeaksAtTheVowelFormants) {
  for (int vowel : {0, 3, 5, 9}) {
    const VoiceFilter::Vowel& v = VoiceFilter::kVowelTable[vowel];
    VoiceFilterInput in;
    in.mode = kFilterVox;
    in.cutoff = vowel / 9.0f;
    in.q = 1.0f / 3.0f;  // the table's own bandwidths
    EXPECT_NEAR(VoiceFilter::voxPosition(in), vowel / 9.0f, 1e-6f);
    for (int k = 0; k < 2; ++k) {
      const double f = v.frequency[k];
      const double atPeak = voiceGain(in, f);
      EXPECT_GT(atPeak, voiceGain(in, f * 1.12)) << v.name << " F" << k + 1;
      EXPECT_GT(atPeak, voiceGain(in, f / 1.12)) << v.name << " F" << k + 1;
    }
  }
}

// Moving between two vowels interpolates the formants geometrically, and Q narrows them.
TEST(VoiceFilter, VoxInterpolatesAndSharpens) {
  float f[3], q[3], g[3];
  const VoiceFilter::Vowel& a = VoiceFilter::kVowelTable[4];
  const VoiceFilter::Vowel& b = VoiceFilter::kVowelTable[5];
  VoiceFilter::voxFormants(4.5f / 9.0f, 1.0f / 3.0f, f, q, g);
  for (int k = 0; k < 3; ++k) EXPECT_NEAR(f[k], std::sqrt(a.frequency[k] * b.frequency[k]), 0.01f);
  float qSharp[3];
  VoiceFilter::voxFormants(4.5f / 9.0f, 1.0f, f, qSharp, g);
  for (int k = 0; k < 3; ++k) EXPECT_NEAR(qSharp[k], 4.0f * q[k], 1e-3f * q[k]);
  EXPECT_GT(g[0], 0.0f);
  EXPECT_LT(g[1], 0.0f);  // alternating signs
}

// ---- Aimed spans cut into pieces ----

using testing::uniform;

struct FilterElementRig : testing::MonoRig<FilterElement> {
  void aim(int frames, Random& r) {
    const int shape = -1 + r.next() % 9;
    const float freq = 22000.0f * uniform(r, 0, 1) * uniform(r, 0, 1);
    unit.aim(frames, shape, freq, uniform(r, 0.3f, 30.3f), uniform(r, 0, 2), uniform(r, 0.1f, 3.1f));
  }
  bool state() const { return unit.isSilent(); }
};

TEST(FilterElement, SpansRenderTheSameWhateverTheCuts) {
  FilterElementRig rig;
  EXPECT_TRUE(testing::rendersTheSameWhateverTheCuts(rig, testing::soundAndSilence()));
}

// Past its span's end an element holds the span's settings, exactly as if aimed there again (for
// a move within its frequency slew).
TEST(FilterElement, HoldsItsSettingsPastTheSpansEnd) {
  FilterElement once, again;
  for (FilterElement* e : {&once, &again}) {
    e->setSampleRate(kRate);
    std::vector<float> settle(kMaxBlock, 0.5f);
    renderSpan(*e, settle.data(), kMaxBlock, FilterElement::kLowPass, 1000.0f, 4.0f, 1.0f);
    e->aim(kMaxBlock / 2, FilterElement::kHighPass, 1001.0f, 0.5f, 0.7f);
  }
  std::vector<float> a(2 * kMaxBlock, 0.25f), b = a;
  once.render(a.data(), 2 * kMaxBlock);
  again.render(b.data(), kMaxBlock / 2);
  renderSpan(again, b.data() + kMaxBlock / 2, kMaxBlock + kMaxBlock / 2, FilterElement::kHighPass, 1001.0f,
             0.5f, 0.7f);
  EXPECT_EQ(a, b);
}

// Two channels through two elements each in one pass give the samples of four render calls:
// while the settings hold (the pass that runs the four side by side), while they ramp, after
// restarts (crossfades) and across any cut of a span.
TEST(FilterElement, StereoPairsRenderAsFourElements) {
  Random r(7);
  FilterElement apart[4], together[4];
  for (int e = 0; e < 4; ++e) apart[e].setSampleRate(kRate), together[e].setSampleRate(kRate);
  FilterElement* const togetherLeft[2] = {&together[0], &together[1]};
  FilterElement* const togetherRight[2] = {&together[2], &together[3]};
  const testing::SplitInput input = testing::soundAndSilence();
  std::vector<float> apartLeft = input.left, apartRight = input.right;
  std::vector<float> togetherLeftBuf = input.left, togetherRightBuf = input.right;
  float freq[4] = {}, q[4] = {}, factor[4] = {};
  int settled = 0;
  for (std::size_t done = 0; done < input.left.size();) {
    if (r.next() % 4 == 0) {
      // New settings (a ramp), else the same again (settled spans); now and then a restart.
      for (int e = 0; e < 4; ++e) {
        freq[e] = 20000.0f * uniform(r, 0, 1) * uniform(r, 0, 1);
        q[e] = uniform(r, 0.3f, 3.0f);
        factor[e] = uniform(r, 0.1f, 3.1f);
      }
      if (r.next() % 4 == 0)
        for (int e = 0; e < 4; ++e) apart[e].reset(), together[e].reset();
    } else {
      ++settled;
    }
    const int span = 1 + r.next() % kMaxBlock;
    for (int e = 0; e < 4; ++e) {
      const int shape = e % 2 == 0 ? FilterElement::kLowShelf : FilterElement::kHighShelf;
      apart[e].aim(span, shape, freq[e], q[e], 0.9f, factor[e]);
      together[e].aim(span, shape, freq[e], q[e], 0.9f, factor[e]);
    }
    // The span in up to three pieces, the last one running past its end.
    for (int left = span + r.next() % 8; left > 0 && done < input.left.size();) {
      const int piece = std::min({left, 1 + r.next() % span, static_cast<int>(input.left.size() - done)});
      for (int e = 0; e < 4; ++e) apart[e].render((e < 2 ? apartLeft : apartRight).data() + done, piece);
      FilterElement::renderStereoPairs(togetherLeft, togetherRight, togetherLeftBuf.data() + done,
                                       togetherRightBuf.data() + done, piece);
      done += piece;
      left -= piece;
    }
  }
  EXPECT_GT(settled, 100);
  EXPECT_EQ(apartLeft, togetherLeftBuf);
  EXPECT_EQ(apartRight, togetherRightBuf);
  for (int e = 0; e < 4; ++e) EXPECT_EQ(apart[e].isSilent(), together[e].isSilent());
}

struct VoiceFilterRig : testing::MonoRig<VoiceFilter> {
  void aim(int frames, Random& r) {
    VoiceFilterInput in;
    // VOX half of the time, so that it also starts and stops.
    in.mode = r.next() % 2 == 0 ? kFilterVox : -1 + r.next() % 6;
    in.cutoff = uniform(r, 0, 1);
    in.q = uniform(r, 0, 1);
    in.envAmount = uniform(r, -1, 1);
    in.envLevel = uniform(r, 0, 1);
    in.keyTracking = uniform(r, -1, 1);
    in.pitch = uniform(r, 20, 110);
    unit.aim(frames, in);
  }
  bool state() const { return unit.isSilent(); }
};

TEST(VoiceFilter, SpansRenderTheSameWhateverTheCuts) {
  VoiceFilterRig rig;
  EXPECT_TRUE(testing::rendersTheSameWhateverTheCuts(rig, testing::soundAndSilence()));
}

struct NoiseRig : testing::MonoRig<NoiseOscillator> {
  int silentAims = 0;  // spans aimed while the noise was silent
  void restart() { unit.start(1234); }
  void aim(int frames, Random& r) {
    silentAims += unit.isSilent();
    // Silent half of the time, so that spans are skipped as silent too.
    const float gain = r.next() % 2 == 0 ? 0.0f : uniform(r, 0, 1);
    unit.aim(frames, uniform(r, -40, 140), gain, uniform(r, 0, 1));
  }
  bool state() const { return unit.isSilent(); }
};

TEST(NoiseOscillator, SpansRenderTheSameWhateverTheCuts) {
  NoiseRig rig;
  EXPECT_TRUE(testing::rendersTheSameWhateverTheCuts(rig, testing::soundAndSilence()));
  EXPECT_GT(rig.silentAims, 0) << "the noise never fell silent";
}

}  // namespace
}  // namespace ziv
