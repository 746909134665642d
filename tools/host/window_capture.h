// Screenshots of a window's client area as PNG files (lodepng's encoder), for the host's editor
// mode. The pixels are read back from the window's drawing context, so the window must be shown
// and painted. Windows only; user-interface thread.
#pragma once

#include <windows.h>

#include <string>

namespace vrnhost {

// Writes the window's client area to `path`; false with a reason when it cannot.
bool saveWindowPng(HWND window, const std::string& path, int& width, int& height, std::string& error);

}  // namespace vrnhost
