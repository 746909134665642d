// LFO phase laws, shapes and the fixed random table; see lfo.h.
#include "engine/modulation/lfo.h"

#include <array>
#include <cmath>

#include "engine/dsp.h"
#include "engine/random.h"

namespace ziv {
namespace {

constexpr float kRateOffset = -1.2f;  // exp(-1.2) = 0.301 Hz at rate 0
constexpr float kRateSpan = 4.0f;     // exp(2.8) = 16.44 Hz at rate 1
constexpr float kKeyTrackCentre = 52.0f;
constexpr float kKeyTrackSemitones = 17.5f;  // exp(12 / 17.5) = 1.985 per octave at full tracking
constexpr int kRandomPointsPerCycle = 4;
// The random table's generator seed: any fixed value gives a fixed table.
constexpr std::uint32_t kRandomTableSeed = 0x5EED1F0u;

// 1024 uniform values in -1..+1 from the engine's own generator, identical on every platform.
struct RandomTable {
  std::array<float, kLfoRandomTableSize> values{};
  RandomTable() {
    Random random(kRandomTableSeed);
    for (float& v : values) v = 2.0f * static_cast<float>(random.next()) / Random::kMax - 1.0f;
  }
};

const RandomTable& randomTable() {
  static const RandomTable table;
  return table;
}

// Table entry for a point index that may be negative (phase offsets reach below zero).
float randomPoint(std::uint32_t cycle, int point) {
  const int index = static_cast<int>(kRandomPointsPerCycle * cycle) + point;
  return randomTable().values[static_cast<unsigned>(index) % kLfoRandomTableSize];
}

}  // namespace

float lfoRandomValue(int index) {
  return randomTable().values[static_cast<unsigned>(index) % kLfoRandomTableSize];
}

float lfoRateHz(float rate) {
  return std::exp(kRateSpan * rate + kRateOffset);
}

float voiceLfoRateHz(float rate, float keyTracking, float pitch) {
  return std::exp((pitch - kKeyTrackCentre) * keyTracking / kKeyTrackSemitones + kRateSpan * rate +
                  kRateOffset);
}

void advanceLfo(LfoState& state, double cycles) {
  const double phase = state.phase + cycles;
  const double whole = std::floor(phase);
  state.phase = static_cast<float>(phase - whole);
  if (state.phase >= 1.0f) state.phase = 0.0f;  // float rounding of a phase just below 1
  if (whole > 0.0) {
    state.cycle =
        static_cast<std::uint32_t>((state.cycle + static_cast<std::uint64_t>(whole)) % kLfoCycleWrap);
  }
}

void lockLfoToSongPosition(LfoState& state, double songPositionBeats, float cycleQuarters) {
  const double position = songPositionBeats / cycleQuarters;
  const double whole = std::floor(position);
  state.phase = static_cast<float>(position - whole);
  if (state.phase >= 1.0f) state.phase = 0.0f;
  // The low eight bits of the cycle number; free-running advances later keep it modulo 255.
  state.cycle = static_cast<std::uint32_t>(static_cast<std::int64_t>(whole) & 0xff);
}

void shapeLfo(LfoState& state, int shape, float phaseOffset) {
  const float p = state.phase + phaseOffset;
  const float q = p - std::floor(p);
  switch (shape <= kLfoSine ? kLfoSine : shape >= kLfoSteppedRandom ? kLfoSteppedRandom : shape) {
    case kLfoSine:
      state.output = std::sin(kTwoPi * q);
      break;
    case kLfoTriangle:
      state.output = q < 0.25f ? 4.0f * q : q < 0.75f ? 2.0f - 4.0f * q : 4.0f * (q - 1.0f);
      break;
    case kLfoSaw:
      state.output = 2.0f * std::fmod(q + 0.5f, 1.0f) - 1.0f;
      break;
    case kLfoSquare:
      state.output = q < 0.5f ? 1.0f : -1.0f;
      break;
    case kLfoSmoothRandom: {
      const float x = kRandomPointsPerCycle * p;
      const int i = static_cast<int>(std::floor(x));
      const float f = x - static_cast<float>(i);
      state.output = (1.0f - f) * randomPoint(state.cycle, i) + f * randomPoint(state.cycle, i + 1);
      break;
    }
    default:
      state.output = randomPoint(state.cycle, static_cast<int>(std::floor(kRandomPointsPerCycle * p)));
      break;
  }
}

}  // namespace ziv
