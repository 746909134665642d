// Command-line parsing: the forms users type, and the mistakes that must be refused with a
// message rather than read as something else.
#include <gtest/gtest.h>

#include "tools/host/host_options.h"

namespace vrnhost {
namespace {

bool parse(const std::vector<std::string>& args, HostOptions& options, std::string& error) {
  options = HostOptions{};
  error.clear();
  return parseHostOptions(args, options, error);
}

TEST(HostOptions, ReadsLongShortAndInlineForms) {
  HostOptions options;
  std::string error;
  ASSERT_TRUE(parse({"-o", "a.wav", "--rate=48000", "-b", "4096", "--program", "12", "--set",
                     "FILTER 1: Cutoff=0.3", "--set=23=1", "-s", "x=y=0", "--format", "24", "--zero-frame-calls",
                     "--tempo", "97.5", "--tail", "0", "plug.so"},
                    options, error))
      << error;
  EXPECT_EQ(options.pluginPath, "plug.so");
  EXPECT_EQ(options.outputPath, "a.wav");
  EXPECT_EQ(options.sampleRate, 48000);
  EXPECT_EQ(options.blockSize, 4096);
  EXPECT_EQ(options.program, 12);
  ASSERT_EQ(options.settings.size(), 3u);
  EXPECT_EQ(options.settings[0].key, "FILTER 1: Cutoff");
  EXPECT_FLOAT_EQ(options.settings[0].value, 0.3f);
  EXPECT_EQ(options.settings[1].key, "23");
  EXPECT_EQ(options.settings[2].key, "x=y");  // the value follows the last '='
  EXPECT_EQ(options.format, SampleFormat::kPcm24);
  EXPECT_TRUE(options.zeroFrameCalls);
  EXPECT_DOUBLE_EQ(options.tempo, 97.5);
  EXPECT_EQ(options.tailSeconds, 0.0);
  EXPECT_FALSE(options.listParameters);
}

TEST(HostOptions, DefaultsNeedOnlyThePlugin) {
  HostOptions options;
  std::string error;
  ASSERT_TRUE(parse({"VrnZIV.so"}, options, error)) << error;
  EXPECT_EQ(options.outputPath, "out.wav");
  EXPECT_EQ(options.sampleRate, 44100);
  EXPECT_EQ(options.blockSize, 512);
  EXPECT_EQ(options.program, -1);
  EXPECT_EQ(options.format, SampleFormat::kFloat32);
  EXPECT_TRUE(parse({"--help"}, options, error));  // help needs no plug-in
}

TEST(HostOptions, ProgramFileOptions) {
  HostOptions options;
  std::string error;
  ASSERT_TRUE(parse({"--load", "My Bank.FXB", "--program-name", "PAD - Warm Pad", "--save-fxp", "out.fxp",
                     "--list-programs", "a.so"},
                    options, error))
      << error;
  EXPECT_EQ(options.loadPath, "My Bank.FXB");
  EXPECT_EQ(fxKindOfPath(options.loadPath), FxKind::kBank);
  EXPECT_EQ(options.programName, "PAD - Warm Pad");
  EXPECT_EQ(options.saveProgramPath, "out.fxp");
  EXPECT_TRUE(options.listPrograms);
}

TEST(HostOptions, TrackMixOptions) {
  HostOptions options;
  std::string error;
  ASSERT_TRUE(parse({"--midi", "song.mid", "--tracks", "--loudness", "-14", "a.so"}, options, error)) << error;
  EXPECT_TRUE(options.tracks);
  EXPECT_DOUBLE_EQ(options.targetLoudness, -14.0);
}

TEST(HostOptions, RefusesMistakesWithAMessage) {
  const std::vector<std::vector<std::string>> cases = {
      {},
      {"a.so", "b.so"},
      {"--bogus", "a.so"},
      {"-x", "a.so"},
      {"--block", "0", "a.so"},
      {"--block", "12.5", "a.so"},
      {"--rate", "44k", "a.so"},
      {"--rate", "", "a.so"},
      {"--tempo", "nan", "a.so"},
      {"--set", "Cutoff", "a.so"},
      {"--set", "Cutoff=1.5", "a.so"},
      {"--set", "=0.5", "a.so"},
      {"--format", "16", "a.so"},
      {"--list-params=1", "a.so"},
      {"a.so", "--out"},
      {"--out", "", "a.so"},
      {"--program", "1", "--program-name", "Init Patch", "a.so"},
      {"--save-fxp", "a.fxp", "--save-fxb", "a.fxb", "a.so"},
      {"--load", "bank.txt", "a.so"},
      {"--tracks", "a.so"},
      {"--loudness", "3", "a.so"},
  };
  for (const auto& args : cases) {
    HostOptions options;
    std::string error;
    std::string joined;
    for (const auto& arg : args) joined += "'" + arg + "' ";
    EXPECT_FALSE(parse(args, options, error)) << joined;
    EXPECT_FALSE(error.empty()) << joined;
    EXPECT_EQ(error.find('\n'), std::string::npos) << joined;
  }
}

TEST(HostOptions, UsageListsEveryOptionAndWindowsPluginsAreRecognised) {
  std::string usage = usageText();
  for (const char* option : {"--out", "--midi", "--program", "--set", "--rate", "--block", "--tempo", "--tail",
                             "--length", "--format", "--zero-frame-calls", "--stopped", "--list-params",
                             "--win-host", "--wine", "--quiet", "--load", "--program-name", "--save-fxp",
                             "--save-fxb", "--list-programs"}) {
    EXPECT_NE(usage.find(option), std::string::npos) << option;
  }
  EXPECT_TRUE(isWindowsPlugin("/x/VrnZIV.DLL"));
  EXPECT_FALSE(isWindowsPlugin("/x/VrnZIV.so"));
  EXPECT_FALSE(isWindowsPlugin("dll"));
}

}  // namespace
}  // namespace vrnhost
