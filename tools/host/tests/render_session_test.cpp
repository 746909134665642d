// Drives the stand-in plug-in through complete render sessions and reads back, from its audio,
// what the host delivered: event offsets across block boundaries, transport times, the order of
// host calls, programs and parameter settings.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "tools/host/render_session.h"

namespace vrnhost {
namespace {

// Note-ons at frames that fall at, just before and just after block boundaries for the tested
// block sizes, plus note-offs that must not show up as impulses.
RenderJob eventJob(int blockSize, bool zeroFrameCalls) {
  RenderJob job;
  job.pluginPath = FAKE_PLUGIN_PATH;
  job.sampleRate = 48000;
  job.blockSize = blockSize;
  job.tempo = 150.0;
  job.zeroFrameCalls = zeroFrameCalls;
  job.frames = 10000;
  int velocity = 10;
  for (std::int64_t frame : {0, 0, 63, 64, 100, 511, 512, 4095, 4096, 4097, 9999}) {
    job.events.push_back({frame, {0x90, 60, static_cast<std::uint8_t>(velocity)}});
    job.events.push_back({frame, {0x80, 60, 0}});
    velocity += 10;
  }
  return job;
}

std::vector<float> expectedLeft(const RenderJob& job) {
  std::vector<float> left(job.frames, 0.0f);
  for (const FrameMidi& event : job.events) {
    if (event.bytes[0] == 0x90) left[event.frame] += event.bytes[2] / 127.0f;
  }
  return left;
}

TEST(RenderSession, DeliversEveryEventAtItsFrameForAnyBlockSize) {
  for (int blockSize : {1, 64, 100, 512, 4096, 16384}) {
    for (bool zeroFrameCalls : {false, true}) {
      SCOPED_TRACE("block " + std::to_string(blockSize) + (zeroFrameCalls ? " with 0-frame calls" : ""));
      RenderJob job = eventJob(blockSize, zeroFrameCalls);
      RenderResult result;
      std::string error;
      ASSERT_TRUE(runRenderJob(job, result, error)) << error;
      ASSERT_EQ(result.frames, job.frames);
      ASSERT_EQ(result.samples.size(), static_cast<std::size_t>(job.frames) * 2);
      std::vector<float> expected = expectedLeft(job);
      for (std::int64_t i = 0; i < job.frames; ++i) {
        // NaN would mean the plug-in saw the host break the calling protocol.
        ASSERT_EQ(result.samples[2 * i], expected[i]) << "frame " << i;
      }
    }
  }
}

TEST(RenderSession, ReportsTransportAtEachBlockStart) {
  RenderJob job = eventJob(512, false);
  RenderResult result;
  std::string error;
  ASSERT_TRUE(runRenderJob(job, result, error)) << error;
  for (std::int64_t start = 0; start < job.frames; start += job.blockSize) {
    double beats = static_cast<double>(start) / job.sampleRate * job.tempo / 60.0;
    EXPECT_FLOAT_EQ(result.samples[2 * start + 1], static_cast<float>(beats)) << "block at " << start;
    const std::int64_t last = std::min<std::int64_t>(start + job.blockSize, job.frames) - 1;
    EXPECT_EQ(result.samples[2 * last + 1], result.samples[2 * start + 1]);
  }

  job.transportPlaying = false;
  ASSERT_TRUE(runRenderJob(job, result, error)) << error;
  EXPECT_EQ(result.samples[2 * 9999 + 1], 0.0f);
  EXPECT_EQ(transportAt(job, 4800).flags & vst2::kVstTransportPlaying, 0);
  job.transportPlaying = true;
  EXPECT_NE(transportAt(job, 4800).flags & vst2::kVstTransportPlaying, 0);
  EXPECT_DOUBLE_EQ(transportAt(job, 48000 * 4).barStartPos, 8.0);  // 10 beats at 150 BPM, bar 3 starts at 8
}

TEST(RenderSession, AppliesProgramThenSettingsByNameOrIndex) {
  RenderJob job;
  job.pluginPath = FAKE_PLUGIN_PATH;
  job.program = 2;
  job.settings = {{"  beta: TWO ", 0.25f}, {"0", 0.5f}};
  job.listParameters = true;
  RenderResult result;
  std::string error;
  ASSERT_TRUE(runRenderJob(job, result, error)) << error;
  ASSERT_EQ(result.parameters.size(), 3u);
  EXPECT_EQ(result.parameters[0].name, "Alpha");
  EXPECT_EQ(result.parameters[0].display, "0.500");
  EXPECT_EQ(result.parameters[1].name, "Beta: Two");
  EXPECT_EQ(result.parameters[1].display, "0.250");
  EXPECT_EQ(result.parameters[2].display, "P2");
  EXPECT_TRUE(result.samples.empty());
}

TEST(RenderSession, RejectsWhatThePluginDoesNotHave) {
  RenderJob job;
  job.pluginPath = FAKE_PLUGIN_PATH;
  RenderResult result;
  std::string error;

  job.settings = {{"Delta", 0.5f}};
  EXPECT_FALSE(runRenderJob(job, result, error));
  EXPECT_NE(error.find("unknown parameter 'Delta'"), std::string::npos) << error;

  job.settings = {{"3", 0.5f}};
  EXPECT_FALSE(runRenderJob(job, result, error));

  job.settings.clear();
  job.program = 4;
  EXPECT_FALSE(runRenderJob(job, result, error));
  EXPECT_NE(error.find("program 4"), std::string::npos) << error;
}

TEST(RenderSession, ExplainsFilesThatAreNoPlugins) {
  RenderJob job;
  RenderResult result;
  std::string error;
  job.pluginPath = "/nonexistent/plugin.so";
  EXPECT_FALSE(runRenderJob(job, result, error));
  EXPECT_NE(error.find("cannot load"), std::string::npos) << error;

  job.pluginPath = SHARED_LIBRARY_WITHOUT_ENTRY;
  EXPECT_FALSE(runRenderJob(job, result, error));
  EXPECT_NE(error.find("no VSTPluginMain"), std::string::npos) << error;
}

TEST(ParameterLookup, MatchesIndexOrNameButNothingElse) {
  std::vector<std::string> names = {"OSC 1: Gain", "FILTER 1: Cutoff", "10"};
  EXPECT_EQ(findParameter("1", names), 1);
  EXPECT_EQ(findParameter(" filter 1: cutoff", names), 1);
  EXPECT_EQ(findParameter("3", names), -1);  // indices win over names that look like numbers
  EXPECT_EQ(findParameter("FILTER 1", names), -1);
  EXPECT_EQ(findParameter("", names), -1);
  EXPECT_EQ(findParameter("99999999999", names), -1);
}

}  // namespace
}  // namespace vrnhost
