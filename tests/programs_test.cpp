// Programs and banks: the factory bank and the sorted bank built from it, the chunk and file
// byte forms written and read back, older and foreign forms, and damaged data.
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <thread>

#include "programs/factory_bank.h"
#include "programs/program_files.h"
#include "programs/program_format.h"
#include "programs/program_loader.h"
#include "test_host.h"

namespace ziv::testing {
namespace {

// Records what a loader asks of an instance, over a bank of its own.
class RecordingTarget : public ProgramTarget {
 public:
  RecordingTarget() {
    for (ProgramRecord& program : bank) program.setName("unset");
  }
  int parameterCount() const override { return kHostParamCount; }
  int currentProgramIndex() const override { return current; }
  void selectProgram(int index) override { current = index < 0 ? 0 : index > 99 ? 99 : index; }
  void renameProgram(const char* name) override { bank[current].setName(name); }
  void loadValue(int index, float value) override {
    ++valuesLoaded;
    highestIndex = index > highestIndex ? index : highestIndex;
    versionOfLastValue = version;
    if (index >= 0 && index < kHostParamCount) bank[current].values[index] = value;
  }
  int loadVersion() override { return version; }
  void setLoadVersion(int v) override { version = v; }
  void beginProgramLoad() override {
    bracketOpen = true;
    version = 0;
  }
  void endProgramLoad() override {
    bracketOpen = false;
    version = fx::kFormatVersion;
  }

