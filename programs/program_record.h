// One program of the bank: a name and a normalised value for every host-visible parameter.
//
// The value list has a fixed capacity, so a record never reallocates while the audio thread
// mirrors parameter changes into it. The values are shared: the audio thread writes the current
// program's (a MIDI program change, a learned controller) while the user-interface thread loads,
// saves or copies programs; each value stands alone and the last write wins. The name belongs to
// the user-interface thread.
#pragma once

#include <array>
#include <atomic>
#include <cstring>

#include "plugin/parameter_table.h"

namespace ziv {

// A float that any thread may read and write at once; relaxed order is all a value that stands
// alone needs. Copies copy the value.
class SharedFloat {
 public:
  SharedFloat(float value = 0.0f) : value_(value) {}
  SharedFloat(const SharedFloat& other) : value_(other.load()) {}
  SharedFloat& operator=(const SharedFloat& other) {
    store(other.load());
    return *this;
  }
  SharedFloat& operator=(float value) {
    store(value);
    return *this;
  }
  operator float() const { return load(); }

  float load() const { return value_.load(std::memory_order_relaxed); }
  void store(float value) { value_.store(value, std::memory_order_relaxed); }

 private:
  std::atomic<float> value_;
};

struct ProgramRecord {
  static constexpr int kNameLength = 24;

  char name[kNameLength + 1] = {};
  std::array<SharedFloat, kHostParamCount> values{};

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
