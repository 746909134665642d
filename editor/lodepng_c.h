// lodepng's C interface for C++ code. The library is compiled from its C source, so its
// functions have C linkage; its optional C++ wrapper is not built and stays hidden.
#pragma once

#ifndef LODEPNG_NO_COMPILE_CPP
#define LODEPNG_NO_COMPILE_CPP
#endif

extern "C" {
#include "lodepng.h"
}
