// Reading programs and banks from bytes: the host chunk forms and the .fxp/.fxb file images.
//
// Every loader reads only inside the span it is given. Valid data loads exactly as the format
// says; data that ends early loads what is complete and ignores the rest, and counts or
// lengths that point past the end are cut to the bytes present. A result is a message: empty
// for success, otherwise one of kInvalidBank / kInvalidProgram (file images whose magic words
// are foreign, or too short to hold their headers; bank files of another plug-in ID).
// Threads: the caller's; the loaders only call the target.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "programs/program_target.h"

namespace ziv {

constexpr const char* kInvalidBank = "Invalid bank!";
constexpr const char* kInvalidProgram = "Invalid program!";

// Loads a program chunk into the current program, under the chunk's own format version.
std::string loadProgramChunk(ProgramTarget& target, const std::uint8_t* data, std::size_t size);

// Loads a bank chunk program by program inside the set-program bracket, then selects the
// chunk's current program (versions from 1024) or returns to the one current before.
std::string loadBankChunk(ProgramTarget& target, const std::uint8_t* data, std::size_t size);

// Loads an .fxp image ("FPCh" or "FxCk") into the current program. A foreign form word after a
// valid header renames the program, answers kInvalidProgram and leaves the bracket open.
std::string loadProgramImage(ProgramTarget& target, const std::uint8_t* data, std::size_t size);

// Loads an .fxb image ("FBCh" or "FxBk", at most the first 100 programs of the latter).
std::string loadBankImage(ProgramTarget& target, const std::uint8_t* data, std::size_t size);

}  // namespace ziv
