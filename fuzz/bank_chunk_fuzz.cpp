// Fuzzes the bank chunk loader (the host's setChunk for the whole bank).
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/fuzz_target.h"
#include "programs/program_loader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ziv::fuzz::CheckingTarget target;
  ziv::fuzz::require(ziv::loadBankChunk(target, data, size).empty());
  ziv::fuzz::require(!target.bracketOpen());
  return 0;
}
