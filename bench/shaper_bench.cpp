// CPU cost of one voice's shaper alone, per mode: a signal rich in high partials (a naive saw
// at 220 Hz plus a little noise, 0.8 peak) through drive 0.5 and mix 0.5 at 44.1 kHz in blocks
// of kMaxBlock; the counter is the CPU microseconds per second of audio. Mode 4 here means the
// bypass (mix 0), the cost of the delay line alone.
#include <benchmark/benchmark.h>

#include <vector>

#include "engine/dsp.h"
#include "engine/random.h"
#include "engine/shaper.h"

namespace ziv {
namespace {

constexpr float kRate = 44100.0f;
constexpr int kBlocksPerSecond = 44100 / kMaxBlock;

void ShaperCpu(benchmark::State& state) {
  const int mode = static_cast<int>(state.range(0));
  const bool bypass = mode > kShaperFold;
  std::vector<float> source(kBlocksPerSecond * kMaxBlock);
  Random random(3);
  double phase = 0.0;
  for (float& v : source) {
    phase += 220.0 / kRate;
    if (phase >= 1.0) phase -= 1.0;
    v = static_cast<float>(0.7 * (2.0 * phase - 1.0) + 0.1 * (2.0 * random.next() / Random::kMax - 1.0));
  }
  std::vector<float> buf(source.size());
  Shaper shaper;
  shaper.setSampleRate(kRate);
  shaper.reset();
  for (auto _ : state) {
    buf = source;
    for (int b = 0; b < kBlocksPerSecond; ++b) {
      shaper.aim(kMaxBlock, bypass ? kShaperClip : mode, 0.5f, bypass ? 0.0f : 0.5f);
      shaper.render(buf.data() + b * kMaxBlock, kMaxBlock);
    }
    benchmark::DoNotOptimize(buf.data());
  }
  const double audioSeconds = static_cast<double>(state.iterations()) * kBlocksPerSecond * kMaxBlock / kRate;
  state.counters["us_per_voice_s"] =
      benchmark::Counter(audioSeconds / 1e6, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

BENCHMARK(ShaperCpu)
    ->ArgName("mode")
    ->DenseRange(kShaperClip, kShaperFold + 1)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace ziv
