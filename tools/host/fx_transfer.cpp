#include "tools/host/fx_transfer.h"

#include <algorithm>
#include <cctype>

#include "programs/program_format.h"

namespace vrnhost {

namespace fx = ziv::fx;

namespace {

std::uint32_t bigWordAt(const FxImage& image, std::size_t offset) {
  return std::uint32_t{image[offset]} << 24 | std::uint32_t{image[offset + 1]} << 16 |
         std::uint32_t{image[offset + 2]} << 8 | std::uint32_t{image[offset + 3]};
}

std::string fourCharacters(std::uint32_t word) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) {
    const char c = static_cast<char>(word >> shift);
    text += std::isprint(static_cast<unsigned char>(c)) ? c : '?';
  }
  return text;
}

// Header size of each form: the parameter-list forms have no chunk size field.
std::size_t headerSize(std::uint32_t form) {
  if (form == fx::kProgramValuesMagic) return fx::kProgramHeaderSize;
  if (form == fx::kProgramChunkMagic) return fx::kProgramChunkOffset;
  if (form == fx::kBankValuesMagic) return fx::kBankHeaderSize;
  return fx::kBankChunkOffset;
}

// The chunk after a header: its size field, cut to the bytes present.
std::size_t chunkSize(const FxImage& image, std::size_t header) {
  const std::size_t declared = bigWordAt(image, header - 4);
  return std::min(declared, image.size() - header);
}

std::string nameField(const FxImage& image, std::size_t offset) {
  std::string name(reinterpret_cast<const char*>(image.data()) + offset, fx::kNameBytes);
  return name.substr(0, name.find('\0'));
}

// One "FxCk" record at `offset`: its name and as many values as it holds and the plug-in has.
// Returns the record's size.
std::size_t loadValueRecord(PluginDriver& driver, const FxImage& image, std::size_t offset) {
  const std::size_t available = (image.size() - offset - fx::kProgramHeaderSize) / 4;
  const std::size_t count = bigWordAt(image, offset + 24);
  driver.beginSetProgram();
  driver.setCurrentProgramName(nameField(image, offset + 28));
  const std::size_t used = std::min({count, available, static_cast<std::size_t>(driver.parameterCount())});
  for (std::size_t i = 0; i < used; ++i) {
    const std::uint32_t bits = bigWordAt(image, offset + fx::kProgramHeaderSize + 4 * i);
    driver.setParameter(static_cast<int>(i), ziv::bitsToFloat(bits));
  }
  driver.endSetProgram();
  return fx::kProgramHeaderSize + 4 * std::min(count, available);
}

}  // namespace

FxKind fxKindOfPath(const std::string& path) {
  if (path.size() < 4) return FxKind::kNone;
  std::string extension = path.substr(path.size() - 4);
  for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return extension == ".fxp" ? FxKind::kProgram : extension == ".fxb" ? FxKind::kBank : FxKind::kNone;
}

bool checkFxImage(const FxImage& image, FxKind kind, std::string& error) {
  const bool bank = kind == FxKind::kBank;
  const char* what = bank ? "a bank file (.fxb)" : "a program file (.fxp)";
  if (image.size() < 12 || bigWordAt(image, 0) != fx::kFileMagic) {
    error = std::string("not ") + what + ": it does not start with 'CcnK'";
    return false;
  }
  const std::uint32_t form = bigWordAt(image, 8);
  const bool known = bank ? form == fx::kBankChunkMagic || form == fx::kBankValuesMagic
                          : form == fx::kProgramChunkMagic || form == fx::kProgramValuesMagic;
  if (!known) {
    error = std::string("not ") + what + ": its form is '" + fourCharacters(form) + "'";
    return false;
  }
  if (image.size() < headerSize(form)) {
    error = std::string("a truncated ") + (bank ? "bank file (.fxb)" : "program file (.fxp)") + " of " +
            std::to_string(image.size()) + " bytes";
    return false;
  }
  return true;
}

bool loadFxImage(PluginDriver& driver, const FxImage& image, FxKind kind, std::string& error) {
  if (!checkFxImage(image, kind, error)) return false;
  const std::uint32_t id = bigWordAt(image, 16);
  if (id != static_cast<std::uint32_t>(driver.uniqueId())) {
    error = "the file is for the plug-in with ID '" + fourCharacters(id) + "', not '" +
            fourCharacters(static_cast<std::uint32_t>(driver.uniqueId())) + "'";
    return false;
  }
  const std::uint32_t form = bigWordAt(image, 8);
  const std::size_t header = headerSize(form);
  if (form == fx::kProgramChunkMagic) {
    driver.beginSetProgram();
    driver.setCurrentProgramName(nameField(image, 28));
    driver.setChunk(true, image.data() + header, chunkSize(image, header));
    driver.endSetProgram();
  } else if (form == fx::kBankChunkMagic) {
    driver.setChunk(false, image.data() + header, chunkSize(image, header));
  } else if (form == fx::kProgramValuesMagic) {
    loadValueRecord(driver, image, 0);
  } else {
    const int programs =
        std::min<int>(static_cast<std::int32_t>(bigWordAt(image, 24)), driver.programCount());
    const int previous = driver.currentProgram();
    std::size_t offset = header;
    for (int k = 0; k < programs && image.size() - offset >= fx::kProgramHeaderSize; ++k) {
      if (bigWordAt(image, offset) != fx::kFileMagic) break;
      driver.setProgram(k);
      offset += loadValueRecord(driver, image, offset);
    }
    driver.setProgram(previous);
  }
  return true;
}

bool saveFxImage(PluginDriver& driver, FxKind kind, FxImage& image, std::string& error) {
  if (!driver.keepsChunks()) {
    error = "the plug-in keeps no state chunk, so its state cannot be saved";
    return false;
  }
  const bool program = kind == FxKind::kProgram;
  const FxImage chunk = driver.chunk(program);
  if (chunk.empty()) {
    error = "the plug-in returned an empty state chunk";
    return false;
  }
  image.clear();
  const auto id = static_cast<std::uint32_t>(driver.uniqueId());
  if (program) {
    fx::writeProgramFile(driver.currentProgramName().c_str(), driver.parameterCount(), chunk.data(),
                         chunk.size(), image, id);
  } else {
    fx::writeBankFile(fx::kFormatVersion, driver.programCount(), chunk.data(), chunk.size(), image, id);
  }
  return true;
}

}  // namespace vrnhost
