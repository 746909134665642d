// MIDI learn and the machine-wide files: the data folder and its listing, the factory bank file,
// the settings file's bytes, the learned map shared between instances through the change
// counter, learning from any controller, and what happens when the file cannot be written.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "midi/midi_learn_map.h"
#include "programs/data_folder.h"
#include "programs/factory_bank.h"
#include "test_host.h"

namespace ziv::testing {
namespace {

std::vector<std::uint8_t> fileBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::int32_t littleAt(const std::vector<std::uint8_t>& bytes, std::size_t offset) {
  return static_cast<std::int32_t>(std::uint32_t{bytes[offset]} | std::uint32_t{bytes[offset + 1]} << 8 |
                                   std::uint32_t{bytes[offset + 2]} << 16 |
                                   std::uint32_t{bytes[offset + 3]} << 24);
}

std::string tempPath(const std::string& name) {
  return ::testing::TempDir() + name;
}

// Every test starts and ends without a settings file in the (temporary) data folder.
class MidiLearnTest : public ::testing::Test {
 protected:
  void SetUp() override { std::remove(settingsFilePath().c_str()); }
  void TearDown() override { std::remove(settingsFilePath().c_str()); }
};

TEST(DataFolder, PathsListingAndFactoryBankNames) {
  const char* xdg = std::getenv("XDG_DATA_HOME");
  ASSERT_NE(xdg, nullptr);
  EXPECT_EQ(dataFolder(), std::string(xdg) + "/quorvantis");
  EXPECT_TRUE(std::filesystem::is_directory(dataFolder())) << "made on first use";
  EXPECT_EQ(settingsFilePath(), dataFolder() + "/Vrn ZIV.cfg");
  EXPECT_EQ(factoryPresetFolder(), dataFolder() + "/presets/Vrn1/Factory Presets");

  const std::string empty = dataFolder() + "/empty";
  std::filesystem::create_directory(empty);
  std::vector<std::string> listing = listFolder(empty);
  std::sort(listing.begin(), listing.end());
  EXPECT_EQ(listing, (std::vector<std::string>{".", ".."}));
  EXPECT_TRUE(listFolder(dataFolder() + "/missing").empty());
  EXPECT_TRUE(listFolder("").empty());

  const std::vector<std::string> entries = {".",  "..", "Factory.fxb", ".fxb",
                                            "fx", "",   "Old.fxb.bak", "Pads.fxb"};
  EXPECT_EQ(factoryBankNames(entries), (std::vector<std::string>{"Factory", "", "Pads"}));
}

TEST(DataFolder, FactoryBankFileIsTheEmbeddedImage) {
  const std::vector<std::uint8_t> file = fileBytes(ZIV_FACTORY_BANK_FILE);
  EXPECT_EQ(file, std::vector<std::uint8_t>(kFactoryBankImage, kFactoryBankImage + kFactoryBankSize));
}

TEST(SettingsFile, BytesWrittenAndDamagedFilesRead) {
  const std::string path = tempPath("settings-bytes.cfg");
  {
    MidiLearnMap map(path);
    map.bind(5, 7);
    map.bind(9, 0);
  }
  const std::vector<std::uint8_t> bytes = fileBytes(path);
  ASSERT_EQ(bytes.size(), 516u);
  EXPECT_EQ(littleAt(bytes, 0), 3);
  for (int c = 0; c < 128; ++c) {
    EXPECT_EQ(littleAt(bytes, 4 + 4 * c), c == 7 ? 5 : c == 0 ? 9 : -1) << "controller " << c;
  }
  EXPECT_EQ(MidiLearnMap(path).parameterFor(7), 5) << "a new map reads the file back";

  // Entries naming no parameter are unbound; a short file binds only the entries it holds.
  std::ofstream(path, std::ios::binary).write("\x03\0\0\0\x04\0\0\0\x88\x13\0\0\x02\0", 14);
  const MidiLearnMap damaged(path);
  EXPECT_EQ(damaged.parameterFor(0), 4);
  EXPECT_EQ(damaged.parameterFor(1), -1) << "parameter 5000";
  EXPECT_EQ(damaged.parameterFor(2), -1) << "half an entry";
  std::remove(path.c_str());
}

TEST(SettingsFile, BindingsMoveAndReplaceWithOneWriteEach) {
  const std::string path = tempPath("settings-moves.cfg");
  MidiLearnMap map(path);
  map.bind(5, 1);
  const std::uint32_t before = MidiLearnMap::changeCount();
  map.bind(5, 7);  // parameter 5 moves from controller 1 to 7
  EXPECT_EQ(MidiLearnMap::changeCount(), before + 1) << "written once";
  EXPECT_EQ(map.parameterFor(1), -1);
  EXPECT_EQ(map.findController(5), 7);
  EXPECT_EQ(littleAt(fileBytes(path), 4 + 4 * 1), -1);

  map.bind(6, 7);  // controller 7 now moves parameter 6 instead
  EXPECT_EQ(map.findController(5), -1);
  EXPECT_EQ(map.parameterFor(7), 6);
  map.bind(-1, 7);
  EXPECT_EQ(map.parameterFor(7), -1);

  const std::uint32_t settled = MidiLearnMap::changeCount();
  map.bind(5, 128);
  map.bind(108, 3);
  map.bind(-2, 3);
  EXPECT_EQ(MidiLearnMap::changeCount(), settled) << "invalid bindings change nothing";
  std::remove(path.c_str());
}

TEST(SettingsFile, UnwritableFolderKeepsTheBindingInMemory) {
  // A regular file where the folder should be: no one, not even root, can write below it.
  const std::string notAFolder = tempPath("settings-not-a-folder");
  std::ofstream(notAFolder) << "x";
  MidiLearnMap map(notAFolder + "/Vrn ZIV.cfg");
  const std::uint32_t before = MidiLearnMap::changeCount();
  map.bind(5, 7);
  EXPECT_EQ(map.parameterFor(7), 5);
  EXPECT_EQ(MidiLearnMap::changeCount(), before) << "nothing was written";

  // Another map's write makes this one look for its file again: still unreadable, still bound.
  const std::string other = tempPath("settings-other.cfg");
  MidiLearnMap(other).bind(1, 1);
  EXPECT_TRUE(map.readIfChanged());
  EXPECT_EQ(map.parameterFor(7), 5);
  std::remove(notAFolder.c_str());
  std::remove(other.c_str());
}

TEST_F(MidiLearnTest, AnyControllerOnAnyChannelLearnsAndMovesTheParameterExactly) {
  TestHost host;
  VstTest& plugin = host.plugin();
  MidiLearn& learn = plugin.midiLearn();
  EXPECT_EQ(learn.state(kFilter1Cutoff).status, LearnStatus::kIdle);
  learn.startLearn(kFilter1Cutoff);
  EXPECT_EQ(learn.state(kFilter1Cutoff).status, LearnStatus::kWaiting);
  EXPECT_EQ(learn.state(kFilter1Q).status, LearnStatus::kIdle);

  host.midi(0, 0xBD, 74, 127);  // channel 14
  host.process(64);
  const LearnState mapped = learn.state(kFilter1Cutoff);
  EXPECT_EQ(mapped.status, LearnStatus::kMapped);
  EXPECT_EQ(mapped.controller, 74);
  EXPECT_EQ(plugin.getParameter(kFilter1Cutoff), 1.0f) << "the learning message moves it too";
  EXPECT_EQ(littleAt(fileBytes(settingsFilePath()), 4 + 4 * 74), kFilter1Cutoff);

  host.midi(0, 0xB3, 74, 0);
  host.process(64);
  EXPECT_EQ(plugin.getParameter(kFilter1Cutoff), 0.0f);
  EXPECT_EQ(plugin.program(plugin.getProgram()).values[kFilter1Cutoff], 0.0f) << "the program follows";
  host.midi(0, 0xB0, 74, 127);
  host.process(64);
  EXPECT_EQ(plugin.getParameter(kFilter1Cutoff), 1.0f);

  learn.removeMapping(kFilter1Cutoff);
  EXPECT_EQ(learn.state(kFilter1Cutoff).status, LearnStatus::kIdle);
  host.controller(0, 74, 0);
  host.process(64);
  EXPECT_EQ(plugin.getParameter(kFilter1Cutoff), 1.0f) << "unbound";

  // A cancelled learn binds nothing.
  learn.startLearn(kFilter1Q);
  learn.cancelLearn();
  host.controller(0, 20, 0);
  host.process(64);
  EXPECT_EQ(learn.state(kFilter1Q).status, LearnStatus::kIdle);
}

TEST_F(MidiLearnTest, InstancesShareBindingsThroughTheChangeCounter) {
  TestHost first, second;
  first.plugin().midiLearn().startLearn(kFilter1Cutoff);
  first.controller(0, 21, 64);
  first.process(64);
  EXPECT_EQ(second.plugin().midiLearn().state(kFilter1Cutoff).status, LearnStatus::kIdle)
      << "read at the next processEvents, not before";

  second.controller(0, 21, 127);
  second.process(64);
  EXPECT_EQ(second.plugin().midiLearn().state(kFilter1Cutoff).controller, 21);
  EXPECT_EQ(second.plugin().getParameter(kFilter1Cutoff), 1.0f);
  EXPECT_EQ(TestHost().plugin().midiLearn().state(kFilter1Cutoff).controller, 21) << "new instances read it";

  first.plugin().midiLearn().removeMapping(kFilter1Cutoff);
  second.controller(0, 21, 0);
  second.process(64);
  EXPECT_EQ(second.plugin().midiLearn().state(kFilter1Cutoff).status, LearnStatus::kIdle);
  EXPECT_EQ(second.plugin().getParameter(kFilter1Cutoff), 1.0f);
}

TEST_F(MidiLearnTest, SustainPedalCompletesALearnAndStillSustains) {
  TestHost host;
  host.noteOn(0, 60);
  host.process(64);
  host.plugin().midiLearn().startLearn(kFilter1Cutoff);
  host.controller(0, 64, 127);
  host.noteOff(1, 60);
  host.process(64);
  EXPECT_EQ(host.plugin().midiLearn().state(kFilter1Cutoff).controller, 64);
  EXPECT_EQ(host.plugin().getParameter(kFilter1Cutoff), 1.0f);
  EXPECT_EQ(host.engine().heldNoteCount(), 1) << "the pedal holds the released key";

  host.controller(0, 64, 0);
  host.process(64);
  EXPECT_EQ(host.engine().heldNoteCount(), 0);
  EXPECT_EQ(host.plugin().getParameter(kFilter1Cutoff), 0.0f);
}

}  // namespace
}  // namespace ziv::testing
