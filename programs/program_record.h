// One program of the bank: a name and a normalised value for every host-visible parameter.
//
// The value list has a fixed capacity, so a record never reallocates while the audio thread
// mirrors parameter changes into it.
#pragma once

#include <array>
#include <cstring>

#include "plugin/parameter_table.h"

namespace ziv {

struct ProgramRecord {
  static constexpr int kNameLength = 24;

  char name[kNameLength + 1] = {};
  std::array<float, kHostParamCount> values{};

  // Stores at most kNameLength characters of `text`; null is ignored.
  void setName(const char* text) {
    if (text == nullptr) return;
    std::size_t length = std::strlen(text);
    if (length > kNameLength) length = kNameLength;
    std::memcpy(name, text, length);
    name[length] = '\0';
  }
};

}  // namespace ziv
