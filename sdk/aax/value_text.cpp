#include "sdk/aax/value_text.h"

#include <cstdlib>

namespace ziv::aax {

float constrainNormalised(double value) {
  return value > 1.0 ? 1.0f : value > 0.0 ? static_cast<float>(value) : 0.0f;
}

void valueText(VstTest* instance, int index, float normalised, char* text, std::size_t capacity) {
  if (text == nullptr || capacity == 0) return;
  if (instance == nullptr) {
    text[0] = '\0';
    return;
  }
  instance->engine().valueDisplay(index, constrainNormalised(normalised), text, capacity);
}

float parseValueText(const char* text) {
  return text != nullptr ? std::strtof(text, nullptr) : 0.0f;
}

}  // namespace ziv::aax
