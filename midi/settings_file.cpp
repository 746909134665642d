#include "midi/settings_file.h"

#include "programs/byte_order.h"

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

namespace ziv {
namespace {

using FileBytes = std::array<std::uint8_t, kSettingsFileSize>;

void putLittle(FileBytes& bytes, std::size_t offset, std::int32_t value) {
  const auto bits = static_cast<std::uint32_t>(value);
  for (int i = 0; i < 4; ++i) bytes[offset + i] = static_cast<std::uint8_t>(bits >> (8 * i));
}

// Reads up to the whole file; -1 when it cannot be opened or read.
long readBytes(const char* path, FileBytes& bytes) {
#ifdef _WIN32
  const HANDLE file = CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return -1;
  DWORD count = 0;
  const BOOL read = ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr);
  CloseHandle(file);
  return read ? static_cast<long>(count) : -1;
#else
  const int file = open(path, O_RDONLY);
  if (file < 0) return -1;
  std::size_t count = 0;
  while (count < bytes.size()) {
    const ssize_t got = read(file, bytes.data() + count, bytes.size() - count);
    if (got <= 0) break;
    count += static_cast<std::size_t>(got);
  }
  close(file);
  return static_cast<long>(count);
#endif
}

bool writeBytes(const char* path, const FileBytes& bytes) {
#ifdef _WIN32
  const HANDLE file = CreateFileA(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                  CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  DWORD count = 0;
  const BOOL written = WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr);
  CloseHandle(file);
  return written && count == bytes.size();
#else
  const int file = open(path, O_WRONLY | O_CREAT | O_TRUNC, 0644);
  if (file < 0) return false;
  std::size_t count = 0;
  while (count < bytes.size()) {
    const ssize_t put = write(file, bytes.data() + count, bytes.size() - count);
    if (put <= 0) break;
    count += static_cast<std::size_t>(put);
  }
  close(file);
  return count == bytes.size();
#endif
}

}  // namespace

bool readSettingsFile(const char* path, ControllerEntries& entries) {
  if (path == nullptr || path[0] == '\0') return false;
  FileBytes bytes{};
  const long length = readBytes(path, bytes);
  if (length < 0) return false;
  // The format word is skipped; whole entries that arrived replace the old ones.
  ByteReader reader(bytes.data(), static_cast<std::size_t>(length));
  reader.skip(4);
  for (std::int32_t& entry : entries) {
    if (!reader.littleInt(entry)) break;
  }
  return true;
}

bool writeSettingsFile(const char* path, const ControllerEntries& entries) {
  if (path == nullptr || path[0] == '\0') return false;
  FileBytes bytes{};
  putLittle(bytes, 0, kSettingsFormatWord);
  for (std::size_t c = 0; c < entries.size(); ++c) putLittle(bytes, 4 + 4 * c, entries[c]);
  return writeBytes(path, bytes);
}

}  // namespace ziv
