// Band-limited two-saw core with hard sync; see saw_pulse_oscillator.h.
#include "engine/oscillators/saw_pulse_oscillator.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "engine/dsp.h"
#include "engine/oscillators/pitch.h"

namespace ziv {
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

void SawPulseOscillator::start(double phase) {
  masterPhase_ = frac(phase);
  started_ = false;
  needsReset_ = false;
  std::fill(std::begin(correction_), std::end(correction_), 0.0f);
  correctionIndex_ = 0;
}

// The second saw's jump is still ahead in this slave cycle unless slave phase plus offset
// already passed 1.
void SawPulseOscillator::resetEdge() {
  offsetCycle_ = std::floor(offset_);
  edgePending_ = !(frac(offset_) + slavePhase_ > 1.0);
}

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

void SawPulseOscillator::render(float* out, int frames, float pitch, float gain, int mode, float shape,
                                double ratio, bool jumpGain) {
  if (frames <= 0) return;
  const bool pulse = mode == kPulse;
  const double o1 = kShapeSpan * shape + (pulse ? kPulseCentre : 0.0);
  const double s1 = pulse ? -1.0 : 1.0;
  double g1 = gain;
  const double r1 = ratio;

  if (!started_) {
    started_ = true;
    ratio_ = r1;
    slavePhase_ = frac(r1 * masterPhase_);
    pitch_ = pitch;
    offset_ = o1;
    polarity_ = s1;
    gain_ = g1;
    resetEdge();
  }

  const double r0 = ratio_;
  double f0 = cyclesCache_.cycles(pitch_, sampleRate_);
  double f1 = pitch == pitch_ ? f0 : cyclesCache_.cycles(pitch, sampleRate_);
  double g0 = gain_;
  // Fade instead of aliasing once the synced saw would pass Nyquist.
  if (r0 * f0 > kNyquist) {
    f0 = kNyquist / r0;
    g0 = 0.0;
  }
  if (r1 * f1 > kNyquist) {
    f1 = kNyquist / r1;
    g1 = 0.0;
  }
  if (jumpGain) g0 = g1;

  if (g0 < kSilence && g1 < kSilence) {
    // Silent: keep the phases running so the next audible block continues where it would be.
    ratio_ = r1;
    masterPhase_ = frac(masterPhase_ + frames * (f0 + f1) * 0.5);
    slavePhase_ = frac(masterPhase_ * r1);
    pitch_ = pitch;
    offset_ = o1;
    polarity_ = s1;
    gain_ = g1;
    needsReset_ = true;
    return;
  }

  if (needsReset_) {
    // Audible again: refill the ring from 10 samples at the previous settings, then play.
    needsReset_ = false;
    std::fill(std::begin(correction_), std::end(correction_), 0.0f);
    correctionIndex_ = 0;
    resetEdge();
    float scratch[kPrimeSamples] = {};
    const Ramp hold{f0, 0.0, r0, 0.0, offset_, 0.0, polarity_, 0.0, 0.0, 0.0};
    runDispatch(scratch, kPrimeSamples, hold);
  }

  const double inv = 1.0 / frames;
  const Ramp ramp{f0,        (f1 - f0) * inv,        r0, (r1 - r0) * inv, offset_, (o1 - offset_) * inv,
                  polarity_, (s1 - polarity_) * inv, g0, (g1 - g0) * inv};
  runDispatch(out, frames, ramp);

  ratio_ = r1;
  pitch_ = pitch;
  offset_ = o1;
  polarity_ = s1;
  gain_ = g1;
}

void SawPulseOscillator::runDispatch(float* out, int frames, const Ramp& ramp) {
  // At ratio 1 throughout, every master wrap meets a slave wrap and the sync changes nothing:
  // the loop without the master is used.
  if (ramp.ratio == 1.0 && ramp.dRatio == 0.0) {
    run<false>(out, frames, ramp);
  } else {
    run<true>(out, frames, ramp);
  }
}

template <bool kSync>
void SawPulseOscillator::run(float* out, int frames, const Ramp& ramp) {
  const double dcPerStep = table_->dcPerStep();
  double f = ramp.frequency, r = ramp.ratio, o = ramp.offset, polarity = ramp.polarity, gain = ramp.gain;
  const double dO = ramp.dOffset;
  double master = masterPhase_, slave = slavePhase_;
  bool edgePending = edgePending_;
  double offsetCycle = offsetCycle_;

  for (int i = 0; i < frames; ++i) {
    f += ramp.dFrequency;
    r += ramp.dRatio;
    o += dO;
    polarity += ramp.dPolarity;
    gain += ramp.dGain;
    const double slaveInc = r * f;
    if constexpr (kSync) master += f;
    slave += slaveInc;

    // The offset crossed a whole cycle: the second saw's jump moves to the other side.
    if (o < offsetCycle || o >= offsetCycle + 1.0) {
      offsetCycle = std::floor(o);
      edgePending = !edgePending;
    }
    const double q = o - offsetCycle;

    // Second saw wraps, unless the master restarted the slave at or before that moment.
    if (edgePending && slave + q > 1.0) {
      const double t = (slave + q - 1.0) / (slaveInc + dO);
      if (!kSync || !((master - 1.0) / f >= t)) {
        addStep(polarity, t);
        edgePending = false;
      }
    }
    // Slave wraps, with the same proviso.
    if (slave > 1.0) {
      const double t = (slave - 1.0) / slaveInc;
      if (!kSync || !((master - 1.0) / f >= t)) {
        slave -= 1.0;
        addStep(1.0, t);
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
      addStep(a + b - aSynced - bSynced, t);
      if (slave + q > 1.0) {
        addStep(polarity, (slave + q - 1.0) / (slaveInc + dO));
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
  masterPhase_ = kSync ? master : slave;
  slavePhase_ = slave;
  edgePending_ = edgePending;
  offsetCycle_ = offsetCycle;
}

}  // namespace ziv
