// CPU of the global chain on a silent block: idle (every effect bypassed, as for a silent synth
// with the default patch) versus active (chorus and delay on, as while echoes ring out), with and
// without the limiter, and the whole engine's silent block. Run under flush-to-zero, as the
// plug-in's process calls are.
#include <benchmark/benchmark.h>

#include <vector>

#include "engine/denormals.h"
#include "engine/dsp.h"
#include "engine/effects/mix_chain.h"
#include "engine/synth_engine.h"

namespace ziv {
namespace {

constexpr float kRate = 44100.0f;

void renderSpan(MixChain& chain, const SynthEngine& engine, std::vector<float>& left,
                std::vector<float>& right, bool voicesSounded) {
  chain.aim(kMaxBlock, &engine.parameter(0), 120.0);
  chain.render(left.data(), right.data(), kMaxBlock, voicesSounded);
}

enum class Patch { kDefault, kChorusAndDelay, kChorusDelayAndLimiter };

void runChain(benchmark::State& state, Patch patch, bool voicesSounded) {
  ScopedFlushDenormals denormals;
  SynthEngine engine;
  if (patch != Patch::kDefault) {
    engine.setParameter(kChorusMix, 0.5f, false);
    engine.setParameter(kDelaySend, 0.5f, false);
    engine.setParameter(kDelayFeedback, 0.5f, false);
  }
  if (patch == Patch::kChorusDelayAndLimiter) engine.setParameter(kMasterLimiter, 1.0f, false);
  engine.smoothParameters(1.0f);
  MixChain chain;
  chain.setSampleRate(kRate);
  std::vector<float> left(kMaxBlock), right(kMaxBlock);
  // A sounding block first, so the delay has a tail, then enough blocks for the idle counters.
  left[0] = right[0] = 0.5f;
  renderSpan(chain, engine, left, right, true);
  for (int b = 0; b < 100; ++b) {
    renderSpan(chain, engine, left, right, voicesSounded);
  }
  for (auto _ : state) {
    std::fill(left.begin(), left.end(), 0.0f);
    std::fill(right.begin(), right.end(), 0.0f);
    renderSpan(chain, engine, left, right, voicesSounded);
    benchmark::DoNotOptimize(left.data());
    benchmark::DoNotOptimize(right.data());
  }
  state.counters["idle"] = chain.chainIdle() ? 1 : 0;
  state.SetItemsProcessed(state.iterations() * kMaxBlock);
}

void ChainSilentBlockIdle(benchmark::State& state) {
  runChain(state, Patch::kDefault, false);
}
void ChainSilentBlockChorusDelay(benchmark::State& state) {
  runChain(state, Patch::kChorusAndDelay, true);
}
void ChainSilentBlockChorusDelayLimiter(benchmark::State& state) {
  runChain(state, Patch::kChorusDelayAndLimiter, true);
}

// The chain under sound with the default patch (chorus mix 0, no delay send, limiter off): what
// the chain costs while notes play and no effect is dialled in.
void ChainSoundingBlockDefault(benchmark::State& state) {
  ScopedFlushDenormals denormals;
  SynthEngine engine;
  engine.smoothParameters(1.0f);
  MixChain chain;
  chain.setSampleRate(kRate);
  std::vector<float> left(kMaxBlock), right(kMaxBlock);
  int n = 0;
  for (auto _ : state) {
    for (int i = 0; i < kMaxBlock; ++i, ++n)
      left[i] = right[i] = 0.25f * static_cast<float>((n % 101) - 50) / 50.0f;
    renderSpan(chain, engine, left, right, true);
    benchmark::DoNotOptimize(left.data());
    benchmark::DoNotOptimize(right.data());
  }
  state.SetItemsProcessed(state.iterations() * kMaxBlock);
}

// The engine with no voice sounding: voice skip plus the idle chain.
void EngineSilentBlock(benchmark::State& state) {
  ScopedFlushDenormals denormals;
  SynthEngine engine;
  engine.setSampleRate(kRate);
  std::vector<float> left(kMaxBlock), right(kMaxBlock);
  for (auto _ : state) {
    engine.smoothParameters(1.0f);
    engine.renderBlock(left.data(), right.data(), kMaxBlock, 0.0, 120.0);
    benchmark::DoNotOptimize(left.data());
  }
  state.SetItemsProcessed(state.iterations() * kMaxBlock);
}

BENCHMARK(ChainSilentBlockIdle);
BENCHMARK(ChainSilentBlockChorusDelay);
BENCHMARK(ChainSilentBlockChorusDelayLimiter);
BENCHMARK(ChainSoundingBlockDefault);
BENCHMARK(EngineSilentBlock);

}  // namespace
}  // namespace ziv
