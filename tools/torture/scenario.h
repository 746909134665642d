// The torture scenarios: each drives fresh plug-in instances in one hostile way for a bounded
// time, from a fixed seed, and leaves what it saw on its scoreboard. Shared helpers for writing
// them: the random source, the deadline and MIDI message builders.
//
// Threads: a scenario runs on the calling thread and may start threads of its own; it joins them
// before it returns.
#pragma once

#include <chrono>
#include <cstdint>
#include <random>
#include <vector>

#include "sdk/vst2/aeffect.h"
#include "tools/torture/scoreboard.h"

namespace torture {

struct ScenarioContext {
  vst2::PluginEntryProc entry;
  double seconds;      // how long the scenario keeps going
  std::uint32_t seed;  // the same seed makes the same sequence of calls
  Scoreboard& board;
};

struct Scenario {
  const char* name;
  void (*run)(const ScenarioContext&);
};

// Every scenario, in the order the table lists them.
const std::vector<Scenario>& allScenarios();

// The scenarios of each file.
void blockSizes(const ScenarioContext& context);
void garbageMidi(const ScenarioContext& context);
void badTimeInfo(const ScenarioContext& context);
void badSampleRates(const ScenarioContext& context);
void filterModeFlips(const ScenarioContext& context);
void suspendResumeStorm(const ScenarioContext& context);
void automationThread(const ScenarioContext& context);
void programThread(const ScenarioContext& context);
void instanceChurn(const ScenarioContext& context);
void opcodeSweep(const ScenarioContext& context);

class Deadline {
 public:
  explicit Deadline(double seconds)
      : end_(std::chrono::steady_clock::now() +
             std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                 std::chrono::duration<double>(seconds))) {}
  bool passed() const { return std::chrono::steady_clock::now() >= end_; }

 private:
  std::chrono::steady_clock::time_point end_;
};

class Random {
 public:
  explicit Random(std::uint32_t seed) : engine_(seed) {}
  // Uniform in lo..hi, both included.
  int between(int lo, int hi) {
    return lo + static_cast<int>(engine_() % static_cast<std::uint32_t>(hi - lo + 1));
  }
  float unit() { return static_cast<float>(engine_() >> 8) / static_cast<float>(1u << 24); }
  bool chance(float probability) { return unit() < probability; }
  template <typename T, std::size_t N>
  const T& pick(const T (&items)[N]) {
    return items[engine_() % N];
  }
  std::uint32_t bits() { return engine_(); }

 private:
  std::mt19937 engine_;
};

vst2::VstMidiEvent midiEvent(int offset, int status, int data1, int data2);
// A block's worth of note ons and offs on random keys, all inside `frames`.
std::vector<vst2::VstMidiEvent> randomNotes(Random& random, int frames, int count);
// Values no parameter can take: below, above, NaN and infinities, the subnormal and the huge.
float hostileValue(Random& random);

}  // namespace torture
