// The choice between the baseline and the AVX2/FMA kernels; see isa.h.
#include "engine/isa.h"

#include <cstdlib>
#include <cstring>

namespace ziv::isa {
namespace {

bool detectAvx2() {
#if defined(ZIV_HAS_AVX2_PASS)
  // libgcc's detection also asks the operating system whether it saves the AVX registers.
  __builtin_cpu_init();
  return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
#else
  return false;
#endif
}

bool initialChoice() {
  const char* forced = std::getenv("VRNZIV_ISA");
  if (forced != nullptr && std::strcmp(forced, "baseline") == 0) return false;
  return avx2Supported();
}

}  // namespace

namespace detail {
// Set while the plug-in loads, before any instance exists; only read afterwards (tests aside).
bool useAvx2 = initialChoice();
}  // namespace detail

bool avx2Supported() {
  static const bool supported = detectAvx2();
  return supported;
}

Path chosen() {
  return detail::useAvx2 ? Path::kAvx2 : Path::kBaseline;
}

void choose(Path path) {
  detail::useAvx2 = path == Path::kAvx2 && avx2Supported();
}

}  // namespace ziv::isa
