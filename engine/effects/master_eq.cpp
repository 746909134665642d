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

void MasterEq::aim(int frames, const MasterEqSettings& settings) {
  // exp and pow run only when a knob moves, so an EQ at rest costs a few comparisons per span.
  const MasterEqSettings& last = lastSettings_;
  if (settings.freqLow != last.freqLow || settings.freqHigh != last.freqHigh ||
      settings.gainLow != last.gainLow || settings.gainHigh != last.gainHigh || settings.gain != last.gain) {
    lastSettings_ = settings;
    aimed_.lowHz = lowShelfFrequency(settings.freqLow);
    aimed_.highHz = highShelfFrequency(settings.freqHigh);
    aimed_.lowFactor = shelfFactor(settings.gainLow);
    aimed_.highFactor = shelfFactor(settings.gainHigh);
    aimed_.gain = masterGain(settings.gain);
  }
  const Shelves& s = aimed_;
  lowLeft_.aim(frames, FilterElement::kLowShelf, s.lowHz, kShelfQ, 1.0f, s.lowFactor);
  lowRight_.aim(frames, FilterElement::kLowShelf, s.lowHz, kShelfQ, 1.0f, s.lowFactor);
  highLeft_.aim(frames, FilterElement::kHighShelf, s.highHz, kShelfQ, s.gain, s.highFactor);
  highRight_.aim(frames, FilterElement::kHighShelf, s.highHz, kShelfQ, s.gain, s.highFactor);
}

void MasterEq::render(float* left, float* right, int frames) {
  FilterElement* const leftShelves[2] = {&lowLeft_, &highLeft_};
  FilterElement* const rightShelves[2] = {&lowRight_, &highRight_};
  FilterElement::renderStereoPairs(leftShelves, rightShelves, left, right, frames);
}

}  // namespace ziv
