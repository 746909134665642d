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
  const double f0 = pitchToCycles(pitch_, sampleRate_);
  const double f1 = pitchToCycles(pitch, sampleRate_);
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

  const float tangent = kTwoPi * shape;
  double phase = phase_, f = f0, g = g0;
  for (int i = 0; i < frames; ++i) {
    const float x = kSegments * static_cast<float>(phase);
    const float segment = std::floor(x);
    const float t = x - segment;
    const int s = static_cast<int>(segment) & (kSegments - 1);
    const float p0 = kPoints[s];
    const float p1 = kPoints[(s + 1) & (kSegments - 1)];
    const float m0 = tangent * p1;
    const float m1 = tangent * kPoints[(s + 2) & (kSegments - 1)];
    const float y =
        p0 +
        t * (m0 + t * ((3.0f * p1 - 3.0f * p0 - 2.0f * m0 - m1) + t * (2.0f * p0 - 2.0f * p1 + m0 + m1)));
    out[i] += static_cast<float>(g * y);
    g += dG;
    f += dF;
    phase += f;
  }
  phase_ = phase - std::floor(phase);
}

}  // namespace ziv
