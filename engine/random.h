// The engine's own source of random values (unison offsets, start phases, noise seeds).
//
// A linear congruential generator with the widely published constants 214013 / 2531011,
// returning bits 16..30 of its state: values 0..32767 in the same sequence on every platform
// and compiler. The C library's rand() is not used because its range differs between
// platforms and its state is shared with the whole host process.
#pragma once

#include <cstdint>

namespace ziv {

class Random {
 public:
  static constexpr int kMax = 32767;

  explicit Random(std::uint32_t seed = 1) : state_(seed) {}

  void seed(std::uint32_t seed) { state_ = seed; }

  // The next value, 0..kMax.
  int next() {
    state_ = state_ * 214013u + 2531011u;
    return static_cast<int>((state_ >> 16) & 0x7fffu);
  }

 private:
  std::uint32_t state_;
};

}  // namespace ziv
