// The drawing surface that a frame is flushed onto. The window layer implements it over GDI on
// the editor's off-screen bitmap; tests implement it by recording the calls, so the widgets, the
// layout and the draw list run without a screen.
//
// Threads: the host's user-interface thread only, inside an editor frame.
#pragma once

#include <string>

#include "editor/image.h"

namespace ziv {

class Canvas {
 public:
  virtual ~Canvas() = default;

  // Blits `src` of `image` onto `dst`, scaled to fit. alpha 0..1 blends with the image's own
  // per-pixel alpha; a negative alpha copies opaquely instead.
  virtual void drawImage(const Rect& dst, const Image& image, const Rect& src, float alpha) = 0;
  // Draws `text` (bytes as typed) with its top-left corner at (x, y), transparent background,
  // colour 0xRRGGBB.
  virtual void drawText(const std::string& text, int x, int y, FontHandle font, int colour) = 0;
  // The size of `text` in `font`: (0, 0, width, height).
  virtual Rect measureText(const std::string& text, FontHandle font) = 0;
  // How many leading characters of `text` fit in `maxWidth` pixels; `extents[i]` receives the
  // width of characters 0..i for each i below `capacity` (GetTextExtentExPoint's answer).
  virtual int fitCount(const std::string& text, FontHandle font, int maxWidth, int* extents,
                       int capacity) = 0;
  // Limits drawing to `clip` until clearClip.
  virtual void setClip(const Rect& clip) = 0;
  virtual void clearClip() = 0;
  // Asks the window to copy `area` of the off-screen bitmap to the screen.
  virtual void invalidate(const Rect& area) = 0;

  // Pictures the editor draws on the CPU (the shape displays' curves): beginPixels gives `image`
  // a zeroed pixel buffer of its width x height; endPixels copies the buffer into the image's
  // bitmap and frees it. The bitmap belongs to the canvas and lives while the window is open:
  // an image whose bitmap the canvas did not make (one from an earlier window) gets a new one,
  // so the editor redraws its CPU pictures on every full redraw, which a new window starts with.
  virtual void beginPixels(Image& image) = 0;
  virtual void endPixels(Image& image) = 0;
};

}  // namespace ziv
