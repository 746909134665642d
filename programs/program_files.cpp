#include "programs/program_files.h"

#include <cstdio>
#include <memory>

#include "programs/program_loader.h"

namespace ziv {
namespace {

// No program or bank file comes near this size; a longer "file" (a folder reports a length of
// LONG_MAX on some systems) is not read.
constexpr long kMaxFileBytes = 64L << 20;

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePointer = std::unique_ptr<std::FILE, FileCloser>;

}  // namespace

std::string openErrorMessage(const std::string& path) {
  return "Error opening file '" + path + "'!";
}

std::string readErrorMessage(const std::string& path) {
  return "Error reading file '" + path + "'!";
}

std::string readFileImage(const std::string& path, Bytes& image) {
  FilePointer file(std::fopen(path.c_str(), "rb"));
  if (!file) return openErrorMessage(path);
  if (std::fseek(file.get(), 0, SEEK_END) != 0) return readErrorMessage(path);
  const long length = std::ftell(file.get());
  if (length < 0 || length > kMaxFileBytes || std::fseek(file.get(), 0, SEEK_SET) != 0) {
    return readErrorMessage(path);
  }
  image.resize(static_cast<std::size_t>(length));
  if (std::fread(image.data(), 1, image.size(), file.get()) != image.size()) return readErrorMessage(path);
  return {};
}

std::string loadProgramFile(ProgramTarget& target, const std::string& path) {
  Bytes image;
  std::string message = readFileImage(path, image);
  return message.empty() ? loadProgramImage(target, image.data(), image.size()) : message;
}

std::string loadBankFile(ProgramTarget& target, const std::string& path) {
  Bytes image;
  std::string message = readFileImage(path, image);
  return message.empty() ? loadBankImage(target, image.data(), image.size()) : message;
}

std::string saveFileImage(const std::string& path, const Bytes& image) {
  FilePointer file(std::fopen(path.c_str(), "wb"));
  if (!file) return openErrorMessage(path);
  std::fwrite(image.data(), 1, image.size(), file.get());
  return {};
}

}  // namespace ziv
