// Program and bank files on disk: reading a whole .fxp/.fxb into memory for the image loaders,
// and writing a finished image. Results are messages, empty for success:
// "Error opening file '<path>'!" and "Error reading file '<path>'!" with the path as given, or
// the loader's own message. User-interface thread (file I/O never runs on the audio thread).
#pragma once

#include <string>

#include "programs/byte_order.h"
#include "programs/program_target.h"

namespace ziv {

std::string openErrorMessage(const std::string& path);
std::string readErrorMessage(const std::string& path);

// Reads the whole file at `path` into `image`.
std::string readFileImage(const std::string& path, Bytes& image);

std::string loadProgramFile(ProgramTarget& target, const std::string& path);
std::string loadBankFile(ProgramTarget& target, const std::string& path);

// Writes `image` to `path` ("wb"); only a failure to open is reported, as for every save.
std::string saveFileImage(const std::string& path, const Bytes& image);

}  // namespace ziv
