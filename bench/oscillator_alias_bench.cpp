// Alias-to-signal ratios of the band-limited oscillators and the shaper, reported as counters
// (dB; the benchmark's time is just the cost of one measurement): a saw (shape 0), a square,
// a pulse, and a saw hard-synced 12 and 7 semitones up, each at MIDI notes 84, 96 and 103 at
// 44.1 kHz straight from the oscillator (no filter), after one second of settling; and a full
// scale sine through the shaper at full drive in each mode. Targets for the saw: at most -80 dB
// below 10 kHz and -34 dB over the whole band.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "bench/spectrum.h"
#include "engine/dsp.h"
#include "engine/oscillators/pitch.h"
#include "engine/oscillators/saw_pulse_oscillator.h"
#include "engine/shaper.h"

namespace ziv {
namespace {

constexpr float kRate = 44100.0f;
constexpr int kSecond = 44100;

void report(benchmark::State& state, const std::vector<float>& x, double fundamentalHz) {
  const bench::AliasRatio ratio = bench::aliasRatio(x, kRate, fundamentalHz);
  state.counters["below10k_dB"] = ratio.belowDb;
  state.counters["whole_dB"] = ratio.wholeDb;
}

// Args: note, mode, shape x 100, sync semitones.
void OscillatorAlias(benchmark::State& state) {
  const float note = static_cast<float>(state.range(0));
  const int mode = static_cast<int>(state.range(1));
  const float shape = state.range(2) / 100.0f;
  const double ratio = std::pow(2.0, state.range(3) / 12.0);
  std::vector<float> x(kSecond);
  for (auto _ : state) {
    SawPulseOscillator osc;
    osc.setSampleRate(kRate);
    osc.start(0.0);
    std::vector<float> settle(kMaxBlock);
    for (int i = 0; i < kSecond; i += kMaxBlock) {
      osc.aim(kMaxBlock, note, 1.0f, mode, shape, ratio, false);
      osc.render(settle.data(), kMaxBlock);
    }
    std::fill(x.begin(), x.end(), 0.0f);
    for (int i = 0; i < kSecond; i += kMaxBlock) {
      const int span = std::min(kMaxBlock, kSecond - i);
      osc.aim(span, note, 1.0f, mode, shape, ratio, false);
      osc.render(x.data() + i, span);
    }
    benchmark::DoNotOptimize(x.data());
  }
  report(state, x, pitchToHz(note));
}

// Args: note, shaper mode.
void ShaperAlias(benchmark::State& state) {
  const float note = static_cast<float>(state.range(0));
  const int mode = static_cast<int>(state.range(1));
  const double hz = pitchToHz(note);
  std::vector<float> x(2 * kSecond);
  for (auto _ : state) {
    for (int i = 0; i < 2 * kSecond; ++i)
      x[i] = static_cast<float>(std::sin(2.0 * 3.14159265358979 * hz * i / kRate));
    Shaper shaper;
    shaper.setSampleRate(kRate);
    shaper.reset();
    for (int i = 0; i < 2 * kSecond; i += kMaxBlock) {
      const int span = std::min(kMaxBlock, 2 * kSecond - i);
      shaper.aim(span, mode, 1.0f, 1.0f);
      shaper.render(x.data() + i, span);
    }
    benchmark::DoNotOptimize(x.data());
  }
  report(state, std::vector<float>(x.begin() + kSecond, x.end()), hz);
}

void oscillatorCases(benchmark::internal::Benchmark* b) {
  b->ArgNames({"note", "mode", "shape", "sync"});
  for (int note : {84, 96, 103}) {
    b->Args({note, SawPulseOscillator::kSaw, 0, 0});
    b->Args({note, SawPulseOscillator::kPulse, 0, 0});
    b->Args({note, SawPulseOscillator::kPulse, 60, 0});
    b->Args({note, SawPulseOscillator::kSaw, 0, 12});
    b->Args({note, SawPulseOscillator::kSaw, 0, 7});
  }
}

void shaperCases(benchmark::internal::Benchmark* b) {
  b->ArgNames({"note", "mode"});
  for (int note : {84, 96, 103}) {
    for (int mode = kShaperClip; mode <= kShaperFold; ++mode) b->Args({note, mode});
  }
}

BENCHMARK(OscillatorAlias)->Apply(oscillatorCases)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(ShaperAlias)->Apply(shaperCases)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
}  // namespace ziv