  ProgramList bank;
  int current = 0;
  int version = fx::kFormatVersion;
  int versionOfLastValue = -1;
  int valuesLoaded = 0;
  int highestIndex = -1;
  bool bracketOpen = false;
};

std::uint32_t bigAt(const Bytes& bytes, std::size_t offset) {
  return std::uint32_t{bytes[offset]} << 24 | std::uint32_t{bytes[offset + 1]} << 16 |
         std::uint32_t{bytes[offset + 2]} << 8 | bytes[offset + 3];
}

std::int32_t littleAt(const Bytes& bytes, std::size_t offset) {
  return static_cast<std::int32_t>(std::uint32_t{bytes[offset]} | std::uint32_t{bytes[offset + 1]} << 8 |
                                   std::uint32_t{bytes[offset + 2]} << 16 |
                                   std::uint32_t{bytes[offset + 3]} << 24);
}

Bytes bankChunkOf(VstTest& plugin) {
  Bytes chunk;
  plugin.makeBankChunk(chunk);
  return chunk;
}

std::string tempPath(const std::string& name) {
  return ::testing::TempDir() + name;
}

vst2::VstIntPtr silentHost(vst2::AEffect*, vst2::VstInt32 opcode, vst2::VstInt32, vst2::VstIntPtr, void*,
                           float) {
  return opcode == vst2::audioMasterVersion ? 2400 : 0;
}

// A second instance beside a TestHost's (the test host keeps one instance at a time).
std::unique_ptr<VstTest> secondInstance() {
  return std::make_unique<VstTest>(silentHost, std::make_unique<SynthEngine>());
}

// A bank of "FxCk" records: program k is named "P<k>" and holds value k / 1000 at index 0.
Bytes valuesBankImage(int programs, int parameters) {
  Bytes image;
  appendBig32(image, fx::kFileMagic);
  appendBig32(image, 0);
  appendBig32(image, fx::kBankValuesMagic);
  image.resize(16, 0);
  appendBig32(image, fx::kPluginId);
  image.resize(24, 0);
  appendBig32(image, static_cast<std::uint32_t>(programs));
  image.resize(fx::kBankHeaderSize, 0);
  for (int k = 0; k < programs; ++k) {
    appendBig32(image, fx::kFileMagic);
    appendBig32(image, 0);
    appendBig32(image, fx::kProgramValuesMagic);
    image.resize(image.size() + 12, 0);
    appendBig32(image, static_cast<std::uint32_t>(parameters));
    appendPaddedText(image, ("P" + std::to_string(k)).c_str(), fx::kProgramFileNameBytes);
    for (int i = 0; i < parameters; ++i) appendBig32(image, floatBits(i == 0 ? k / 1000.0f : 0.5f));
  }
  return image;
}

TEST(FactoryBank, ImageIsALegacyChunkBankOf100Programs) {
  const Bytes image(kFactoryBankImage, kFactoryBankImage + kFactoryBankSize);
  ASSERT_EQ(image.size(), 45764u);
  EXPECT_EQ(bigAt(image, 0), fx::kFileMagic);
  EXPECT_EQ(bigAt(image, 4), image.size() - 8);
  EXPECT_EQ(bigAt(image, 8), fx::kBankChunkMagic);
  EXPECT_EQ(bigAt(image, 16), fx::kPluginId);
  EXPECT_EQ(bigAt(image, 20), 1011u);
  EXPECT_EQ(bigAt(image, 24), 100u);
  EXPECT_EQ(bigAt(image, 156), image.size() - 160);
  EXPECT_EQ(littleAt(image, 160), 1011);
  for (int k = 0; k < 100; ++k) {
    const std::size_t record = 164 + k * (24 + 4 + 428);
    EXPECT_EQ(littleAt(image, record + 24), 428) << "program " << k;
    EXPECT_EQ(littleAt(image, record + 28), 1011) << "program " << k;
  }
}

TEST(FactoryBank, InstanceStartsSortedWithTheInitPatchLast) {
  TestHost host;
  VstTest& plugin = host.plugin();
  struct Category {
    const char* prefix;
    int count;
  };
  int index = 0;
  for (Category category :
       {Category{"LEAD - ", 24}, {"BASS - ", 19}, {"POLY - ", 31}, {"PAD - ", 18}, {"FX - ", 7}}) {
    for (int k = 0; k < category.count; ++k, ++index) {
      const char* name = plugin.program(index).name;
      EXPECT_EQ(std::strncmp(name, category.prefix, std::strlen(category.prefix)), 0) << index << " " << name;
      if (k > 0) {
        EXPECT_LT(std::strcmp(plugin.program(index - 1).name, name), 0) << "byte order at " << index;
      }
    }
  }
  EXPECT_STREQ(plugin.program(99).name, "Init Patch");
  EXPECT_STREQ(plugin.initialProgram().name, plugin.program(99).name);
  for (int i = 0; i < kHostParamCount; ++i) {
    EXPECT_EQ(plugin.initialProgram().values[i].load(), plugin.program(99).values[i].load()) << i;
  }
  EXPECT_EQ(plugin.getProgram(), 0);

  // Program 0 is in the engine; the parameters the legacy bank lacks keep their defaults, and
  // the factory programs differ from one another.
  for (int i = 0; i < kHostParamCount; ++i) {
    EXPECT_EQ(plugin.getParameter(i), plugin.program(0).values[i]) << "parameter " << i;
  }
  for (int k = 0; k < 100; ++k) {
    EXPECT_EQ(plugin.program(k).values[kOsc1Sync], normalisedDefault(paramTable()[kOsc1Sync]));
    EXPECT_EQ(plugin.program(k).values[kOsc2Sync], normalisedDefault(paramTable()[kOsc2Sync]));
    if (k > 0) {
      EXPECT_NE(0, std::memcmp(plugin.program(k).values.data(), plugin.program(k - 1).values.data(),
                               sizeof(float) * kHostParamCount));
    }
  }
}

TEST(ProgramBank, CategoryOrder) {
  EXPECT_EQ(categoryRank("LEAD - X"), 0);
  EXPECT_EQ(categoryRank("FX - X"), 4);
  EXPECT_EQ(categoryRank("lead - X"), kUncategorisedRank);
  EXPECT_EQ(categoryRank("LEADS X"), kUncategorisedRank);
  EXPECT_EQ(categoryRank("PAD"), kUncategorisedRank);

  ProgramList bank;
  const char* names[] = {"Init Patch", "lead - user", "FX - B", "PAD - A", "FX - A", "POLY - A"};
  for (int k = 0; k < 100; ++k) bank[k].setName(names[k % 6]);
  bank[7].setName("FX - AB");
  sortByCategory(bank);
  // 16 POLY, 17 PAD, 16 "FX - A", one "FX - AB", 17 "FX - B", 16 lower-case, 17 "Init Patch".
  EXPECT_STREQ(bank[0].name, "POLY - A");
  EXPECT_STREQ(bank[16].name, "PAD - A");
  EXPECT_STREQ(bank[33].name, "FX - A");
  EXPECT_STREQ(bank[49].name, "FX - AB") << "a prefix sorts first";
  EXPECT_STREQ(bank[50].name, "FX - B");
  EXPECT_STREQ(bank[67].name, "lead - user") << "unknown categories after FX";
  EXPECT_STREQ(bank[83].name, "Init Patch");
  EXPECT_STREQ(bank[99].name, "Init Patch");
}

TEST(ProgramBank, InitializeProgramAndBank) {
  TestHost host;
  VstTest& plugin = host.plugin();
  plugin.setProgram(5);
  plugin.setParameter(kFilter1Cutoff, 0.01f);
  plugin.initProgram();
  EXPECT_STREQ(plugin.program(5).name, "Init Patch");
  EXPECT_EQ(plugin.getParameter(kFilter1Cutoff), plugin.initialProgram().values[kFilter1Cutoff]);
  EXPECT_STRNE(plugin.program(4).name, "Init Patch");

  plugin.setProgram(7);
  plugin.initBank();
  EXPECT_EQ(plugin.getProgram(), 7);
  for (int k = 0; k < 100; ++k) EXPECT_STREQ(plugin.program(k).name, "Init Patch");
}

TEST(Chunks, HostChunksRoundTripByteForByte) {
  TestHost source;
  source.plugin().setProgram(42);
  source.plugin().setParameter(kShaperDrive, 0.3125f);
  void* data = nullptr;
  const vst2::VstInt32 bankSize = source.plugin().getChunk(&data, false);
  ASSERT_EQ(bankSize, static_cast<vst2::VstInt32>(fx::bankChunkSize(108)));
  const Bytes bank(static_cast<std::uint8_t*>(data), static_cast<std::uint8_t*>(data) + bankSize);
  EXPECT_EQ(littleAt(bank, 0), 1033);
  EXPECT_EQ(littleAt(bank, bank.size() - 4), 42);

  auto target = secondInstance();
  EXPECT_EQ(target->setChunk(const_cast<std::uint8_t*>(bank.data()), bankSize, false), 1);
  EXPECT_EQ(target->getProgram(), 42) << "the chunk's current program";
  EXPECT_EQ(target->getParameter(kShaperDrive), 0.3125f);
  EXPECT_EQ(bankChunkOf(*target), bank);

  const vst2::VstInt32 programSize = source.plugin().getChunk(&data, true);
  ASSERT_EQ(programSize, 8 + 4 * 108);
  const Bytes program(static_cast<std::uint8_t*>(data), static_cast<std::uint8_t*>(data) + programSize);
  target->setProgram(3);
  EXPECT_EQ(target->setChunk(const_cast<std::uint8_t*>(program.data()), programSize, true), 1);
  EXPECT_EQ(target->getChunk(&data, true), programSize);
  EXPECT_EQ(0, std::memcmp(data, program.data(), program.size()));
}

TEST(Chunks, LegacyAndIndexedBanks) {
  TestHost host;
  VstTest& plugin = host.plugin();
  Bytes bank = bankChunkOf(plugin);
  plugin.setProgram(9);

  // Version 1033: the trailing index (0 here) is selected.
  plugin.loadBankChunk(bank.data(), bank.size());
  EXPECT_EQ(plugin.getProgram(), 0);

  // A legacy bank: 106 values per program, no count, no trailing index.
  Bytes legacy;
  appendLittle32(legacy, 1011);
  for (int k = 0; k < 100; ++k) {
    appendPaddedText(legacy, ("Old " + std::to_string(k)).c_str(), 24);
    appendLittle32(legacy, 4 + 4 * 106);
    appendLittle32(legacy, 1011);
    for (int i = 0; i < 106; ++i) appendLittle32(legacy, floatBits(i == kFilter1Cutoff ? k / 100.0f : 0.25f));
  }
  plugin.setProgram(9);
  plugin.setParameter(kOsc1Sync, 0.75f);
  plugin.loadBankChunk(legacy.data(), legacy.size());
  EXPECT_EQ(plugin.getProgram(), 9) << "a legacy bank keeps the current program";
  EXPECT_STREQ(plugin.program(37).name, "Old 37");
  EXPECT_EQ(plugin.program(37).values[kFilter1Cutoff], 0.37f);
  EXPECT_EQ(plugin.program(9).values[kOsc1Sync], 0.75f) << "values beyond 106 are left alone";
  EXPECT_EQ(host.engine().loadVersion, 1033) << "the bracket was closed";

  RecordingTarget recorder;
  loadBankChunk(recorder, legacy.data(), legacy.size());
  EXPECT_EQ(recorder.versionOfLastValue, 1011) << "values are written under the chunk's version";
  EXPECT_EQ(recorder.valuesLoaded, 100 * 106);
}

TEST(Chunks, NamesOfExactly24CharactersAndLongCounts) {
  TestHost host;
  VstTest& plugin = host.plugin();
  char name[] = "ABCDEFGHIJKLMNOPQRSTUVWX";
  plugin.setProgram(0);
  plugin.setProgramName(name);
  Bytes bank = bankChunkOf(plugin);
  EXPECT_EQ(0, std::memcmp(bank.data() + 4, name, 24)) << "no terminator in the chunk";
  EXPECT_EQ(littleAt(bank, 28), 440);

  auto other = secondInstance();
  other->loadBankChunk(bank.data(), bank.size());
  EXPECT_STREQ(other->program(0).name, name);

  // A program chunk with more values than parameters sets the first 108 only.
  Bytes chunk;
  appendLittle32(chunk, 1033);
  appendLittle32(chunk, 120);
  for (int i = 0; i < 120; ++i) appendLittle32(chunk, floatBits(0.5f));
  other->loadProgramChunk(chunk.data(), chunk.size());
  for (int i = 0; i < kHostParamCount; ++i) EXPECT_EQ(other->getParameter(i), 0.5f);
  RecordingTarget recorder;
  loadProgramChunk(recorder, chunk.data(), chunk.size());
  EXPECT_EQ(recorder.highestIndex, 119) << "the instance, not the loader, ignores indices past its count";
}

TEST(Chunks, TruncatedDataLoadsWhatIsComplete) {
  TestHost host;
  Bytes bank = bankChunkOf(host.plugin());
  for (int k = 0; k < 100; ++k) {
    host.plugin().setProgram(k);
    host.plugin().setParameter(kMasterGain, 0.5f);
  }
  const Bytes full = bankChunkOf(host.plugin());

  // Cut the original bank inside program 10's values: programs 0..9 return whole, program 10
  // gets its name and the values before the cut, the rest stay as they were.
  const std::size_t programBytes = 24 + 4 + 440;
  const std::size_t cut = 4 + 10 * programBytes + 28 + 8 + 4 * kMasterGain;
  Bytes truncated(bank.begin(), bank.begin() + static_cast<std::ptrdiff_t>(cut));
  host.plugin().setProgram(50);
  EXPECT_EQ(host.plugin().setChunk(truncated.data(), static_cast<vst2::VstInt32>(truncated.size()), false),
            1);
  EXPECT_EQ(host.plugin().getProgram(), 50) << "no trailing index: the previous program";
  EXPECT_NE(host.plugin().program(9).values[kMasterGain], 0.5f);
  EXPECT_EQ(host.plugin().program(10).values[kMasterGain], 0.5f);
  EXPECT_EQ(host.plugin().program(11).values[kMasterGain], 0.5f);

  // Every prefix of a bank chunk, program chunk and file image loads without complaint about
  // anything but headers; the sanitizer build turns any read past the end into a failure.
  Bytes programImage;
  Bytes programChunk;
  host.plugin().makeProgramChunk(-1, programChunk);
  fx::writeProgramFile("Cut", 108, programChunk.data(), programChunk.size(), programImage);
  for (std::size_t size = 0; size <= programImage.size(); ++size) {
    Bytes prefix(programImage.begin(), programImage.begin() + static_cast<std::ptrdiff_t>(size));
    RecordingTarget recorder;
    const std::string message = loadProgramImage(recorder, prefix.data(), prefix.size());
    EXPECT_EQ(message, size < 60 ? kInvalidProgram : "") << size;
    EXPECT_EQ(recorder.valuesLoaded, size < 68 ? 0 : static_cast<int>((size - 68) / 4)) << size;
  }
  for (std::size_t size = 0; size < full.size(); size += 7) {
    Bytes prefix(full.begin(), full.begin() + static_cast<std::ptrdiff_t>(size));
    RecordingTarget recorder;
    EXPECT_EQ(loadBankChunk(recorder, prefix.data(), prefix.size()), "");
    EXPECT_FALSE(recorder.bracketOpen);
  }
  EXPECT_EQ(host.plugin().setChunk(nullptr, 100, true), 1);
  Bytes copy = full;
  EXPECT_EQ(host.plugin().setChunk(copy.data(), -5, false), 1);
}

TEST(Files, ProgramAndBankFilesRoundTrip) {
  TestHost source;
  source.plugin().setProgram(12);
  source.plugin().setParameter(kChorusMix, 0.625f);
  const std::string bankPath = tempPath("round_trip.fxb");
  const std::string programPath = tempPath("round_trip.fxp");
  ASSERT_EQ(source.plugin().saveBankFile(bankPath), "");
  ASSERT_EQ(source.plugin().saveProgramFile(programPath), "");

  Bytes bankFile, programFile;
  ASSERT_EQ(readFileImage(bankPath, bankFile), "");
  ASSERT_EQ(readFileImage(programPath, programFile), "");
  ASSERT_EQ(bankFile.size(), 160 + fx::bankChunkSize(108));
  EXPECT_EQ(bigAt(bankFile, 4), bankFile.size() - 8);
  EXPECT_EQ(bigAt(bankFile, 8), fx::kBankChunkMagic);
  EXPECT_EQ(bigAt(bankFile, 20), 1033u);
  ASSERT_EQ(programFile.size(), 60u + 440u);
  EXPECT_EQ(bigAt(programFile, 4), 440u + 52u);
  EXPECT_EQ(bigAt(programFile, 8), fx::kProgramChunkMagic);
  EXPECT_EQ(bigAt(programFile, 24), 108u);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(programFile.data()) + 28),
            source.plugin().program(12).name);

