// The master EQ and gain, after the delay: a low shelf then a high shelf on each channel, both
// instances of the engine's shared filter element (cookbook shelves with the factor A passed
// directly, so a band's gain at its extreme is A^2), with the master gain as the overall gain
// of the high-shelf stage.
//
// Low shelf: 50 Hz to 5 kHz (exponential in the normalised "MASTER: EQ Freq Low"); high shelf:
// 200 Hz to 18 kHz (exponential in the normalised "MASTER: EQ Freq High"). Shelf factors are the
// "MASTER: EQ Gain ..." physical values (-1..1) plus 1.1, so 0.1 to 2.1 with 1.1 at the centre:
// the centre setting is not flat, it lifts each band to 1.21 (+1.66 dB) at its extreme, as the
// shelf design defines it. Master gain = 10^(2.45 g - 2) (0.01 to 2.82, exactly 1 at the default
// g = 0.81632656). Both shelves use Q = 1/sqrt(2), the cookbook's steepest slope without a bump.
// The filter element slews its frequency per aimed span and ramps its coefficients per sample,
// so moving knobs do not zipper.
#pragma once

#include <limits>

#include "engine/filter_element.h"

namespace ziv {

struct MasterEqSettings {
  float freqLow = 0.5f;      // "MASTER: EQ Freq Low", normalised
  float freqHigh = 0.5f;     // "MASTER: EQ Freq High", normalised
  float gainLow = 0.0f;      // "MASTER: EQ Gain Low", physical -1..1
  float gainHigh = 0.0f;     // "MASTER: EQ Gain High", physical -1..1
  float gain = 0.81632656f;  // "MASTER: Gain", normalised
};

class MasterEq {
 public:
  static constexpr float kShelfQ = 0.70710678f;
  static constexpr float kShelfCentre = 1.1f;  // shelf factor at the centre of the gain knobs

  static float lowShelfFrequency(float normalised);   // Hz
  static float highShelfFrequency(float normalised);  // Hz
  static float shelfFactor(float physicalGain);       // the cookbook's A
  static float masterGain(float normalised);          // linear factor

  // Audio thread (between blocks), or any thread while the engine does not render.
  void setSampleRate(float rate);
  // Clears the filters' history (the element then crossfades in over 20 samples) and lets the
  // next aim take its settings without slew. Audio thread, or any thread while the engine does
  // not render.
  void reset();
  // Control: sets the shelves and gain to reach these settings after exactly `frames`
  // (1..kMaxBlock) samples, from where the samples rendered so far left them. Audio thread.
  void aim(int frames, const MasterEqSettings& settings);
  // Audio: the next `frames` samples of the aimed span, both channels in place. Audio thread.
  void render(float* left, float* right, int frames);
  // True when every filter's two most recent outputs are at most the silence threshold. Audio
  // thread.
  bool isSilent() const;

 private:
  static constexpr float kNotAimed = std::numeric_limits<float>::quiet_NaN();
  FilterElement lowLeft_, lowRight_, highLeft_, highRight_;
  // The settings of the last aim (NaN: none yet) and the shelves and gain they gave.
  MasterEqSettings lastSettings_{kNotAimed, kNotAimed, kNotAimed, kNotAimed, kNotAimed};
  // The shelves and gain the last settings gave: exp and pow run only when a knob moves.
  struct Shelves {
    float lowHz = 0.0f, highHz = 0.0f, lowFactor = 1.0f, highFactor = 1.0f, gain = 1.0f;
  };
  Shelves aimed_;
};

}  // namespace ziv
