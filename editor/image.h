// The editor's drawing types shared by the widgets, the draw list, the image table and the
// window layer. Nothing here calls the platform: on Windows the handles are GDI objects (HBITMAP,
// HFONT) passed through as opaque pointers; on other systems they are whatever the image table
// and a test canvas agree on.
#pragma once

#include <cstdint>

namespace ziv {

// An opaque platform font; on Windows an HFONT.
using FontHandle = void*;

// A picture the editor can blit. Pixels are 32-bit, byte order B, G, R, A, colour premultiplied
// by alpha, rows top first, no padding. `pixels` is null except while the image is being drawn
// into on the CPU (between beginPixels and endPixels of the window layer).
struct Image {
  void* bitmap = nullptr;  // on Windows an HBITMAP; null draws nothing
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint8_t* pixels = nullptr;
};

// A rectangle in editor pixels; empty when its width or height is 0 or less.
struct Rect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;

  bool empty() const { return width <= 0 || height <= 0; }
};

}  // namespace ziv
