// Sets flush-to-zero and denormals-are-zero for the lifetime of the object and restores the
// caller's floating-point control state afterwards. Every host process call creates one, so
// decaying filter and delay tails never fall into slow denormal arithmetic.
#pragma once

#include <xmmintrin.h>

namespace ziv {

class ScopedFlushDenormals {
 public:
  ScopedFlushDenormals() : saved_(_mm_getcsr()) { _mm_setcsr(saved_ | kFlushToZero | kDenormalsAreZero); }
  ~ScopedFlushDenormals() { _mm_setcsr(saved_); }
  ScopedFlushDenormals(const ScopedFlushDenormals&) = delete;
  ScopedFlushDenormals& operator=(const ScopedFlushDenormals&) = delete;

 private:
  static constexpr unsigned kFlushToZero = 0x8000;
  static constexpr unsigned kDenormalsAreZero = 0x0040;
  unsigned saved_;
};

}  // namespace ziv
