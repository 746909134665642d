#include "tools/host/window_capture.h"

#include <cstdint>
#include <vector>

#include "editor/lodepng_c.h"

namespace vrnhost {

bool saveWindowPng(HWND window, const std::string& path, int& width, int& height, std::string& error) {
  RECT client{};
  GetClientRect(window, &client);
  width = client.right - client.left;
  height = client.bottom - client.top;
  if (width <= 0 || height <= 0) {
    error = "the window has no pixels to capture";
    return false;
  }

  BITMAPINFO header{};
  header.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
  header.bmiHeader.biWidth = width;
  header.bmiHeader.biHeight = -height;  // rows top first, as PNG stores them
  header.bmiHeader.biPlanes = 1;
  header.bmiHeader.biBitCount = 32;
  header.bmiHeader.biCompression = BI_RGB;
  void* bits = nullptr;
  HDC screen = GetDC(window);
  HDC copy = CreateCompatibleDC(screen);
  HBITMAP bitmap = CreateDIBSection(screen, &header, DIB_RGB_COLORS, &bits, nullptr, 0);
  bool copied = false;
  if (bitmap != nullptr && copy != nullptr) {
    HGDIOBJ previous = SelectObject(copy, bitmap);
    copied = BitBlt(copy, 0, 0, width, height, screen, 0, 0, SRCCOPY) != 0;
    GdiFlush();
    SelectObject(copy, previous);
  }
  std::vector<unsigned char> rgba;
  if (copied) {
    // B, G, R, unused per pixel on the screen; opaque R, G, B, A in the file.
    const auto* source = static_cast<const std::uint8_t*>(bits);
    rgba.resize(static_cast<std::size_t>(width) * height * 4);
    for (std::size_t i = 0; i < rgba.size(); i += 4) {
      rgba[i] = source[i + 2];
      rgba[i + 1] = source[i + 1];
      rgba[i + 2] = source[i];
      rgba[i + 3] = 255;
    }
  }
  DeleteObject(bitmap);
  DeleteDC(copy);
  ReleaseDC(window, screen);
  if (!copied) {
    error = "cannot read the window's pixels";
    return false;
  }
  const unsigned status = lodepng_encode32_file(path.c_str(), rgba.data(), static_cast<unsigned>(width),
                                                static_cast<unsigned>(height));
  if (status != 0) {
    error = "cannot write '" + path + "': " + lodepng_error_text(status);
    return false;
  }
  return true;
}

}  // namespace vrnhost
