// Two shelving bands and the master gain; see master_eq.h.
#include "engine/effects/master_eq.h"

#include <cmath>
#include <initializer_list>

namespace ziv {
namespace {

constexpr float kLowShelfBase = 50.0f;        // Hz at normalised 0
constexpr float kLowShelfSpan = 4.6051702f;   // ln 100: 50 Hz to 5 kHz
constexpr float kHighShelfBase = 200.0f;      // Hz at normalised 0
constexpr float kHighShelfSpan = 4.4998097f;  // ln 90: 200 Hz to 18 kHz
// Master gain = 10^(kGainDecades g - kGainOffset) less a tiny bias.
constexpr double kGainDecades = 2.45;
constexpr double kGainOffset = 2.0;
constexpr double kGainBias = 1e-40;

}  // namespace

float MasterEq::lowShelfFrequency(float normalised) {
  return kLowShelfBase * std::exp(normalised * kLowShelfSpan);
}

float MasterEq::highShelfFrequency(float normalised) {
  return kHighShelfBase * std::exp(normalised * kHighShelfSpan);
}

float MasterEq::shelfFactor(float physicalGain) {
  return physicalGain + kShelfCentre;
}

float MasterEq::masterGain(float normalised) {
  return static_cast<float>(std::pow(10.0, kGainDecades * normalised - kGainOffset) - kGainBias);
}

void MasterEq::setSampleRate(float rate) {
  for (FilterElement* f : {&lowLeft_, &lowRight_, &highLeft_, &highRight_}) f->setSampleRate(rate);
}

void MasterEq::reset() {
  for (FilterElement* f : {&lowLeft_, &lowRight_, &highLeft_, &highRight_}) f->reset();
}

bool MasterEq::isSilent() const {
  return lowLeft_.isSilent() && lowRight_.isSilent() && highLeft_.isSilent() && highRight_.isSilent();
}

void MasterEq::render(float* left, float* right, int frames, const MasterEqSettings& settings) {
  const float lowHz = lowShelfFrequency(settings.freqLow);
  const float highHz = highShelfFrequency(settings.freqHigh);
  const float lowFactor = shelfFactor(settings.gainLow);
  const float highFactor = shelfFactor(settings.gainHigh);
  const float gain = masterGain(settings.gain);
  lowLeft_.aim(frames, FilterElement::kLowShelf, lowHz, kShelfQ, 1.0f, lowFactor);
  lowLeft_.render(left, frames);
  lowRight_.aim(frames, FilterElement::kLowShelf, lowHz, kShelfQ, 1.0f, lowFactor);
  lowRight_.render(right, frames);
  highLeft_.aim(frames, FilterElement::kHighShelf, highHz, kShelfQ, gain, highFactor);
  highLeft_.render(left, frames);
  highRight_.aim(frames, FilterElement::kHighShelf, highHz, kShelfQ, gain, highFactor);
  highRight_.render(right, frames);
}

}  // namespace ziv
