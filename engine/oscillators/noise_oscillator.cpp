// Band-passed table noise; see noise_oscillator.h.
#include "engine/oscillators/noise_oscillator.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "engine/oscillators/pitch.h"

namespace ziv {
namespace {

constexpr unsigned kPositionMask = NoiseOscillator::kTableSize - 1;
// Fixed seed of the table's generator (any non-zero value; changing it changes every patch's
// noise).
constexpr std::uint32_t kTableSeed = 0x2545F491u;
// Value bits taken from each generator output: uniform in -1..1 with steps of 2^-23.
constexpr int kValueBits = 24;

// Lifts of the narrow band: up to 7 + 1 times by narrowness, and the level term's 20 x
// 0.5^(pitch / 24) that makes up for higher notes' wider absolute bandwidth.
constexpr float kNarrowLift = 7.0f;
constexpr float kLevelLift = 20.0f;
constexpr float kLevelOctaves = 24.0f;
constexpr float kMaxQ = 16.0f;
constexpr float kMinQ = 1.1920929e-7f;
// Narrowness below this (after the 2b - 0.3 mapping) keeps the broad-noise level.
constexpr float kNarrowStart = 0.3f;

std::vector<float> makeTable() {
  // xorshift32 (Marsaglia): a fixed integer generator, identical on every compiler.
  std::vector<float> values(NoiseOscillator::kTableSize);
  std::uint32_t state = kTableSeed;
  const double scale = 1.0 / (1u << (kValueBits - 1));
  for (float& v : values) {
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    const std::uint32_t bits = state >> (32 - kValueBits);
    v = static_cast<float>((bits + 0.5) * scale - 1.0);
  }
  return values;
}

}  // namespace

const float* NoiseOscillator::table() {
  static const std::vector<float> values = makeTable();
  return values.data();
}

NoiseOscillator::NoiseOscillator() : table_(table()) {}

void NoiseOscillator::start(int seed) {
  position_ = static_cast<unsigned>(seed) & kPositionMask;
  filter_.reset();
  lastGain_ = 0.0f;
  silent_ = true;
}

void NoiseOscillator::aim(int frames, float pitch, float gain, float narrowness) {
  silent_ = gain < kSilence && lastGain_ < kSilence && filter_.isSilent();
  if (silent_) return;
  lastGain_ = gain;

  const float b = std::clamp(narrowness, 0.0f, 1.0f);
  const float c = std::clamp(2.0f * b - kNarrowStart, 0.0f, 1.0f);
  const float smooth = c * c * (3.0f - 2.0f * c);
  // The lift makes up for the band the filter really has, which is never below its lowest
  // frequency nor below where it still is while it slews down. Lifting for the pitch asked for
  // instead (modulation reaches far below note 0, and jumps) multiplies a band that is wider
  // than the lift assumes by hundreds.
  const float noteHz = pitchToHz(pitch);
  const float bandHz = std::max({noteHz, FilterElement::kMinFrequency, filter_.frequencyHz()});
  const float level =
      std::pow(0.5f, hzToPitch(bandHz) / kLevelOctaves) * smooth * kLevelLift + (1.0f - smooth);
  const float b2 = b * b;
  const float q = std::max(kMaxQ * b2 * b2, kMinQ);
  const float outputGain = level * gain * (kNarrowLift * b2 * b + 1.0f);
  filter_.aim(frames, FilterElement::kBandPass, noteHz, q, outputGain);
}

void NoiseOscillator::render(float* out, int frames) {
  if (frames <= 0) return;
  if (silent_) {
    // Nothing sounds: only the read position moves on.
    position_ = (position_ + static_cast<unsigned>(frames)) & kPositionMask;
    return;
  }
  for (int start = 0; start < frames; start += kMaxBlock) {
    const int n = std::min(kMaxBlock, frames - start);
    unsigned position = position_;
    for (int i = 0; i < n; ++i) {
      buffer_[i] = table_[position];
      position = (position + 1) & kPositionMask;
    }
    position_ = position;
    filter_.render(buffer_, n);
    for (int i = 0; i < n; ++i) out[start + i] += buffer_[i];
  }
}

}  // namespace ziv
