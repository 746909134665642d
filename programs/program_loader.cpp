#include "programs/program_loader.h"

#include "programs/program_format.h"

namespace ziv {
namespace {

// Where a bank file's header names the plug-in it belongs to.
constexpr std::size_t kBankIdOffset = 16;
constexpr std::size_t kBankIdEnd = kBankIdOffset + 4;

// Reads the big-endian word at `offset`; the caller has checked that it lies inside the span.
std::uint32_t bigWordAt(const std::uint8_t* data, std::size_t offset) {
  ByteReader reader(data + offset, 4);
  std::uint32_t word = 0;
  reader.big32(word);
  return word;
}

// Number of whole 4-byte values available, capped by a count read from the data.
std::size_t valuesPresent(const ByteReader& reader, std::int64_t count) {
  if (count <= 0) return 0;
  const std::size_t available = reader.remaining() / 4;
  return static_cast<std::uint64_t>(count) < available ? static_cast<std::size_t>(count) : available;
}

// A length read from the data, cut to the bytes that remain.
std::size_t boundedLength(const ByteReader& reader, std::int32_t length) {
  if (length <= 0) return 0;
  const std::size_t wanted = static_cast<std::size_t>(length);
  return wanted < reader.remaining() ? wanted : reader.remaining();
}

void loadProgramValues(ProgramTarget& target, const std::uint8_t* data, std::size_t size) {
  ByteReader reader(data, size);
  std::int32_t version = 0;
  if (!reader.littleInt(version)) return;
  std::int32_t count = kLegacyParamCount;
  if (version > fx::kLastLegacyVersion && !reader.littleInt(count)) return;

  const int savedVersion = target.loadVersion();
  target.setLoadVersion(version);
  const std::size_t present = valuesPresent(reader, count);
  for (std::size_t i = 0; i < present; ++i) {
    float value = 0.0f;
    reader.littleFloat(value);
    target.loadValue(static_cast<int>(i), value);
  }
  target.setLoadVersion(savedVersion);
}

}  // namespace

std::string loadProgramChunk(ProgramTarget& target, const std::uint8_t* data, std::size_t size) {
  loadProgramValues(target, data, size);
  return {};
}

std::string loadBankChunk(ProgramTarget& target, const std::uint8_t* data, std::size_t size) {
  ByteReader reader(data, size);
  std::int32_t version = 0;
  if (!reader.littleInt(version)) return {};
  const int savedProgram = target.currentProgramIndex();

  target.beginProgramLoad();
  bool complete = true;
  for (int program = 0; program < kBankProgramCount; ++program) {
    char name[fx::kNameBytes + 1];
    std::int32_t length = 0;
    if (!reader.text(name, fx::kNameBytes) || !reader.littleInt(length)) {
      complete = false;
      break;
    }
    target.selectProgram(program);
    target.renameProgram(name);
    const std::size_t chunkSize = boundedLength(reader, length);
    loadProgramValues(target, reader.here(), chunkSize);
    reader.skip(chunkSize);
  }
  std::int32_t index = 0;
  const bool indexed = complete && version >= fx::kFirstIndexedBankVersion && reader.littleInt(index);
  target.selectProgram(indexed ? index : savedProgram);
  target.endProgramLoad();
  return {};
}

std::string loadProgramImage(ProgramTarget& target, const std::uint8_t* data, std::size_t size) {
  if (data == nullptr || size < fx::kProgramHeaderSize || bigWordAt(data, 0) != fx::kFileMagic) {
    return kInvalidProgram;
  }
  const std::uint32_t form = bigWordAt(data, 8);
  if (form == fx::kProgramChunkMagic && size < fx::kProgramChunkOffset) return kInvalidProgram;

  target.beginProgramLoad();
  char name[fx::kProgramFileNameBytes + 1];
  ByteReader nameField(data + 28, fx::kProgramFileNameBytes);
  nameField.text(name, fx::kProgramFileNameBytes);
  target.renameProgram(name);

  if (form == fx::kProgramValuesMagic) {
    ByteReader reader(data + fx::kProgramHeaderSize, size - fx::kProgramHeaderSize);
    const std::size_t present = valuesPresent(reader, static_cast<std::int32_t>(bigWordAt(data, 24)));
    for (std::size_t i = 0; i < present; ++i) {
      float value = 0.0f;
      reader.bigFloat(value);
      target.loadValue(static_cast<int>(i), value);
    }
  } else if (form == fx::kProgramChunkMagic) {
    // The chunk runs to the end of the image; the size field before it is not needed.
    loadProgramChunk(target, data + fx::kProgramChunkOffset, size - fx::kProgramChunkOffset);
  } else {
    // The program keeps its new name and the bracket stays open until the host closes it.
    return kInvalidProgram;
  }
  target.endProgramLoad();
  return {};
}

std::string loadBankImage(ProgramTarget& target, const std::uint8_t* data, std::size_t size) {
  if (data == nullptr || size < kBankIdEnd || bigWordAt(data, 0) != fx::kFileMagic) return kInvalidBank;
  // A bank saved by another plug-in parses as well as ours would, but its values would land on
  // unrelated parameters: it is refused by its plug-in ID rather than loaded as noise.
  if (bigWordAt(data, kBankIdOffset) != fx::kPluginId) return kInvalidBank;
  const std::uint32_t form = bigWordAt(data, 8);

  if (form == fx::kBankValuesMagic) {
    if (size < fx::kBankHeaderSize) return kInvalidBank;
    const std::int64_t numPrograms = static_cast<std::int32_t>(bigWordAt(data, 24));
    // Records are stepped by this plug-in's own parameter count, not the records' numParams.
    const std::size_t stride = fx::kProgramHeaderSize + 4 * static_cast<std::size_t>(target.parameterCount());
    const int savedProgram = target.currentProgramIndex();
    for (int k = 0; k < numPrograms && k < kBankProgramCount; ++k) {
      const std::size_t offset = fx::kBankHeaderSize + k * stride;
      // A record whose header is cut off ends a truncated bank.
      if (offset > size || size - offset < fx::kProgramHeaderSize) break;
      target.selectProgram(k);
      std::string message = loadProgramImage(target, data + offset, size - offset);
      if (!message.empty()) return message;
    }
    target.selectProgram(savedProgram);
    return {};
  }
  if (form == fx::kBankChunkMagic) {
    if (size < fx::kBankChunkOffset) return kInvalidBank;
    loadBankChunk(target, data + fx::kBankChunkOffset, size - fx::kBankChunkOffset);
    return {};
  }
  return kInvalidBank;
}

}  // namespace ziv
