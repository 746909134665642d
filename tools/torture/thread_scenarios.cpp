// Scenarios where a second thread calls in while audio runs, as a host's user-interface thread
// does: parameter automation, program, name and chunk calls, instances created and destroyed on
// several threads; and a sweep of every opcode with null and out-of-range arguments.
#include <atomic>
#include <cstring>
#include <string>
#include <thread>

#include "tools/torture/scenario.h"
#include "tools/torture/torture_instance.h"

namespace torture {
namespace {

constexpr int kAnnouncedBlock = 256;
constexpr int kChurnThreads = 3;
constexpr int kLastOpcode = 80;
constexpr int kTextBytes = 256;
// After the notes end, the output must fall below this within kSilenceSeconds.
constexpr float kSilenceLevel = 1e-3f;
constexpr double kSilenceSeconds = 30.0;
constexpr float kSampleRate = 44100.0f;
constexpr int kInitProgram = 99;
// Automation and program calls run under dense playing: a few notes every this many blocks
// (about 11 a second). Far denser playing keeps all 64 voices busy, and their sum at the top of
// their gain range can pass the output bound without anything running away.
constexpr int kBlocksPerNotes = 16;

// Runs `body(random)` on its own thread until `stop` is set.
template <typename Body>
std::thread background(std::atomic<bool>& stop, std::uint32_t seed, Body body) {
  return std::thread([&stop, seed, body]() mutable {
    Random random(seed);
    while (!stop.load(std::memory_order_relaxed)) body(random);
  });
}

// Renders until a second in a row stays below kSilenceLevel; a finding when it never does.
void expectSilence(TortureInstance& plugin, Scoreboard& board) {
  const int block = kAnnouncedBlock;
  const int secondBlocks = static_cast<int>(kSampleRate) / block;
  int quietBlocks = 0;
  float loudest = 0.0f;
  for (int i = 0; i < static_cast<int>(kSilenceSeconds * kSampleRate) / block; ++i) {
    const float peak = plugin.process(block);
    loudest = peak;
    quietBlocks = peak < kSilenceLevel ? quietBlocks + 1 : 0;
    if (quietBlocks >= secondBlocks) return;
  }
  board.addFinding("still sounding (" + std::to_string(loudest) + ") " + std::to_string(kSilenceSeconds) +
                   " s after the notes ended");
}

std::vector<std::uint8_t> chunkOf(TortureInstance& plugin, bool program) {
  void* data = nullptr;
  const auto size = plugin.dispatch(vst2::effGetChunk, program ? 1 : 0, 0, &data);
  if (data == nullptr || size <= 0) return {};
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  return std::vector<std::uint8_t>(bytes, bytes + size);
}

// Releases every key and the pedal, puts back `factoryBank` (the bank as the instance started)
// and selects its last program, "Init Patch". A patch left anywhere by the scenario may hold
// echoes for minutes by design (a delay feedback of 1 never dies away), and the scenario's
// chunk and program calls may have rewritten any program of the bank, the last one included;
// state that ran away would keep sounding under any patch.
void endNotes(TortureInstance& plugin, std::vector<std::uint8_t>& factoryBank) {
  std::vector<vst2::VstMidiEvent> off;
  for (int note = 0; note < 128; ++note) off.push_back(midiEvent(0, 0x80, note, 0));
  off.push_back(midiEvent(0, 0xB0, 64, 0));
  plugin.sendEvents(off);
  plugin.dispatch(vst2::effSetChunk, 0, static_cast<vst2::VstIntPtr>(factoryBank.size()), factoryBank.data());
  plugin.dispatch(vst2::effSetProgram, 0, kInitProgram);
}

// A chunk as a careless host might hand it back: whole, cut short, bit-flipped or noise.
std::vector<std::uint8_t> damaged(std::vector<std::uint8_t> chunk, Random& random) {
  switch (random.between(0, 3)) {
    case 0:
      break;
    case 1:
      chunk.resize(
          chunk.empty() ? 0 : static_cast<std::size_t>(random.between(0, static_cast<int>(chunk.size()))));
      break;
    case 2:
      for (int i = random.between(1, 16); i > 0 && !chunk.empty(); --i) {
        chunk[random.bits() % chunk.size()] = static_cast<std::uint8_t>(random.bits());
      }
      break;
    default:
      chunk.resize(static_cast<std::size_t>(random.between(0, 2048)));
      for (auto& byte : chunk) byte = static_cast<std::uint8_t>(random.bits());
      break;
  }
  return chunk;
}

void programCall(TortureInstance& plugin, Random& random, std::vector<std::uint8_t>& bank) {
  char text[kTextBytes] = {};
  switch (random.between(0, 9)) {
    case 0:
      bank = chunkOf(plugin, false);
      break;
    case 1:
      chunkOf(plugin, true);
      break;
    case 2: {
      const bool program = random.chance(0.5f);
      std::vector<std::uint8_t> chunk = damaged(program ? chunkOf(plugin, true) : bank, random);
      plugin.dispatch(vst2::effSetChunk, program ? 1 : 0, static_cast<vst2::VstIntPtr>(chunk.size()),
                      chunk.empty() ? nullptr : chunk.data());
      break;
    }
    case 3:
      plugin.dispatch(vst2::effSetProgram, 0, random.between(-10, 200));
      break;
    case 4: {
      const int length = random.between(0, kTextBytes - 1);
      for (int i = 0; i < length; ++i) text[i] = static_cast<char>(random.between(1, 255));
      plugin.dispatch(vst2::effSetProgramName, 0, 0, text);
      break;
    }
    case 5:
      plugin.dispatch(vst2::effGetProgramName, 0, 0, text);
      break;
    case 6:
      plugin.dispatch(vst2::effGetProgramNameIndexed, random.between(-5, 120), 0, text);
      break;
    case 7:
      plugin.dispatch(vst2::effBeginSetProgram);
      plugin.dispatch(vst2::effSetProgram, 0, random.between(0, 99));
      plugin.dispatch(vst2::effEndSetProgram);
      break;
    case 8:
      plugin.dispatch(vst2::effGetParamDisplay, random.between(0, 107), 0, text);
      break;
    default:
      plugin.dispatch(vst2::effGetProgram);
      break;
  }
}

}  // namespace

void automationThread(const ScenarioContext& context) {
  Random random(context.seed);
  TortureInstance plugin(context.entry, context.board);
  if (!plugin.valid()) return;
  plugin.start(kSampleRate, kAnnouncedBlock);
  std::vector<std::uint8_t> factoryBank = chunkOf(plugin, false);
  const int count = plugin.effect()->numParams;
  std::atomic<bool> stop{false};
  std::thread automation = background(stop, context.seed + 1, [&plugin, count](Random& r) {
    // Per pass, every parameter moves: mostly anywhere, sometimes to an end or a hostile value.
    for (int i = 0; i < count; ++i) {
      const float value = r.chance(0.8f)   ? r.unit()
                          : r.chance(0.7f) ? static_cast<float>(r.between(0, 1))
                                           : hostileValue(r);
      plugin.setParameter(i, value);
    }
    char text[kTextBytes] = {};
    plugin.dispatch(vst2::effGetParamDisplay, r.between(0, count - 1), 0, text);
    plugin.getParameter(r.between(0, count - 1));
    std::this_thread::yield();
  });
  Deadline deadline(context.seconds);
  for (int block = 0; !deadline.passed(); ++block) {
    if (block % kBlocksPerNotes == 0)
      plugin.sendEvents(randomNotes(random, kAnnouncedBlock, random.between(1, 3)));
    plugin.process(random.chance(0.8f) ? kAnnouncedBlock : random.between(0, 2048));
  }
  stop = true;
  automation.join();
  endNotes(plugin, factoryBank);
  expectSilence(plugin, context.board);
}

void programThread(const ScenarioContext& context) {
  Random random(context.seed);
  TortureInstance plugin(context.entry, context.board);
  if (!plugin.valid()) return;
  plugin.start(kSampleRate, kAnnouncedBlock);
  std::vector<std::uint8_t> factoryBank = chunkOf(plugin, false);
  std::vector<std::uint8_t> bank = factoryBank;
  std::atomic<bool> stop{false};
  std::thread programs = background(stop, context.seed + 1, [&plugin, &bank](Random& r) {
    programCall(plugin, r, bank);
    std::this_thread::yield();
  });
  Deadline deadline(context.seconds);
  for (int block = 0; !deadline.passed(); ++block) {
    std::vector<vst2::VstMidiEvent> events;
    if (block % kBlocksPerNotes == 0) events = randomNotes(random, kAnnouncedBlock, random.between(1, 3));
    if (random.chance(0.3f))
      events.push_back(midiEvent(random.between(0, 255), 0xC0, random.between(0, 127), 0));
    if (random.chance(0.1f))
      events.push_back(midiEvent(0, 0xB0, random.between(0, 127), random.between(0, 127)));
    plugin.sendEvents(events);
    plugin.process(kAnnouncedBlock);
  }
  stop = true;
  programs.join();
  endNotes(plugin, factoryBank);
  expectSilence(plugin, context.board);
}

void instanceChurn(const ScenarioContext& context) {
  std::vector<std::thread> threads;
  for (int t = 0; t < kChurnThreads; ++t) {
    threads.emplace_back([&context, t] {
      Random random(context.seed + static_cast<std::uint32_t>(t));
      for (Deadline deadline(context.seconds); !deadline.passed();) {
        TortureInstance plugin(context.entry, context.board);
        if (!plugin.valid()) return;
        if (random.chance(0.2f)) continue;  // created and closed without ever being opened
        plugin.start(kSampleRate, kAnnouncedBlock);
        for (int block = random.between(0, 4); block > 0; --block) {
          plugin.sendEvents(randomNotes(random, kAnnouncedBlock, 2));
          plugin.process(kAnnouncedBlock);
        }
        if (random.chance(0.5f)) plugin.dispatch(vst2::effMainsChanged, 0, 0);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

void opcodeSweep(const ScenarioContext& context) {
  static const int indices[] = {-1, 0, 1, 99, 100, 107, 108, 115, 116, 1 << 20, -(1 << 30)};
  Random random(context.seed);
  TortureInstance plugin(context.entry, context.board);
  if (!plugin.valid()) return;
  plugin.start(kSampleRate, kAnnouncedBlock);
  for (Deadline deadline(context.seconds); !deadline.passed();) {
    for (int opcode = 0; opcode <= kLastOpcode; ++opcode) {
      if (opcode == vst2::effClose) continue;
      const int index = random.pick(indices);
      // Every opcode once with no pointer at all, and with a zeroed buffer where a small value
      // cannot be mistaken for a pointer or a size beyond it.
      plugin.dispatch(opcode, index, random.between(-2, kTextBytes), nullptr, hostileValue(random));
      if (opcode == vst2::effEditOpen || opcode == vst2::effSetSpeakerArrangement) continue;
      alignas(8) char buffer[kTextBytes] = {};
      plugin.dispatch(opcode, index, random.between(0, kTextBytes / 2), buffer, random.unit());
    }
    plugin.setParameter(random.pick(indices), hostileValue(random));
    plugin.getParameter(random.pick(indices));
    // The editor's calls with no window, as hosts probe before they have one.
    vst2::ERect* rect = nullptr;
    plugin.dispatch(vst2::effEditGetRect, 0, 0, &rect);
    plugin.dispatch(vst2::effEditOpen, 0, 0, nullptr);
    plugin.dispatch(vst2::effEditIdle);
    plugin.dispatch(vst2::effEditClose);
    plugin.dispatch(vst2::effMainsChanged, 0, 1);
    plugin.process(random.between(0, 1024));
  }
}

}  // namespace torture
