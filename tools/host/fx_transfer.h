// Program (.fxp) and bank (.fxb) files between disk images and a running plug-in, the way a DAW
// moves them: the file header is the host's business, the chunk inside is handed to the plug-in
// untouched (effSetChunk / effGetChunk). The parameter-list forms ("FxCk", "FxBk") are loaded
// value by value. Images are in memory, so the Windows host can apply them without touching the
// Linux side's files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/host/plugin_driver.h"

namespace vrnhost {

enum class FxKind { kNone, kProgram, kBank };

using FxImage = std::vector<std::uint8_t>;

// The kind a file name's extension (.fxp / .fxb, any case) stands for; kNone for others.
FxKind fxKindOfPath(const std::string& path);

// Checks that `image` is a program or bank file whose header is whole; false with the reason.
bool checkFxImage(const FxImage& image, FxKind kind, std::string& error);

// Loads a checked image into the plug-in; false when it belongs to another plug-in.
bool loadFxImage(PluginDriver& driver, const FxImage& image, FxKind kind, std::string& error);

// The plug-in's current program (kProgram) or whole bank (kBank) as a file image, from its chunk.
bool saveFxImage(PluginDriver& driver, FxKind kind, FxImage& image, std::string& error);

}  // namespace vrnhost
