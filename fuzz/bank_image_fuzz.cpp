// Fuzzes the .fxb image loader, which also runs the program image loader for "FxBk" banks.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/fuzz_target.h"
#include "programs/program_loader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ziv::fuzz::CheckingTarget target;
  const std::string message = ziv::loadBankImage(target, data, size);
  ziv::fuzz::require(message.empty() || message == ziv::kInvalidBank || message == ziv::kInvalidProgram);
  return 0;
}