  auto target = secondInstance();
  EXPECT_EQ(target->loadBankFile(bankPath), "");
  EXPECT_EQ(bankChunkOf(*target), bankChunkOf(source.plugin()));

  target->setProgram(0);
  EXPECT_EQ(target->loadProgramFile(programPath), "");
  EXPECT_EQ(0, std::memcmp(target->program(0).values.data(), source.plugin().program(12).values.data(),
                           sizeof(float) * kHostParamCount));
  EXPECT_STREQ(target->program(0).name, source.plugin().program(12).name);
  EXPECT_FALSE(target->inSetProgram());
  std::remove(bankPath.c_str());
  std::remove(programPath.c_str());
}

TEST(Files, MessagesForMissingFilesAndFolders) {
  TestHost host;
  const std::string missing = tempPath("no_such_folder/bank.fxb");
  EXPECT_EQ(host.plugin().saveBankFile(missing), "Error opening file '" + missing + "'!");
  EXPECT_EQ(host.plugin().saveProgramFile(missing), "Error opening file '" + missing + "'!");
  EXPECT_EQ(host.plugin().loadBankFile(missing), "Error opening file '" + missing + "'!");
  EXPECT_EQ(host.plugin().loadProgramFile(missing), "Error opening file '" + missing + "'!");
  // A folder opens on some systems but is no file; it once threw std::bad_alloc instead.
  const std::string folder = tempPath("");
  EXPECT_EQ(host.plugin().loadBankFile(folder), "Error reading file '" + folder + "'!");
  EXPECT_EQ(host.plugin().loadProgramFile(folder), "Error reading file '" + folder + "'!");
}

