// Scenarios on one thread, as a host's audio thread would run them: block sizes, MIDI bytes, time
// info, sample rates, filter modes flipped every block, and suspend/resume storms.
#include <cmath>
#include <limits>

#include "tools/torture/scenario.h"
#include "tools/torture/torture_instance.h"

namespace torture {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr int kAnnouncedBlock = 512;

// A chord that keeps sounding, on a patch with the synced LFO and delay in play.
void playChord(TortureInstance& plugin) {
  std::vector<vst2::VstMidiEvent> chord;
  for (int note : {48, 55, 60, 64, 67}) chord.push_back(midiEvent(0, 0x90, note, 100));
  plugin.sendEvents(chord);
}

void setByName(TortureInstance& plugin, const char* name, float value) {
  const int index = plugin.parameterIndex(name);
  if (index >= 0) plugin.setParameter(index, value);
}

int randomBlock(Random& random) {
  static const int sizes[] = {0, 1, 2, 3, 127, 128, 129, 255, 256, 257, 511, 512, 1024, 4096, 8192};
  if (random.chance(0.1f)) return random.between(kAnnouncedBlock + 1, kMaxFrames);  // more than announced
  return random.chance(0.5f) ? random.pick(sizes) : random.between(0, 8192);
}

}  // namespace

void blockSizes(const ScenarioContext& context) {
  static const float rates[] = {8000.0f, 22050.0f, 44100.0f, 48000.0f, 88200.0f, 96000.0f, 192000.0f};
  Random random(context.seed);
  TortureInstance plugin(context.entry, context.board);
  if (!plugin.valid()) return;
  plugin.start(44100.0f, kAnnouncedBlock);
  for (Deadline deadline(context.seconds); !deadline.passed();) {
    const int frames = randomBlock(random);
    if (random.chance(0.1f)) plugin.dispatch(vst2::effSetSampleRate, 0, 0, nullptr, random.pick(rates));
    plugin.sendEvents(randomNotes(random, frames, random.between(0, 4)));
    plugin.process(frames);
  }
}

void garbageMidi(const ScenarioContext& context) {
  Random random(context.seed);
  TortureInstance plugin(context.entry, context.board);
  if (!plugin.valid()) return;
  plugin.start(48000.0f, kAnnouncedBlock);
  std::vector<vst2::VstMidiEvent> events;
  for (Deadline deadline(context.seconds); !deadline.passed();) {
    const int frames = randomBlock(random);
    events.clear();
    const int count = random.between(0, 200);
    for (int i = 0; i < count; ++i) {
      vst2::VstMidiEvent event{};
      event.type = random.chance(0.9f) ? vst2::kVstMidiType : static_cast<vst2::VstInt32>(random.bits());
      event.byteSize = random.chance(0.9f) ? static_cast<vst2::VstInt32>(sizeof(event))
                                           : static_cast<vst2::VstInt32>(random.bits());
      event.deltaFrames = random.chance(0.8f) ? random.between(0, frames + 1) * (random.chance(0.5f) ? 1 : 3)
                                              : static_cast<vst2::VstInt32>(random.bits());
      for (char& byte : event.midiData) byte = static_cast<char>(random.bits());
      event.detune = static_cast<char>(random.bits());
      events.push_back(event);
    }
    plugin.sendEvents(events, random.chance(0.05f));
    plugin.process(frames);
  }
}

void badTimeInfo(const ScenarioContext& context) {
  static const double values[] = {kNaN,   kInfinity, -kInfinity, 1e300, -1e300, 0.0,  -1.0, 1e-300,
                                  4e-320, 1e12,      120.0,      0.25,  1e-9,   -4.0, 3e9,  9e15};
  Random random(context.seed);
  TortureInstance plugin(context.entry, context.board);
  if (!plugin.valid()) return;
  plugin.start(44100.0f, kAnnouncedBlock);
  setByName(plugin, "GLOBAL LFO: Sync", 1.0f);
  setByName(plugin, "GLOBAL LFO: Target 1", 0.3f);
  setByName(plugin, "GLOBAL LFO: Amt 1", 0.9f);
  setByName(plugin, "DELAY: Sync", 1.0f);
  setByName(plugin, "DELAY: Send", 0.6f);
  setByName(plugin, "CHORUS: Mix", 0.5f);
  playChord(plugin);
  vst2::VstTimeInfo time{};
  for (Deadline deadline(context.seconds); !deadline.passed();) {
    time.ppqPos = random.chance(0.7f) ? random.pick(values) : time.ppqPos + 0.1;
    time.tempo = random.chance(0.7f) ? random.pick(values) : 120.0;
    time.sampleRate = random.pick(values);
    time.samplePos = random.pick(values);
    time.flags = random.chance(0.8f) ? vst2::kVstPpqPosValid | vst2::kVstTempoValid
                                     : static_cast<vst2::VstInt32>(random.bits());
    plugin.setTimeInfo(random.chance(0.05f) ? nullptr : &time);
    plugin.process(randomBlock(random));
  }
}

