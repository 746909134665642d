// How AAX parameter values map and read: AAX values are the instance's own normalised values
// 0..1, constrained to that range; text shows the instance's display text for a value and parses
// back as a plain number. Any thread, no allocation.
#pragma once

#include <cstddef>

#include "plugin/vst_test.h"

namespace ziv::aax {

// Clamps to 0..1; NaN gives 0.
float constrainNormalised(double value);

// The display text of parameter `index` at `normalised` (constrained first); empty for an index
// the instance does not have or no instance.
void valueText(VstTest* instance, int index, float normalised, char* text, std::size_t capacity);

// The number at the start of `text` by the standard string-to-float conversion (0 when there is
// none); AAX reports every parse as successful.
float parseValueText(const char* text);

}  // namespace ziv::aax
