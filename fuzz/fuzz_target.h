// The stand-in instance that the loader fuzz targets drive: a bank of its own that checks,
// on every call, what a loader may ask of a real instance. A broken rule traps, which libFuzzer
// reports as a crash with the input that caused it; reads outside the input are caught by
// AddressSanitizer, since libFuzzer hands over a buffer of exactly the input's size.
#pragma once

#include <cstring>

#include "programs/program_bank.h"
#include "programs/program_format.h"
#include "programs/program_target.h"

namespace ziv::fuzz {

inline void require(bool condition) {
  if (!condition) __builtin_trap();
}

class CheckingTarget : public ProgramTarget {
 public:
  int parameterCount() const override { return kHostParamCount; }
  int currentProgramIndex() const override { return current_; }
  void selectProgram(int index) override {
    current_ = index < 0 ? 0 : index >= kBankProgramCount ? kBankProgramCount - 1 : index;
  }
  void renameProgram(const char* name) override {
    require(name != nullptr);
    bank_[current_].setName(name);
    require(std::strlen(bank_[current_].name) <= static_cast<std::size_t>(ProgramRecord::kNameLength));
  }
  void loadValue(int index, float value) override {
    require(index >= 0);
    if (index < kHostParamCount) bank_[current_].values[index] = value;
  }
  int loadVersion() override { return version_; }
  void setLoadVersion(int version) override { version_ = version; }
  void beginProgramLoad() override {
    bracketOpen_ = true;
    version_ = 0;
  }
  void endProgramLoad() override {
    bracketOpen_ = false;
    version_ = fx::kFormatVersion;
  }

  bool bracketOpen() const { return bracketOpen_; }
  int version() const { return version_; }

 private:
  ProgramList bank_;
  int current_ = 0;
  int version_ = fx::kFormatVersion;
  bool bracketOpen_ = false;
};

}  // namespace ziv::fuzz
