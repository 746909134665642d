// make_factory_bank: turns the readable preset list (presets/factory.txt) into the factory bank
// image and writes it twice: as a C++ source file holding one constant byte array, and as the bank
// file that is installed in the factory presets folder (the same bytes).
//
// The image is the legacy form the plug-in has always shipped: an "FBCh" bank file with header
// and chunk version 1011, whose 100 program chunks carry the first 106 parameters only (the two
// newest parameters take their defaults when the bank is loaded). Every value not named in the
// preset list is the parameter table's default, so the image follows the table.
//
// usage: make_factory_bank PRESETS OUTPUT.cpp OUTPUT.fxb
// (exit status 1 with "file:line: reason" on errors)
#include <cmath>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "engine/modulation/mod_routing.h"
#include "plugin/parameter_table.h"
#include "programs/factory_bank.h"
#include "programs/program_format.h"

namespace {

using ziv::Bytes;

constexpr std::int32_t kFactoryVersion = ziv::fx::kLastLegacyVersion;
constexpr int kBytesPerLine = 16;

struct Preset {
  std::string name;
  std::vector<float> values;  // normalised, kLegacyParamCount of them
};

std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string::npos) return "";
  const std::size_t last = text.find_last_not_of(" \t\r");
  return text.substr(first, last - first + 1);
}

std::vector<float> defaultValues() {
  std::vector<float> values;
  for (int i = 0; i < ziv::kLegacyParamCount; ++i)
    values.push_back(ziv::normalisedDefault(ziv::paramTable()[i]));
  return values;
}

// A modulation target's name ("FILTER 1: Cutoff", or "none") to the selector value that picks it.
bool normaliseTarget(const ziv::ModTargetList& list, const std::string& text, float& normalised,
                     std::string& error) {
  for (int position = 0; position < list.count; ++position) {
    const int target = list.targets[position];
    const char* name = target == ziv::kNoModTarget ? "none" : ziv::paramTable()[target].name;
    if (text == name) {
      normalised = static_cast<float>(position) / static_cast<float>(list.count - 1);
      return true;
    }
  }
  error = "'" + text + "' is not a target of this source";
  return false;
}

// A physical value ("0.35", "-1", or a choice's name) to the normalised value of `info`.
bool normalise(const ziv::ParamInfo& info, const std::string& text, float& normalised, std::string& error) {
  double physical = 0.0;
  bool found = false;
  for (int c = 0; c < info.choices.count; ++c) {
    if (text == info.choices.names[c]) {
      physical = info.lo + c;
      found = true;
    }
  }
  if (!found) {
    char* end = nullptr;
    physical = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !std::isfinite(physical)) {
      error = "'" + text + "' is not a number" + (info.choices.count > 0 ? " or a choice name" : "");
      return false;
    }
  }
  if (physical < info.lo || physical > info.hi) {
    error = "'" + text + "' is outside " + std::to_string(info.lo) + ".." + std::to_string(info.hi);
    return false;
  }
  if (info.kind != ziv::ParamKind::kContinuous && physical != std::floor(physical)) {
    error = "'" + text + "' must be a whole step";
    return false;
  }
  normalised = static_cast<float>((physical - info.lo) / (info.hi - info.lo));
  return true;
}

