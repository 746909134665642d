// Cost of the state calls that hosts make from their user-interface thread, some after every
// edit: the bank chunk and the program chunk out (getChunk) and in (setChunk), and a program
// switch (setProgram, which MIDI program changes also make on the audio thread).
#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#include "plugin/vst_test.h"

namespace ziv {
namespace {

vst2::VstIntPtr silentHost(vst2::AEffect*, vst2::VstInt32 opcode, vst2::VstInt32, vst2::VstIntPtr, void*,
                           float) {
  return opcode == vst2::audioMasterVersion ? 2400 : 0;
}

std::unique_ptr<VstTest> makeInstance() {
  return std::make_unique<VstTest>(silentHost, std::make_unique<SynthEngine>());
}

void getChunk(benchmark::State& state, bool program) {
  auto plugin = makeInstance();
  void* data = nullptr;
  for (auto _ : state) {
    benchmark::DoNotOptimize(plugin->getChunk(&data, program));
    benchmark::ClobberMemory();
  }
}

void setChunk(benchmark::State& state, bool program) {
  auto plugin = makeInstance();
  void* data = nullptr;
  const vst2::VstInt32 size = plugin->getChunk(&data, program);
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  std::vector<std::uint8_t> chunk(bytes, bytes + size);
  for (auto _ : state) benchmark::DoNotOptimize(plugin->setChunk(chunk.data(), size, program));
}

void BM_GetBankChunk(benchmark::State& state) {
  getChunk(state, false);
}
void BM_GetProgramChunk(benchmark::State& state) {
  getChunk(state, true);
}
void BM_SetBankChunk(benchmark::State& state) {
  setChunk(state, false);
}
void BM_SetProgramChunk(benchmark::State& state) {
  setChunk(state, true);
}

void BM_SetProgram(benchmark::State& state) {
  auto plugin = makeInstance();
  int program = 0;
  for (auto _ : state) {
    plugin->setProgram(program);
    program = (program + 37) % VstTest::kProgramCount;
  }
}

BENCHMARK(BM_GetBankChunk);
BENCHMARK(BM_GetProgramChunk);
BENCHMARK(BM_SetBankChunk);
BENCHMARK(BM_SetProgramChunk);
BENCHMARK(BM_SetProgram);

}  // namespace
}  // namespace ziv
