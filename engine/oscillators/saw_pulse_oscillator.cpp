// Band-limited two-saw core with hard sync; see saw_pulse_oscillator.h.
#include "engine/oscillators/saw_pulse_oscillator.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "engine/dsp.h"
#include "engine/isa.h"
#include "engine/oscillators/pitch.h"

namespace ziv {

#ifndef ZIV_AVX2_PASS

namespace {

// Relative phase (saw) or width swing (pulse) per unit of shape, and the pulse's centre width.
constexpr double kShapeSpan = 0.49;
constexpr double kPulseCentre = 0.5;
// The highest slave frequency in cycles per sample before the oscillator fades out.
constexpr double kNyquist = 0.5;

double frac(double x) {
  return x - std::floor(x);
}

}  // namespace

SawPulseOscillator::SawPulseOscillator() : table_(&BlepTable::instance()) {}

void SawPulseOscillator::setSampleRate(float rate) {
  const double scale = static_cast<double>(sampleRate_) / rate;
  value_.frequency *= scale;
  step_.frequency *= scale;
  target_.frequency *= scale;
  sampleRate_ = rate;
}

void SawPulseOscillator::start(double phase) {
  masterPhase_ = frac(phase);
  started_ = false;
  needsReset_ = false;
  std::fill(std::begin(correction_), std::end(correction_), 0.0f);
  correctionIndex_ = 0;
  spanLeft_ = 0;
  spanLength_ = 0;
  silent_ = true;
}

// The second saw's jump is still ahead in this slave cycle unless slave phase plus offset
// already passed 1.
void SawPulseOscillator::resetEdge() {
  offsetCycle_ = std::floor(value_.offset);
  edgePending_ = !(frac(value_.offset) + slavePhase_ > 1.0);
}

void SawPulseOscillator::aim(int frames, float pitch, float gain, int mode, float shape, double ratio,
                             bool jumpGain) {
  if (frames <= 0) return;
  const bool pulse = mode == kPulse;
  const Ramped to{cyclesCache_.cycles(pitch, sampleRate_), ratio,
                  kShapeSpan * shape + (pulse ? kPulseCentre : 0.0), pulse ? -1.0 : 1.0, gain};
  aimAt(frames, to, jumpGain);
}

void SawPulseOscillator::aimAt(int frames, Ramped to, bool jumpGain) {
  settle();
  if (!started_) {
    started_ = true;
    value_ = to;
    slavePhase_ = frac(to.ratio * masterPhase_);
    resetEdge();
  }
  Ramped from = value_;
  // Fade instead of aliasing once the synced saw would pass Nyquist.
  if (from.ratio * from.frequency > kNyquist) {
    from.frequency = kNyquist / from.ratio;
    from.gain = 0.0;
  }
  if (to.ratio * to.frequency > kNyquist) {
    to.frequency = kNyquist / to.ratio;
    to.gain = 0.0;
  }
  if (jumpGain) from.gain = to.gain;

  silent_ = from.gain < kSilence && to.gain < kSilence;
  if (silent_) {
    needsReset_ = true;
  } else if (needsReset_) {
    prime(from);
  }
  const double inv = 1.0 / frames;
  value_ = from;
  step_ = {(to.frequency - from.frequency) * inv, (to.ratio - from.ratio) * inv,
           (to.offset - from.offset) * inv, (to.polarity - from.polarity) * inv, (to.gain - from.gain) * inv};
  target_ = to;
  spanLeft_ = frames;
  spanLength_ = frames;
  // At ratio 1 throughout, every master wrap meets a slave wrap and the sync changes nothing:
  // the loop without the master is used.
  synced_ = !(from.ratio == 1.0 && step_.ratio == 0.0);
}

// Audible again after silence: the ring is refilled from kPrimeSamples discarded samples at the
// span's start settings, which advance the phases by as many samples.
void SawPulseOscillator::prime(const Ramped& from) {
  needsReset_ = false;
  std::fill(std::begin(correction_), std::end(correction_), 0.0f);
  correctionIndex_ = 0;
  value_ = from;
  value_.gain = 0.0;
  step_ = {};
  resetEdge();
  float scratch[kPrimeSamples] = {};
  play<isa::Baseline>(scratch, kPrimeSamples, from.ratio != 1.0);
}

// A silent span renders nothing: its phases and values follow from where it started and the
// frames consumed, computed here (at an aim and at the span's end) rather than summed per
// render call, so the split of the span cannot change them. At a span's end the values are
// exactly its targets.
void SawPulseOscillator::settle() {
  const int left = spanLeft_;
  if (silent_) {
    const Ramped now{target_.frequency - left * step_.frequency, target_.ratio - left * step_.ratio,
                     target_.offset - left * step_.offset, target_.polarity - left * step_.polarity,
                     target_.gain - left * step_.gain};
    masterPhase_ = frac(masterPhase_ + (spanLength_ - left) * (value_.frequency + now.frequency) * 0.5);
    slavePhase_ = frac(masterPhase_ * now.ratio);
    value_ = now;
    spanLength_ = left;
  } else if (left == 0) {
    value_ = target_;
  }
}

void SawPulseOscillator::render(float* out, int frames) {
  isa::dispatch([&](auto isa) { renderWith<decltype(isa)>(out, frames); });
}

#endif  // ZIV_AVX2_PASS

// --- Rendering, compiled for each instruction set (engine/isa.h) ---

template <class Isa>
void SawPulseOscillator::addStep(double height, double samplesAgo) {
  const double x = std::clamp(samplesAgo * BlepTable::kPhases, 0.0, BlepTable::kPhases - 1.0);
  const int r = static_cast<int>(x);
  const float u = static_cast<float>(x - r);
  const float h = static_cast<float>(height);
  const float h0 = h * (1.0f - u);
  const float h1 = h * u;
  const float* row0 = table_->row(r);
  const float* row1 = table_->row(r + 1);
  // The ring is split where it wraps so both loops run over contiguous memory.
  const int first = kRingSize - correctionIndex_;
  float* tail = correction_ + correctionIndex_;
  for (int k = 0; k < first; ++k) tail[k] += h0 * row0[k] + h1 * row1[k];
  for (int k = first; k < kRingSize; ++k) correction_[k - first] += h0 * row0[k] + h1 * row1[k];
}

template <class Isa>
void SawPulseOscillator::renderWith(float* out, int frames) {
  while (frames > 0) {
    // Past the aimed span: a span that holds its targets.
    if (spanLeft_ == 0) aimAt(kMaxBlock, target_, false);
    const int n = std::min(frames, spanLeft_);
    if (!silent_) play<Isa>(out, n, synced_);
    spanLeft_ -= n;
    if (spanLeft_ == 0) settle();
    out += n;
    frames -= n;
  }
}

template <class Isa>
void SawPulseOscillator::play(float* out, int frames, bool synced) {
  // A settled span (a held note without pitch or shape modulation) adds zeros to its values:
  // the loop without the ramps gives the same samples.
  const Ramped& d = step_;
  const bool ramping =
      d.frequency != 0.0 || d.ratio != 0.0 || d.offset != 0.0 || d.polarity != 0.0 || d.gain != 0.0;
  if (synced) {
    ramping ? run<Isa, true, true>(out, frames) : run<Isa, true, false>(out, frames);
  } else {
    ramping ? run<Isa, false, true>(out, frames) : run<Isa, false, false>(out, frames);
  }
}

template <class Isa, bool kSync, bool kRamp>
void SawPulseOscillator::run(float* out, int frames) {
  const double dcPerStep = table_->dcPerStep();
  double f = value_.frequency, r = value_.ratio, o = value_.offset, polarity = value_.polarity,
         gain = value_.gain;
  const double dF = step_.frequency, dR = step_.ratio, dO = step_.offset, dPolarity = step_.polarity;
  const double dGain = step_.gain;
  double master = masterPhase_, slave = slavePhase_;
  bool edgePending = edgePending_;
  double offsetCycle = offsetCycle_;

  // The offset crossed a whole cycle: the second saw's jump moves to the other side.
  const auto followOffset = [&] {
    if (o < offsetCycle || o >= offsetCycle + 1.0) {
      offsetCycle = std::floor(o);
      edgePending = !edgePending;
    }
  };
  // Without ramps every value holds, and the offset's test gives its answer once and for all.
  if constexpr (!kRamp) followOffset();

  for (int i = 0; i < frames; ++i) {
    if constexpr (kRamp) {
      f += dF;
      r += dR;
      o += dO;
      polarity += dPolarity;
      gain += dGain;
    }
    const double slaveInc = r * f;
    if constexpr (kSync) master += f;
    slave += slaveInc;
    if constexpr (kRamp) followOffset();
    const double q = o - offsetCycle;

    // Second saw wraps, unless the master restarted the slave at or before that moment.
    if (edgePending && slave + q > 1.0) {
      const double t = (slave + q - 1.0) / (slaveInc + dO);
      if (!kSync || !((master - 1.0) / f >= t)) {
        addStep<Isa>(polarity, t);
        edgePending = false;
      }
    }
    // Slave wraps, with the same proviso.
    if (slave > 1.0) {
      const double t = (slave - 1.0) / slaveInc;
      if (!kSync || !((master - 1.0) / f >= t)) {
        slave -= 1.0;
        addStep<Isa>(1.0, t);
        edgePending = true;
      }
    }

    double a = slave;
    double b = (slave + q - (edgePending ? 0.0 : 1.0)) * polarity;

    // Hard sync: the master wrapped, the slave restarts from where the master now is.
    if (kSync && master > 1.0) {
      edgePending = true;
      master -= 1.0;
      slave = master * r;
      const double t = master / f;
      const double aSynced = slave;
      double bSynced = (slave + q) * polarity;
      addStep<Isa>(a + b - aSynced - bSynced, t);
      if (slave + q > 1.0) {
        addStep<Isa>(polarity, (slave + q - 1.0) / (slaveInc + dO));
        edgePending = false;
        bSynced = (slave + q - 1.0) * polarity;
      }
      a = aSynced;
      b = bSynced;
    }

    // The two saws and the band-limited step corrections leave a mean of
    // (dcPerStep x slaveInc + 0.5) per saw in saw mode; the subtraction cancels in pulse mode.
    const double y = a + b + correction_[correctionIndex_] - (dcPerStep * slaveInc + 0.5) * (polarity + 1.0);
    out[i] += static_cast<float>(2.0 * gain * y);
    correction_[correctionIndex_] = 0.0f;
    correctionIndex_ = (correctionIndex_ + 1) & (kRingSize - 1);
  }

  // Without sync (ratio 1 throughout) the master is the slave.
  value_ = {f, r, o, polarity, gain};
  masterPhase_ = kSync ? master : slave;
  slavePhase_ = slave;
  edgePending_ = edgePending;
  offsetCycle_ = offsetCycle;
}

template void SawPulseOscillator::renderWith<isa::Compiled>(float*, int);

}  // namespace ziv
