// Cubic Hermite sub oscillator; see sub_oscillator.h.
#include "engine/oscillators/sub_oscillator.h"

#include <algorithm>
#include <cmath>

#include "engine/dsp.h"
#include "engine/isa.h"
#include "engine/oscillators/pitch.h"

namespace ziv {

#ifndef ZIV_AVX2_PASS
namespace {

constexpr float kPoints[] = {0.0f, 1.0f, 0.0f, -1.0f};

}  // namespace

void SubOscillator::setSampleRate(float rate) {
  const double scale = static_cast<double>(sampleRate_) / rate;
  frequency_ *= scale;
  dFrequency_ *= scale;
  targetFrequency_ *= scale;
  sampleRate_ = rate;
}

void SubOscillator::start(double phase) {
  phase_ = phase - std::floor(phase);
  started_ = false;
  spanLeft_ = 0;
  spanLength_ = 0;
  silent_ = true;
}

void SubOscillator::aim(int frames, float pitch, float gain, float shape) {
  if (frames <= 0) return;
  if (!(shape == shape_)) {
    shape_ = shape;
    const float tangent = kTwoPi * shape;
    for (int s = 0; s < kSegments; ++s) {
      const float p0 = kPoints[s];
      const float p1 = kPoints[(s + 1) & (kSegments - 1)];
      const float m0 = tangent * p1;
      const float m1 = tangent * kPoints[(s + 2) & (kSegments - 1)];
      cubic_[s][0] = p0;
      cubic_[s][1] = m0;
      cubic_[s][2] = 3.0f * p1 - 3.0f * p0 - 2.0f * m0 - m1;
      cubic_[s][3] = 2.0f * p0 - 2.0f * p1 + m0 + m1;
    }
  }
  aimAt(frames, cyclesCache_.cycles(pitch, sampleRate_), gain);
}

void SubOscillator::aimAt(int frames, double frequency, double gain) {
  settle();
  if (!started_) {
    started_ = true;
    frequency_ = frequency;
    gain_ = gain;
  }
  const double inv = 1.0 / frames;
  dFrequency_ = (frequency - frequency_) * inv;
  dGain_ = (gain - gain_) * inv;
  targetFrequency_ = frequency;
  targetGain_ = gain;
  spanLeft_ = frames;
  spanLength_ = frames;
  silent_ = gain_ < kSilence && gain < kSilence;
}

// A silent span renders nothing: its phase and values follow from where it started and the
// frames consumed, computed here (at an aim and at the span's end) rather than summed per
// render call, so the split of the span cannot change them. At a span's end the values are
// exactly its targets, and the phase is wrapped into 0..1.
void SubOscillator::settle() {
  const int left = spanLeft_;
  if (silent_) {
    const double frequency = targetFrequency_ - left * dFrequency_;
    phase_ += (spanLength_ - left) * (frequency_ + frequency) * 0.5;
    frequency_ = frequency;
    gain_ = targetGain_ - left * dGain_;
    spanLength_ = left;
  } else if (left == 0) {
    frequency_ = targetFrequency_;
    gain_ = targetGain_;
  }
  phase_ -= std::floor(phase_);
}

void SubOscillator::render(float* out, int frames) {
  isa::dispatch([&](auto isa) { renderWith<decltype(isa)>(out, frames); });
}

#endif  // ZIV_AVX2_PASS

// --- Rendering, compiled for each instruction set (engine/isa.h) ---

template <class Isa>
void SubOscillator::renderWith(float* out, int frames) {
  while (frames > 0) {
    // Past the aimed span: a span that holds its targets.
    if (spanLeft_ == 0) aimAt(kMaxBlock, targetFrequency_, targetGain_);
    const int n = std::min(frames, spanLeft_);
    if (!silent_) {
      double phase = phase_, f = frequency_, g = gain_;
      const double dF = dFrequency_, dG = dGain_;
      for (int i = 0; i < n; ++i) {
        // The phase is never negative, so truncation is the floor (and far cheaper than floorf).
        const float x = kSegments * static_cast<float>(phase);
        const int segment = static_cast<int>(x);
        const float t = x - static_cast<float>(segment);
        const float* c = cubic_[segment & (kSegments - 1)];
        const float y = c[0] + t * (c[1] + t * (c[2] + t * c[3]));
        out[i] += static_cast<float>(g * y);
        g += dG;
        f += dF;
        phase += f;
      }
      phase_ = phase;
      frequency_ = f;
      gain_ = g;
    }
    spanLeft_ -= n;
    if (spanLeft_ == 0) settle();
    out += n;
    frames -= n;
  }
}

template void SubOscillator::renderWith<isa::Compiled>(float*, int);

}  // namespace ziv
