// The settings file that keeps the learned controller map, 516 bytes, little-endian:
// an int32 format word (written as 3, ignored on reading), then 128 int32 entries, controller 0
// first, each a parameter index or -1.
//
// Both operations run on the audio thread when a learn completes or another instance has
// rewritten the file, so they use the operating system's file calls directly: no allocation, no
// exception, one read or one write of a stack buffer.
// Threads: any; nothing is shared between calls.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace ziv {

constexpr int kControllerCount = 128;
constexpr std::int32_t kSettingsFormatWord = 3;
constexpr std::size_t kSettingsFileSize = 4 + 4 * kControllerCount;

using ControllerEntries = std::array<std::int32_t, kControllerCount>;

// Reads the entries present in the file at `path` (a null or empty path opens nothing) into
// `entries`; entries past the end of a short file are left as they were. Returns false when the
// file cannot be opened or read.
bool readSettingsFile(const char* path, ControllerEntries& entries);

// Replaces the file at `path` with the format word and `entries`. Returns false when the file
// cannot be opened or not all of it was written.
bool writeSettingsFile(const char* path, const ControllerEntries& entries);

}  // namespace ziv