TEST(Files, ForeignMagicWords) {
  TestHost host;
  VstTest& plugin = host.plugin();
  Bytes chunk, image;
  plugin.makeProgramChunk(-1, chunk);
  fx::writeProgramFile("Renamed", 108, chunk.data(), chunk.size(), image);

  Bytes notAFile = image;
  notAFile[0] = 'X';
  plugin.setProgram(1);
  const std::string before = plugin.program(1).name;
  EXPECT_EQ(plugin.loadProgramImage(notAFile.data(), notAFile.size()), "Invalid program!");
  EXPECT_EQ(plugin.program(1).name, before);
  EXPECT_FALSE(plugin.inSetProgram());

  // A known container with an unknown form: renamed, refused, and the bracket left open.
  Bytes foreignForm = image;
  std::memcpy(foreignForm.data() + 8, "XyZw", 4);
  EXPECT_EQ(plugin.loadProgramImage(foreignForm.data(), foreignForm.size()), "Invalid program!");
  EXPECT_STREQ(plugin.program(1).name, "Renamed");
  EXPECT_TRUE(plugin.inSetProgram());
  plugin.endSetProgram();

  Bytes bankChunk = bankChunkOf(plugin), bankImage;
  fx::writeBankFile(1033, 100, bankChunk.data(), bankChunk.size(), bankImage);
  std::memcpy(bankImage.data() + 8, "FxCk", 4);
  EXPECT_EQ(plugin.loadBankImage(bankImage.data(), bankImage.size()), "Invalid bank!");
  bankImage[0] = 'c';
  EXPECT_EQ(plugin.loadBankImage(bankImage.data(), bankImage.size()), "Invalid bank!");
  EXPECT_EQ(plugin.loadBankImage(bankImage.data(), 100), "Invalid bank!");
}

