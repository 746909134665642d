// Fuzzes the program chunk loader (the host's setChunk for one program).
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/fuzz_target.h"
#include "programs/program_loader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ziv::fuzz::CheckingTarget target;
  ziv::fuzz::require(ziv::loadProgramChunk(target, data, size).empty());
  // The loader restores the version it found.
  ziv::fuzz::require(target.version() == ziv::fx::kFormatVersion);
  return 0;
}
