// Cubic Hermite sub oscillator; see sub_oscillator.h.
#include "engine/oscillators/sub_oscillator.h"

#include <cmath>

#include "engine/dsp.h"
#include "engine/oscillators/pitch.h"

namespace ziv {
namespace {

constexpr int kSegments = 4;  // quarter cycles
constexpr float kPoints[kSegments] = {0.0f, 1.0f, 0.0f, -1.0f};

}  // namespace

void SubOscillator::start(double phase) {
  phase_ = phase - std::floor(phase);
  started_ = false;
}

void SubOscillator::render(float* out, int frames, float pitch, float gain, float shape) {
  if (frames <= 0) return;
  if (!started_) {
    started_ = true;
    pitch_ = pitch;
    gain_ = gain;
  }
  const double f0 = cyclesCache_.cycles(pitch_, sampleRate_);
  const double f1 = pitch == pitch_ ? f0 : cyclesCache_.cycles(pitch, sampleRate_);
  const double inv = 1.0 / frames;
  const double dF = (f1 - f0) * inv;
  const double g0 = gain_;
  const double dG = (gain - g0) * inv;
  pitch_ = pitch;
  shape_ = shape;
  gain_ = gain;

  if (g0 < kSilence && gain < kSilence) {
    phase_ += frames * (f0 + f1) * 0.5;
    phase_ -= std::floor(phase_);
    return;
  }

  // The cubic of each quarter cycle, y = c0 + c1 t + c2 t^2 + c3 t^3, depends on the shape
  // only: worked out once per block.
  const float tangent = kTwoPi * shape;
  float cubic[kSegments][4];
  for (int s = 0; s < kSegments; ++s) {
    const float p0 = kPoints[s];
    const float p1 = kPoints[(s + 1) & (kSegments - 1)];
    const float m0 = tangent * p1;
    const float m1 = tangent * kPoints[(s + 2) & (kSegments - 1)];
    cubic[s][0] = p0;
    cubic[s][1] = m0;
    cubic[s][2] = 3.0f * p1 - 3.0f * p0 - 2.0f * m0 - m1;
    cubic[s][3] = 2.0f * p0 - 2.0f * p1 + m0 + m1;
  }

  double phase = phase_, f = f0, g = g0;
  for (int i = 0; i < frames; ++i) {
    // The phase is never negative, so truncation is the floor (and far cheaper than floorf).
    const float x = kSegments * static_cast<float>(phase);
    const int segment = static_cast<int>(x);
    const float t = x - static_cast<float>(segment);
    const float* c = cubic[segment & (kSegments - 1)];
    const float y = c[0] + t * (c[1] + t * (c[2] + t * c[3]));
    out[i] += static_cast<float>(g * y);
    g += dG;
    f += dF;
    phase += f;
  }
  phase_ = phase - std::floor(phase);
}

}  // namespace ziv
