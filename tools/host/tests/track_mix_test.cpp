// The multi-track mixer (with a stand-in job runner, so no plug-in is needed), the mastering limiter
// and loudness normalisation.
#include "tools/host/track_mix.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tools/host/loudness.h"
#include "tools/host/peak_limiter.h"

namespace vrnhost {
namespace {

constexpr int kRate = 48000;

MidiTrack track(const std::string& name, int volume, bool notes) {
  MidiTrack t;
  t.name = name;
  if (volume >= 0) t.sequence.messages.push_back({0.0, {0xB0, 7, static_cast<std::uint8_t>(volume)}});
  if (notes) {
    t.sequence.messages.push_back({0.5, {0x90, 60, 100}});
    t.sequence.messages.push_back({1.0, {0x80, 60, 0}});
  }
  return t;
}

// A stand-in plug-in: every sample is 0.1, and the job it was given is kept.
struct ConstantRunner {
  std::vector<RenderJob> jobs;
  JobRunner runner() {
    return [this](const RenderJob& job, RenderResult& result, std::string&) {
      jobs.push_back(job);
      result.samples.assign(static_cast<std::size_t>(job.frames) * 2, 0.1f);
      result.pluginCpuSeconds = 0.5;
      return true;
    };
  }
};

TEST(TrackMix, EachTrackWithNotesPlaysItsOwnProgramThroughItsFader) {
  RenderJob job;
  job.sampleRate = kRate;
  job.frames = 100;
  job.program = 7;
  const std::vector<MidiTrack> tracks = {track("", -1, false), track("PAD - A", 127, true),
                                         track("BASS - B", 64, true), track("LEAD - C", -1, true)};
  ConstantRunner stand;
  RenderResult mix;
  std::vector<std::string> programs;
  std::string error;
  ASSERT_TRUE(renderTrackMix(job, tracks, stand.runner(), mix, programs, error)) << error;
  EXPECT_EQ(programs, (std::vector<std::string>{"PAD - A", "BASS - B", "LEAD - C"}))
      << "the tempo track is skipped";
  ASSERT_EQ(stand.jobs.size(), 3u);
  EXPECT_EQ(stand.jobs[1].programName, "BASS - B");
  EXPECT_EQ(stand.jobs[1].program, -1) << "the track's name chooses the program";
  EXPECT_EQ(stand.jobs[1].events.size(), 3u);
  EXPECT_EQ(stand.jobs[1].events[1].frame, kRate / 2);
  // Faders: 127 and no volume are unity, 64 is 40 log10(64/127) = -11.9 dB.
  const double expected = 0.1 * (2.0 + std::pow(64.0 / 127.0, 2.0));
  ASSERT_EQ(mix.samples.size(), 200u);
  EXPECT_NEAR(mix.samples[0], expected, 1e-6);
  EXPECT_NEAR(mix.samples[199], expected, 1e-6);
  EXPECT_DOUBLE_EQ(mix.pluginCpuSeconds, 1.5);
}

TEST(TrackMix, RefusesUnnamedTracksAndFilesWithoutNotes) {
  RenderJob job;
  job.frames = 10;
  ConstantRunner stand;
  RenderResult mix;
  std::vector<std::string> programs;
  std::string error;
  EXPECT_FALSE(renderTrackMix(job, {track("PAD - A", -1, true), track("", -1, true)}, stand.runner(), mix,
                              programs, error));
  EXPECT_EQ(error, "track 2 has notes but no name to choose its program by");
  EXPECT_FALSE(renderTrackMix(job, {track("PAD - A", 100, false)}, stand.runner(), mix, programs, error));
  EXPECT_EQ(error, "the MIDI file has no track with notes");
}

// One second of a 440 Hz sine at `level` on both channels, with a short burst at `burst` in the middle.
std::vector<float> sineWithBurst(float level, float burst) {
  std::vector<float> x(2 * kRate);
  for (int i = 0; i < kRate; ++i) {
    const float amplitude = (i >= kRate / 2 && i < kRate / 2 + 100) ? burst : level;
    x[2 * i] = x[2 * i + 1] = amplitude * static_cast<float>(std::sin(2.0 * M_PI * 440.0 * i / kRate));
  }
  return x;
}

TEST(PeakLimiter, HoldsPeaksAtTheCeilingAndLeavesQuietPassagesAlone) {
  std::vector<float> x = sineWithBurst(0.1f, 4.0f);
  const std::vector<float> original = x;
  limitPeaks(x, kRate, -1.0);
  EXPECT_LE(samplePeakDb(x), -1.0 + 1e-6);
  EXPECT_GT(samplePeakDb(x), -1.5) << "the burst is brought down to the ceiling, not far below it";
  for (int i = 0; i < kRate / 4; ++i) ASSERT_EQ(x[2 * i], original[2 * i]) << "frame " << i;
  // The gain (output over input, read away from zero crossings) falls over the 5 ms look-ahead,
  // never in a step: at most about 1/240 per frame at 48 kHz.
  double steepest = 0.0, previousGain = 1.0;
  std::size_t previousFrame = 0;
  for (std::size_t frame = 0; frame < original.size() / 2; ++frame) {
    if (std::fabs(original[2 * frame]) < 0.05f) continue;
    const double gain = x[2 * frame] / original[2 * frame];
    if (frame > previousFrame)
      steepest = std::max(steepest, std::fabs(gain - previousGain) / (frame - previousFrame));
    previousGain = gain;
    previousFrame = frame;
  }
  EXPECT_LT(steepest, 0.005) << "the gain moves without clicks";
}

TEST(Loudness, NormalisingReachesTheTargetWithinTheCeiling) {
  std::vector<float> x = sineWithBurst(0.02f, 0.5f);
  normaliseLoudness(x, kRate, -14.0, -1.0);
  EXPECT_NEAR(integratedLoudness(x, 2, kRate), -14.0, 0.1);
  EXPECT_LE(samplePeakDb(x), -1.0 + 1e-6);
  std::vector<float> silence(2 * kRate, 0.0f);
  normaliseLoudness(silence, kRate, -14.0, -1.0);
  EXPECT_EQ(samplePeakDb(silence), -INFINITY) << "silence stays silent";
}

}  // namespace
}  // namespace vrnhost
