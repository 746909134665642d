// The two builds of the audio kernels in one binary, and the choice between them.
//
// Every x86-64 processor runs the baseline (SSE2) code. Processors with AVX2 and FMA run a second
// build of the same rendering code, which the compiler vectorises four doubles or eight floats
// wide instead of two or four. The choice is made once per process, when the plug-in loads:
// AVX2 when the processor and the operating system support it, unless the environment variable
// VRNZIV_ISA is "baseline" (for tests and for comparing the paths).
//
// How a unit takes part: its rendering is a member template over the instruction set,
// `template <class Isa> void renderWith(float*, int)`, next to its other code in the unit's own
// file. That file is compiled twice (see engine/CMakeLists.txt): as usual, and again with
// -mavx2 -mfma and ZIV_AVX2_PASS defined, when only its rendering section is compiled, for
// isa::Avx2. Both passes keep -ffp-contract=off, so the paths compute the same samples
// bit for bit. The unit's plain `render` (baseline pass) calls `isa::dispatch` to pick one.
// A function compiled in the AVX2 pass must not be shared with the baseline code: everything it
// defines is a template over isa::Avx2 or has internal linkage (a test checks the objects).
#pragma once

namespace ziv::isa {

// The instruction-set tags the kernels are instantiated for.
struct Baseline {};
struct Avx2 {};

// The tag of the pass being compiled.
#if defined(ZIV_AVX2_PASS)
using Compiled = Avx2;
#else
using Compiled = Baseline;
#endif

enum class Path { kBaseline, kAvx2 };

// The path this process renders with.
Path chosen();
// True when the AVX2 pass is built in and the processor and the operating system run it.
bool avx2Supported();
// Renders with `path` from now on (AVX2 only where supported; otherwise ignored). For tests and
// benchmarks: never while the engine renders.
void choose(Path path);

namespace detail {
extern bool useAvx2;
}

// Calls kernel(Avx2{}) or kernel(Baseline{}), as chosen.
template <class Kernel>
inline void dispatch(Kernel&& kernel) {
#if defined(ZIV_HAS_AVX2_PASS)
  if (detail::useAvx2) {
    kernel(Avx2{});
    return;
  }
#endif
  kernel(Baseline{});
}

}  // namespace ziv::isa