void badSampleRates(const ScenarioContext& context) {
  static const float rates[] = {std::numeric_limits<float>::quiet_NaN(),
                                std::numeric_limits<float>::infinity(),
                                -std::numeric_limits<float>::infinity(),
                                0.0f,
                                -44100.0f,
                                1.0f,
                                100.0f,
                                1e-30f,
                                std::numeric_limits<float>::denorm_min(),
                                1e9f,
                                std::numeric_limits<float>::max(),
                                44100.0f,
                                96000.0f,
                                768000.0f};
  Random random(context.seed);
  TortureInstance plugin(context.entry, context.board);
  if (!plugin.valid()) return;
  plugin.start(44100.0f, kAnnouncedBlock);
  setByName(plugin, "MASTER: Limiter", 1.0f);
  setByName(plugin, "DELAY: Send", 0.5f);
  setByName(plugin, "CHORUS: Mix", 0.5f);
  for (Deadline deadline(context.seconds); !deadline.passed();) {
    const bool bracket = random.chance(0.5f);  // most hosts switch the instance off around a change
    if (bracket) plugin.dispatch(vst2::effMainsChanged, 0, 0);
    plugin.dispatch(vst2::effSetSampleRate, 0, 0, nullptr, random.pick(rates));
    if (bracket) plugin.dispatch(vst2::effMainsChanged, 0, 1);
    plugin.dispatch(vst2::effGetTailSize);
    if (random.chance(0.3f)) playChord(plugin);
    for (int block = random.between(1, 4); block > 0; --block) plugin.process(randomBlock(random));
  }
}

void filterModeFlips(const ScenarioContext& context) {
  Random random(context.seed);
  TortureInstance plugin(context.entry, context.board);
  if (!plugin.valid()) return;
  plugin.start(44100.0f, kAnnouncedBlock);
  const int mode1 = plugin.parameterIndex("FILTER 1: Mode");
  const int mode2 = plugin.parameterIndex("FILTER 2: Mode");
  const int cutoff = plugin.parameterIndex("FILTER 1: Cutoff");
  if (mode1 < 0 || mode2 < 0 || cutoff < 0) return;
  for (const char* q : {"FILTER 1: Q", "FILTER 2: Q"}) setByName(plugin, q, 1.0f);
  setByName(plugin, "SHAPER: Mix", 0.0f);  // nothing between the filters to clip a runaway
  // The modes are LP, HP, BP and VOX at 0, 1/3, 2/3 and 1.
  static const float others[] = {0.0f, 1.0f / 3.0f, 2.0f / 3.0f};
  static const float cutoffs[] = {0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.7f, 0.9f};
  constexpr int kBlocksPerChord = 400;
  int block = 0;
  for (Deadline deadline(context.seconds); !deadline.passed(); ++block) {
    if (block % kBlocksPerChord == 0) {
      // A new chord, and VOX moves to the other half of the block pairs.
      plugin.sendEvents({midiEvent(0, 0xB0, 123, 0)});
      playChord(plugin);
      plugin.setParameter(cutoff, random.pick(cutoffs));
    }
    const bool vox = (block + block / kBlocksPerChord) % 2 == 0;
    const float mode = vox ? 1.0f : others[(block / kBlocksPerChord) % 3];
    plugin.setParameter(mode1, mode);
    plugin.setParameter(mode2, 1.0f - mode);
    plugin.process(random.chance(0.7f) ? 64 : randomBlock(random));
  }
}

void suspendResumeStorm(const ScenarioContext& context) {
  Random random(context.seed);
  TortureInstance plugin(context.entry, context.board);
  if (!plugin.valid()) return;
  plugin.start(44100.0f, kAnnouncedBlock);
  for (Deadline deadline(context.seconds); !deadline.passed();) {
    switch (random.between(0, 5)) {
      case 0:
        plugin.dispatch(vst2::effMainsChanged, 0, 0);
        break;
      case 1:
        plugin.dispatch(vst2::effMainsChanged, 0, 1);
        break;
      case 2:
        plugin.dispatch(vst2::effStartProcess);
        break;
      case 3:
        plugin.dispatch(vst2::effStopProcess);
        break;
      case 4:
        plugin.dispatch(vst2::effSetBlockSize, 0, random.between(-4, 9000));
        break;
      default:
        playChord(plugin);
        break;
    }
    plugin.process(random.chance(0.7f) ? random.between(0, 300) : 0);
  }
}

}  // namespace torture