bool readPresets(const std::string& path, std::vector<Preset>& presets, std::string& error) {
  std::ifstream in(path);
  if (!in) {
    error = path + ": cannot open";
    return false;
  }
  std::string line;
  int lineNumber = 0;
  auto fail = [&](const std::string& reason) {
    error = path + ":" + std::to_string(lineNumber) + ": " + reason;
    return false;
  };
  while (std::getline(in, line)) {
    ++lineNumber;
    line = trimmed(line);
    if (line.empty() || line[0] == '#') continue;
    if (line.front() == '[') {
      if (line.back() != ']') return fail("a program line is [NAME]");
      const std::string name = line.substr(1, line.size() - 2);
      if (name.empty() || name.size() > ziv::ProgramRecord::kNameLength) {
        return fail("a program name has 1 to 24 characters");
      }
      for (const Preset& preset : presets) {
        if (preset.name == name) return fail("'" + name + "' is named twice");
      }
      presets.push_back({name, defaultValues()});
      continue;
    }
    if (presets.empty()) return fail("a setting before the first [NAME]");
    const std::size_t equals = line.rfind('=');
    if (equals == std::string::npos) return fail("a setting is PARAMETER NAME = VALUE");
    const std::string parameter = trimmed(line.substr(0, equals));
    const int index = ziv::findParam(parameter.c_str());
    if (index < 0 || index >= ziv::kHostParamCount) return fail("no parameter named '" + parameter + "'");
    if (index >= ziv::kLegacyParamCount) return fail("'" + parameter + "' is not stored in the factory bank");
    std::string reason;
    const std::string value = trimmed(line.substr(equals + 1));
    float& normalised = presets.back().values[index];
    const ziv::ModTargetList targets = ziv::modTargetsOfSelector(index);
    const bool ok = targets.count > 0
                        ? normaliseTarget(targets, value, normalised, reason)
                        : normalise(ziv::paramTable()[index], value, normalised, reason);
    if (!ok) {
      return fail(parameter + ": " + reason);
    }
  }
  if (static_cast<int>(presets.size()) != ziv::kBankProgramCount) {
    lineNumber = 0;
    return fail("the bank needs exactly " + std::to_string(ziv::kBankProgramCount) + " programs, not " +
                std::to_string(presets.size()));
  }
  return true;
}

Bytes bankImage(const std::vector<Preset>& presets) {
  Bytes chunk;
  ziv::appendLittle32(chunk, kFactoryVersion);
  for (const Preset& preset : presets) {
    ziv::appendPaddedText(chunk, preset.name.c_str(), ziv::fx::kNameBytes);
    ziv::appendLittle32(chunk, 4 + 4 * ziv::kLegacyParamCount);
    // A legacy program chunk: its version, then the values without a count.
    ziv::appendLittle32(chunk, kFactoryVersion);
    for (float value : preset.values) ziv::appendLittle32(chunk, ziv::floatBits(value));
  }
  Bytes image;
  ziv::fx::writeBankFile(kFactoryVersion, ziv::kBankProgramCount, chunk.data(), chunk.size(), image);
  return image;
}

bool writeSource(const std::string& path, const Bytes& image) {
  std::ostringstream out;
  out << "// Generated by make_factory_bank from presets/factory.txt; edit that file instead.\n"
      << "#include \"programs/factory_bank.h\"\n\nnamespace ziv {\n\n"
      << "const std::uint8_t kFactoryBankImage[kFactoryBankSize] = {\n";
  for (std::size_t i = 0; i < image.size(); ++i) {
    out << (i % kBytesPerLine == 0 ? "    " : " ") << static_cast<int>(image[i]) << ',';
    if (i % kBytesPerLine == kBytesPerLine - 1 || i + 1 == image.size()) out << '\n';
  }
  out << "};\n\n}  // namespace ziv\n";
  std::ofstream file(path, std::ios::binary);
  file << out.str();
  return static_cast<bool>(file);
}

bool writeBankFile(const std::string& path, const Bytes& image) {
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(image.data()), static_cast<std::streamsize>(image.size()));
  return static_cast<bool>(file);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: make_factory_bank PRESETS OUTPUT.cpp OUTPUT.fxb\n");
    return 1;
  }
  std::vector<Preset> presets;
  std::string error;
  if (!readPresets(argv[1], presets, error)) {
    std::fprintf(stderr, "%s\n", error.c_str());
    return 1;
  }
  const Bytes image = bankImage(presets);
  if (image.size() != ziv::kFactoryBankSize) {
    std::fprintf(stderr, "make_factory_bank: image of %zu bytes instead of %zu\n", image.size(),
                 ziv::kFactoryBankSize);
    return 1;
  }
  if (!writeSource(argv[2], image)) {
    std::fprintf(stderr, "make_factory_bank: cannot write %s\n", argv[2]);
    return 1;
  }
  if (!writeBankFile(argv[3], image)) {
    std::fprintf(stderr, "make_factory_bank: cannot write %s\n", argv[3]);
    return 1;
  }
  return 0;
}
