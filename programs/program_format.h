// The byte forms of programs and banks, and their writers.
//
// Program chunk (little-endian): int32 version 1033, int32 count, count float32 values. Before
// version 1012 a program chunk held exactly 106 values and no count. Bank chunk: int32 version,
// then for each of the 100 programs a 24-byte zero-padded name (no terminator when 24 long), an
// int32 length and that program's chunk, then (from version 1024) the current program's index.
// The .fxp and .fxb files wrap a chunk in the VST 2.4 big-endian header ("CcnK" with "FPCh" or
// "FBCh"); "FxCk"/"FxBk" files carry plain big-endian values instead and are only ever read.
//
// Writers append to a byte vector and allocate only when its capacity is short: callers that
// must not allocate reserve bankChunkSize() or programChunkSize() first. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "programs/byte_order.h"
#include "programs/program_bank.h"
#include "sdk/vst2/aeffect.h"

namespace ziv::fx {

constexpr std::int32_t kFormatVersion = 1033;
// Program chunks up to this version hold kLegacyParamCount values and no count.
constexpr std::int32_t kLastLegacyVersion = 1011;
// Bank chunks from this version on end with the current program's index.
constexpr std::int32_t kFirstIndexedBankVersion = 1024;

constexpr std::size_t kNameBytes = ProgramRecord::kNameLength;
constexpr std::size_t kProgramFileNameBytes = 28;
// "FxCk" header; an "FPCh" file adds the chunk size and its chunk starts after it.
constexpr std::size_t kProgramHeaderSize = 56;
constexpr std::size_t kProgramChunkOffset = 60;
// "FxBk" header; an "FBCh" file adds the chunk size and its chunk starts after it.
constexpr std::size_t kBankHeaderSize = 156;
constexpr std::size_t kBankChunkOffset = 160;
// byteSize counts the file from offset 8.
constexpr std::size_t kByteSizeExcluded = 8;
constexpr std::size_t kReservedBytes = 128;

constexpr std::uint32_t kFileMagic = vst2::fourCharCode('C', 'c', 'n', 'K');
constexpr std::uint32_t kProgramChunkMagic = vst2::fourCharCode('F', 'P', 'C', 'h');
constexpr std::uint32_t kProgramValuesMagic = vst2::fourCharCode('F', 'x', 'C', 'k');
constexpr std::uint32_t kBankChunkMagic = vst2::fourCharCode('F', 'B', 'C', 'h');
constexpr std::uint32_t kBankValuesMagic = vst2::fourCharCode('F', 'x', 'B', 'k');
constexpr std::uint32_t kFileFormatVersion = 1;
constexpr std::uint32_t kPluginId = vst2::fourCharCode('V', 'r', 'n', '1');

constexpr std::size_t programChunkSize(int valueCount) {
  return 8 + 4 * static_cast<std::size_t>(valueCount);
}
constexpr std::size_t bankChunkSize(int valueCount) {
  return 4 + kBankProgramCount * (kNameBytes + 4 + programChunkSize(valueCount)) + 4;
}

// Appends the current-form chunk of `record`: its first `valueCount` values.
void writeProgramChunk(const ProgramRecord& record, int valueCount, Bytes& out);

// Appends the current-form chunk of the whole bank with `currentProgram` as its trailing index.
void writeBankChunk(const ProgramList& programs, int currentProgram, int valueCount, Bytes& out);

// Appends an "FPCh" program file around `chunk`: the name cut to 24 bytes, numParams as given.
// fxId names the plug-in the file belongs to.
void writeProgramFile(const char* name, int numParams, const std::uint8_t* chunk, std::size_t chunkSize,
                      Bytes& out, std::uint32_t fxId = kPluginId);

// Appends an "FBCh" bank file around `chunk` with the given header version and program count.
void writeBankFile(std::int32_t fxVersion, int numPrograms, const std::uint8_t* chunk, std::size_t chunkSize,
                   Bytes& out, std::uint32_t fxId = kPluginId);

}  // namespace ziv::fx
