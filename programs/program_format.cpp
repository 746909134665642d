#include "programs/program_format.h"

namespace ziv::fx {
namespace {

void appendFileHeader(Bytes& out, std::size_t fileSize, std::uint32_t formMagic, std::uint32_t fxId,
                      std::int32_t fxVersion, int count) {
  appendBig32(out, kFileMagic);
  appendBig32(out, static_cast<std::uint32_t>(fileSize - kByteSizeExcluded));
  appendBig32(out, formMagic);
  appendBig32(out, kFileFormatVersion);
  appendBig32(out, fxId);
  appendBig32(out, static_cast<std::uint32_t>(fxVersion));
  appendBig32(out, static_cast<std::uint32_t>(count));
}

}  // namespace

void writeProgramChunk(const ProgramRecord& record, int valueCount, Bytes& out) {
  appendLittle32(out, kFormatVersion);
  appendLittle32(out, static_cast<std::uint32_t>(valueCount));
  for (int i = 0; i < valueCount; ++i) appendLittle32(out, floatBits(record.values[i]));
}

void writeBankChunk(const ProgramList& programs, int currentProgram, int valueCount, Bytes& out) {
  appendLittle32(out, kFormatVersion);
  for (const ProgramRecord& program : programs) {
    appendPaddedText(out, program.name, kNameBytes);
    appendLittle32(out, static_cast<std::uint32_t>(programChunkSize(valueCount)));
    writeProgramChunk(program, valueCount, out);
  }
  appendLittle32(out, static_cast<std::uint32_t>(currentProgram));
}

void writeProgramFile(const char* name, int numParams, const std::uint8_t* chunk, std::size_t chunkSize,
                      Bytes& out, std::uint32_t fxId) {
  appendFileHeader(out, kProgramChunkOffset + chunkSize, kProgramChunkMagic, fxId, kFormatVersion, numParams);
  // The name field is 28 bytes, of which a name fills at most 24.
  appendPaddedText(out, name, kNameBytes);
  out.insert(out.end(), kProgramFileNameBytes - kNameBytes, 0);
  appendBig32(out, static_cast<std::uint32_t>(chunkSize));
  out.insert(out.end(), chunk, chunk + chunkSize);
}

void writeBankFile(std::int32_t fxVersion, int numPrograms, const std::uint8_t* chunk, std::size_t chunkSize,
                   Bytes& out, std::uint32_t fxId) {
  appendFileHeader(out, kBankChunkOffset + chunkSize, kBankChunkMagic, fxId, fxVersion, numPrograms);
  out.insert(out.end(), kReservedBytes, 0);
  appendBig32(out, static_cast<std::uint32_t>(chunkSize));
  out.insert(out.end(), chunk, chunk + chunkSize);
}

}  // namespace ziv::fx
