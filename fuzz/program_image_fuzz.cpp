// Fuzzes the .fxp image loader.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/fuzz_target.h"
#include "programs/program_loader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ziv::fuzz::CheckingTarget target;
  const std::string message = ziv::loadProgramImage(target, data, size);
  ziv::fuzz::require(message.empty() || message == ziv::kInvalidProgram);
  // Only a refused form word leaves the set-program bracket open.
  ziv::fuzz::require(!(message.empty() && target.bracketOpen()));
  return 0;
}
