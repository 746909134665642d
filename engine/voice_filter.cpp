// Control mapping and the VOX formant filter of the voice filters; see voice_filter.h.
#include "engine/voice_filter.h"

#include <algorithm>
#include <cmath>

namespace ziv {

namespace {

constexpr float kLowestCutoffHz = 20.0f;     // cutoff 0
constexpr float kCutoffOctaves = 10.0f;      // cutoff 1 is 2^10 x 20 Hz = 20480 Hz
constexpr float kKeyTrackReference = 60.0f;  // middle C: key tracking leaves its cutoff alone
constexpr float kSemitonesPerOctave = 12.0f;
constexpr float kEnvelopeOctaves = 8.0f;  // full Env Amt at full envelope level
constexpr float kButterworthQ = 0.70710678f;
constexpr float kMaxQ = 25.0f;
constexpr float kPassBandCompensation = 0.5f;  // LP/HP: exponent of (0.707 / Q)
constexpr float kBandPassLift = 0.25f;         // BP: exponent of (Q / 0.707)

// VOX: Q 0 doubles the table's bandwidths, Q 1 quarters them (3 octaves of bandwidth).
constexpr float kVoxBandwidthOctavesAtZero = 1.0f;
constexpr float kVoxBandwidthOctaveSpan = 3.0f;
// The table's levels are the spectral peaks of spoken vowels. The band-passes only pick the source's
// harmonics near each formant, and a saw's harmonics already fall 6 dB per octave, so the upper
// formants are lifted by 6 dB per octave above F1 to arrive at the table's balance.
constexpr float kSourceTiltDbPerOctave = 6.0f;
// Parallel band-passes keep only the harmonics near the formants; this restores the level of a
// bright source to about that of the LP mode at a middle setting.
constexpr float kVoxMakeup = 2.0f;

float dbToGain(float db) {
  return std::pow(10.0f, db / 20.0f);
}

}  // namespace

// Formant frequencies and levels: average adult male values of the ten American English vowels
// in Peterson and Barney's 1952 study of the vowels (h-vowel-d words), levels relative to the
// strongest formant. Bandwidths: typical adult values of the phonetics literature (about 80,
// 100 and 130 Hz for F1, F2, F3). Ordered from dark to bright so that a sweep morphs through
// neighbouring vowels.
const VoiceFilter::Vowel VoiceFilter::kVowelTable[kVowels] = {
    {"oo (who'd)", {300.0f, 870.0f, 2240.0f}, {80.0f, 100.0f, 130.0f}, {-3.0f, -19.0f, -43.0f}},
    {"u (hood)", {440.0f, 1020.0f, 2240.0f}, {80.0f, 100.0f, 130.0f}, {-1.0f, -12.0f, -34.0f}},
    {"aw (hawed)", {570.0f, 840.0f, 2410.0f}, {80.0f, 100.0f, 130.0f}, {0.0f, -7.0f, -34.0f}},
    {"ah (hod)", {730.0f, 1090.0f, 2440.0f}, {80.0f, 100.0f, 130.0f}, {-1.0f, -5.0f, -28.0f}},
    {"uh (hud)", {640.0f, 1190.0f, 2390.0f}, {80.0f, 100.0f, 130.0f}, {-1.0f, -10.0f, -27.0f}},
    {"er (heard)", {490.0f, 1350.0f, 1690.0f}, {80.0f, 100.0f, 130.0f}, {-5.0f, -15.0f, -20.0f}},
    {"ae (had)", {660.0f, 1720.0f, 2410.0f}, {80.0f, 100.0f, 130.0f}, {-1.0f, -12.0f, -22.0f}},
    {"eh (head)", {530.0f, 1840.0f, 2480.0f}, {80.0f, 100.0f, 130.0f}, {-2.0f, -17.0f, -24.0f}},
    {"ih (hid)", {390.0f, 1990.0f, 2550.0f}, {80.0f, 100.0f, 130.0f}, {-3.0f, -23.0f, -27.0f}},
    {"ee (heed)", {270.0f, 2290.0f, 3010.0f}, {80.0f, 100.0f, 130.0f}, {-4.0f, -24.0f, -28.0f}},
};

void VoiceFilter::setSampleRate(float rate) {
  for (FilterElement& e : elements_) e.setSampleRate(rate);
}

void VoiceFilter::reset() {
  for (FilterElement& e : elements_) e.reset();
  voxGainsValid_ = false;
}

bool VoiceFilter::isSilent() const {
  for (const FilterElement& e : elements_)
    if (!e.isSilent()) return false;
  return true;
}

namespace {

float cutoffOctaves(const VoiceFilterInput& in) {
  return kCutoffOctaves * in.cutoff + in.keyTracking * (in.pitch - kKeyTrackReference) / kSemitonesPerOctave +
         kEnvelopeOctaves * in.envAmount * in.envLevel;
}

}  // namespace

float VoiceFilter::cutoffHz(const VoiceFilterInput& in) {
  return kLowestCutoffHz * std::exp2(cutoffOctaves(in));
}

float VoiceFilter::resonance(float q) {
  const float clamped = std::min(std::max(q, 0.0f), 1.0f);
  return kButterworthQ * std::pow(kMaxQ / kButterworthQ, clamped);
}

float VoiceFilter::voxPosition(const VoiceFilterInput& in) {
  return std::min(std::max(cutoffOctaves(in) / kCutoffOctaves, 0.0f), 1.0f);
}

void VoiceFilter::voxFormants(float position, float q, float* frequency, float* formantQ, float* gain) {
  const float x = std::min(std::max(position, 0.0f), 1.0f) * (kVowels - 1);
  const int i = std::min(static_cast<int>(x), kVowels - 2);
  const float t = x - i;
  const Vowel& a = kVowelTable[i];
  const Vowel& b = kVowelTable[i + 1];
  const float clampedQ = std::min(std::max(q, 0.0f), 1.0f);
  const float bandwidthScale = std::exp2(kVoxBandwidthOctavesAtZero - kVoxBandwidthOctaveSpan * clampedQ);
  float firstFrequency = 0.0f;
  for (int k = 0; k < kFormants; ++k) {
    // Frequencies move geometrically (as the ear hears them), bandwidths and levels linearly.
    const float f = a.frequency[k] * std::pow(b.frequency[k] / a.frequency[k], t);
    const float bw = (a.bandwidth[k] + (b.bandwidth[k] - a.bandwidth[k]) * t) * bandwidthScale;
    float db = a.levelDb[k] + (b.levelDb[k] - a.levelDb[k]) * t;
    if (k == 0) {
      firstFrequency = f;
    } else {
      db += kSourceTiltDbPerOctave * std::log2(f / firstFrequency);
    }
    frequency[k] = f;
    formantQ[k] = f / bw;
    // Alternating signs keep neighbouring band-passes from cancelling between their peaks.
    gain[k] = (k % 2 == 0 ? 1.0f : -1.0f) * kVoxMakeup * dbToGain(db);
  }
}

void VoiceFilter::aim(int frames, const VoiceFilterInput& in) {
  const int mode = (in.mode >= kFilterLowPass && in.mode <= kFilterVox) ? in.mode : kFilterLowPass;
  if (mode != mode_ && (mode == kFilterVox || mode_ == kFilterVox)) {
    // VOX starts or stops. The upper formant elements are cleared so that they neither hold the
    // voice open nor replay stale history when VOX comes back. The first element restarts too
    // (its old ringing fades out): it changes from the first formant's resonance to the cutoff's,
    // and history carried across such jumps, repeated every span at high Q, pumps energy in
    // until the output runs away.
    for (FilterElement& e : elements_) e.reset();
  }
  if (mode != kFilterVox) voxGainsValid_ = false;
  mode_ = mode;
  if (mode == kFilterVox) {
    aimVox(frames, in);
    return;
  }
  const float octaves = cutoffOctaves(in);
  if (octaves != cutoffOctaves_) {
    cutoffOctaves_ = octaves;
    cutoffHz_ = kLowestCutoffHz * std::exp2(octaves);
  }
  if (in.q != qSetting_) {
    qSetting_ = in.q;
    resonance_ = resonance(in.q);
  }
  const float q = resonance_;
  const bool bandPass = mode == kFilterBandPass;
  if (q != gainResonance_ || bandPass != (gainMode_ == kFilterBandPass)) {
    gainResonance_ = q;
    gainMode_ = mode;
    modeGain_ = bandPass ? std::pow(q / kButterworthQ, kBandPassLift)
                         : std::pow(kButterworthQ / q, kPassBandCompensation);
  }
  const int shape = bandPass                  ? FilterElement::kBandPass
                    : mode == kFilterHighPass ? FilterElement::kHighPass
                                              : FilterElement::kLowPass;
  elements_[0].aim(frames, shape, cutoffHz_, q, modeGain_);
}

void VoiceFilter::aimVox(int frames, const VoiceFilterInput& in) {
  frames = std::max(frames, 1);  // an empty span (a caller's error) reaches its gains in one sample
  float frequency[kFormants], formantQ[kFormants];
  voxFormants(voxPosition(in), in.q, frequency, formantQ, voxTarget_);
  if (!voxGainsValid_) std::copy(voxTarget_, voxTarget_ + kFormants, voxGain_);
  voxGainsValid_ = true;
  const float step = 1.0f / frames;
  for (int k = 0; k < kFormants; ++k) {
    voxStep_[k] = (voxTarget_[k] - voxGain_[k]) * step;
    elements_[k].aim(frames, FilterElement::kBandPass, frequency[k], formantQ[k], 1.0f);
  }
  voxRampLeft_ = frames;
}

void VoiceFilter::render(float* buf, int frames) {
  if (mode_ == kFilterVox) {
    renderVox(buf, frames);
  } else {
    elements_[0].render(buf, frames);
  }
}

void VoiceFilter::renderVox(float* buf, int frames) {
  // The formant gains scale each element's input (ramped per sample) rather than its output, so
  // a gain change passes through the formant's resonance instead of stepping its ringing.
  for (int start = 0; start < frames; start += kMaxBlock) {
    const int n = std::min(kMaxBlock, frames - start);
    const int ramped = std::min(n, voxRampLeft_);
    const bool spanEnds = ramped == voxRampLeft_;
    float* x = buf + start;
    for (int k = kFormants - 1; k >= 0; --k) {
      float* y = k == 0 ? x : scratch_[k - 1];
      float g = voxGain_[k];
      const float dg = voxStep_[k];
      int i = 0;
      for (; i < ramped; ++i) {
        g += dg;
        y[i] = x[i] * g;
      }
      // Past the span's end its gain holds exactly (not the sum of the steps).
      if (spanEnds) g = voxTarget_[k];
      for (; i < n; ++i) y[i] = x[i] * g;
      voxGain_[k] = g;
      elements_[k].render(y, n);
    }
    voxRampLeft_ -= ramped;
    for (int k = 1; k < kFormants; ++k)
      for (int i = 0; i < n; ++i) x[i] += scratch_[k - 1][i];
  }
}

}  // namespace ziv