// Another plug-in's bank parses as well as ours; it is refused by its ID and changes nothing.
TEST(Files, BanksOfAnotherPluginAreRefused) {
  TestHost host;
  VstTest& plugin = host.plugin();
  const Bytes ours = bankChunkOf(plugin);
  const std::uint32_t foreignId = vst2::fourCharCode('A', 'b', 'c', 'd');
  Bytes chunkForm;
  fx::writeBankFile(1033, 100, ours.data(), ours.size(), chunkForm, foreignId);
  Bytes valuesForm = valuesBankImage(100, 108);
  for (int i = 0; i < 4; ++i) valuesForm[16 + i] = chunkForm[16 + i];

  for (const Bytes& image : {chunkForm, valuesForm}) {
    EXPECT_EQ(plugin.loadBankImage(image.data(), image.size()), "Invalid bank!");
    EXPECT_EQ(bankChunkOf(plugin), ours);
  }
  const std::string path = tempPath("foreign.fxb");
  ASSERT_EQ(saveFileImage(path, chunkForm), "");
  EXPECT_EQ(plugin.loadBankFile(path), "Invalid bank!");
  std::remove(path.c_str());
}

TEST(Files, ParameterListFormsAreRead) {
  TestHost host;
  VstTest& plugin = host.plugin();
  plugin.setProgram(3);
  const Bytes image = valuesBankImage(120, 108);
  EXPECT_EQ(plugin.loadBankImage(image.data(), image.size()), "");
  EXPECT_EQ(plugin.getProgram(), 3) << "the previous program is selected again";
  EXPECT_STREQ(plugin.program(0).name, "P0");
  EXPECT_STREQ(plugin.program(99).name, "P99");
  EXPECT_EQ(plugin.program(99).values[0], 0.099f);
  EXPECT_EQ(plugin.program(99).values[107], 0.5f);

  RecordingTarget recorder;
  EXPECT_EQ(loadBankImage(recorder, image.data(), image.size()), "");
  EXPECT_EQ(recorder.valuesLoaded, 100 * 108) << "only the first 100 of 120 programs";

  // Records are stepped by the plug-in's own count: a truncated bank stops at its last whole header.
  const Bytes cut(image.begin(), image.begin() + 156 + 5 * (56 + 4 * 108) + 40);
  RecordingTarget partial;
  EXPECT_EQ(loadBankImage(partial, cut.data(), cut.size()), "");
  EXPECT_STREQ(partial.bank[4].name, "P4");
  EXPECT_STREQ(partial.bank[5].name, "unset");
}

// Hosts save and restore state from their user-interface thread while audio runs; neither side
// may crash or wait for the other.
TEST(Chunks, ChunkCallsWhileAudioRuns) {
  TestHost host;
  VstTest& plugin = host.plugin();
  std::atomic<bool> stop{false};
  std::thread ui([&] {
    void* data = nullptr;
    for (int round = 0; round < 40; ++round) {
      const vst2::VstInt32 size = plugin.getChunk(&data, round % 2 == 0);
      Bytes copy(static_cast<std::uint8_t*>(data), static_cast<std::uint8_t*>(data) + size);
      plugin.setChunk(copy.data(), static_cast<vst2::VstInt32>(copy.size() - round), round % 2 == 0);
      plugin.setProgram(round);
    }
    stop = true;
  });
  int blocks = 0;
  while (!stop || blocks < 10) {
    host.noteOn(0, 60 + blocks % 12);
    host.midi(3, 0xC0, blocks % 100, 0);
    host.process(256);
    for (float sample : host.left) ASSERT_TRUE(std::isfinite(sample));
    ++blocks;
  }
  ui.join();
}

}  // namespace
}  // namespace ziv::testing
