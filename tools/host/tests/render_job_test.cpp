// The job and result text forms are the contract between the Linux host and vrnhost.exe under
// wine: whatever one side writes, the other must read back unchanged, and damage must be caught.
#include <gtest/gtest.h>

#include <sstream>

#include "tools/host/render_job.h"

namespace vrnhost {
namespace {

RenderJob sampleJob() {
  RenderJob job;
  job.pluginPath = "Z:\\work\\build win\\VrnZIV.dll";
  job.sampleRate = 96000;
  job.blockSize = 4096;
  job.tempo = 133.3333333333;
  job.transportPlaying = false;
  job.zeroFrameCalls = true;
  job.program = 7;
  job.settings = {{"FILTER 1: Cutoff", 0.3f}, {"a=b", 1.0f}, {"23", 0.123456789f}};
  job.listParameters = true;
  job.frames = 1234567;
  job.events = {{0, {0x90, 60, 100}}, {99999, {0xE0, 0, 127}}, {1234566, {0xC0, 5, 0}}};
  return job;
}

TEST(RenderJobText, RoundTripsEveryField) {
  RenderJob job = sampleJob();
  std::stringstream text;
  writeJob(job, text);
  RenderJob back;
  std::string error;
  ASSERT_TRUE(readJob(text, back, error)) << error;
  EXPECT_EQ(back.pluginPath, job.pluginPath);
  EXPECT_EQ(back.sampleRate, job.sampleRate);
  EXPECT_EQ(back.blockSize, job.blockSize);
  EXPECT_EQ(back.tempo, job.tempo);  // exact: the two processes must compute the same song position
  EXPECT_EQ(back.transportPlaying, job.transportPlaying);
  EXPECT_EQ(back.zeroFrameCalls, job.zeroFrameCalls);
  EXPECT_EQ(back.program, job.program);
  ASSERT_EQ(back.settings.size(), 3u);
  EXPECT_EQ(back.settings[1].key, "a=b");
  EXPECT_EQ(back.settings[2].value, job.settings[2].value);
  EXPECT_EQ(back.listParameters, job.listParameters);
  EXPECT_EQ(back.frames, job.frames);
  ASSERT_EQ(back.events.size(), job.events.size());
  for (std::size_t i = 0; i < job.events.size(); ++i) {
    EXPECT_EQ(back.events[i].frame, job.events[i].frame);
    EXPECT_EQ(back.events[i].bytes, job.events[i].bytes);
  }
}

TEST(RenderJobText, ReadsWindowsLineEndings) {
  std::stringstream text;
  writeJob(sampleJob(), text);
  std::string crlf;
  for (char c : text.str()) crlf += c == '\n' ? std::string("\r\n") : std::string(1, c);
  std::istringstream in(crlf);
  RenderJob back;
  std::string error;
  ASSERT_TRUE(readJob(in, back, error)) << error;
  EXPECT_EQ(back.pluginPath, sampleJob().pluginPath);
  EXPECT_EQ(back.settings[0].key, "FILTER 1: Cutoff");
}

TEST(RenderJobText, RejectsDamagedJobsNamingTheLine) {
  const std::pair<std::string, std::string> cases[] = {
      {"", "not a vrnhost job"},
      {"vrnhost-job 1\nrate 44100\n", "without 'end'"},
      {"vrnhost-job 1\nrate 0\nend\n", "line 2"},
      {"vrnhost-job 1\nblock 12x\nend\n", "'block'"},
      {"vrnhost-job 1\nevent 0 144 60\nend\n", "'event'"},
      {"vrnhost-job 1\nevent 0 60 60 60\nend\n", "'event'"},   // data byte where a status belongs
      {"vrnhost-job 1\nevent -1 144 60 1\nend\n", "'event'"},  // before the start
      {"vrnhost-job 1\nset Cutoff\nend\n", "'set'"},
      {"vrnhost-job 1\nplaying 2\nend\n", "'playing'"},
      {"vrnhost-job 1\nvolume 11\nend\n", "unknown keyword 'volume'"},
  };
  for (const auto& [text, expected] : cases) {
    std::istringstream in(text);
    RenderJob job;
    std::string error;
    EXPECT_FALSE(readJob(in, job, error)) << text;
    EXPECT_NE(error.find(expected), std::string::npos) << "got: " << error;
  }
}

TEST(RenderResultText, RoundTripsParametersAndStats) {
  RenderResult result;
  result.frames = 441000;
  result.pluginCpuSeconds = 0.0123456789;
  result.codePath = "AVX2/FMA";
  result.parameters = {{0, "OSC 1: Waveform", "Saw"}, {25, "FILTER 1: Cutoff", "1.20 kHz"}, {3, "Empty", ""}};
  std::stringstream text;
  writeResultText(result, text);
  RenderResult back;
  std::string line;
  while (std::getline(text, line)) EXPECT_TRUE(readResultLine(line, back)) << line;
  EXPECT_EQ(back.frames, result.frames);
  EXPECT_EQ(back.pluginCpuSeconds, result.pluginCpuSeconds);
  EXPECT_EQ(back.codePath, "AVX2/FMA");
  ASSERT_EQ(back.parameters.size(), 3u);
  EXPECT_EQ(back.parameters[1].index, 25);
  EXPECT_EQ(back.parameters[1].display, "1.20 kHz");
  EXPECT_EQ(back.parameters[2].display, "");
  EXPECT_FALSE(readResultLine("wine: something else", back));
}

// Program and bank files cross to the Windows host as bytes in the job, and saved state comes
// back as bytes in the result; every byte value must survive.
TEST(RenderJobText, CarriesProgramFilesBothWays) {
  RenderJob job = sampleJob();
  job.loadKind = FxKind::kBank;
  for (int i = 0; i < 512; ++i) job.loadImage.push_back(static_cast<std::uint8_t>(i * 7));
  job.programName = "PAD - Warm = Pad ";
  job.saveKind = FxKind::kProgram;
  job.listPrograms = true;
  std::stringstream text;
  writeJob(job, text);
  RenderJob back;
  std::string error;
  ASSERT_TRUE(readJob(text, back, error)) << error;
  EXPECT_EQ(back.loadKind, FxKind::kBank);
  EXPECT_EQ(back.loadImage, job.loadImage);
  EXPECT_EQ(back.programName, job.programName);
  EXPECT_EQ(back.saveKind, FxKind::kProgram);
  EXPECT_TRUE(back.listPrograms);

  for (const char* damaged : {"load fxz 00", "load fxb 0", "load fxb 0g", "save", "program-name "}) {
    std::istringstream in(std::string("vrnhost-job 1\n") + damaged + "\nend\n");
    EXPECT_FALSE(readJob(in, back, error)) << damaged;
  }

  RenderResult result;
  result.savedImage = job.loadImage;
  result.programNames = {"LEAD - One", "", "Init Patch"};
  writeResultText(result, text);
  RenderResult read;
  std::string line;
  while (std::getline(text, line)) readResultLine(line, read);
  EXPECT_EQ(read.savedImage, result.savedImage);
  EXPECT_EQ(read.programNames, result.programNames);
}

}  // namespace
}  // namespace vrnhost
