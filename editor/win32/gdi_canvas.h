// The editor's drawing surface on Windows: GDI calls on the window's memory drawing context (the
// off-screen bitmap). Images are blitted through a temporary context with AlphaBlend (their
// premultiplied per-pixel alpha times a constant alpha) or StretchBlt (an opaque copy); text is
// drawn with a transparent background; the CPU-drawn pictures get 32-bit DIB sections of their
// own, which the canvas frees with itself.
//
// Text measurements are kept by font and text: the layout fits every caption and value on every
// frame, GDI's answer never changes for a font, and asking it again is most of an idle frame's
// cost (several milliseconds under wine). Fonts must therefore outlive the canvas, as the
// editor's do (they live as long as the process).
//
// Threads: the host's user-interface thread only, inside an editor frame.
#pragma once

#include <windows.h>

#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "editor/canvas.h"

namespace ziv {

class GdiCanvas : public Canvas {
 public:
  // Texts are measured on their first kMaxMeasured characters only.
  static constexpr int kMaxMeasured = 1024;

  // `target` is the memory context that frames draw into; `window` is invalidated.
  GdiCanvas(HDC target, HWND window);
  ~GdiCanvas() override;
  GdiCanvas(const GdiCanvas&) = delete;
  GdiCanvas& operator=(const GdiCanvas&) = delete;

  void drawImage(const Rect& dst, const Image& image, const Rect& src, float alpha) override;
  void drawText(const std::string& text, int x, int y, FontHandle font, int colour) override;
  Rect measureText(const std::string& text, FontHandle font) override;
  int fitCount(const std::string& text, FontHandle font, int maxWidth, int* extents, int capacity) override;
  void setClip(const Rect& clip) override;
  void clearClip() override;
  void invalidate(const Rect& area) override;
  void beginPixels(Image& image) override;
  void endPixels(Image& image) override;

 private:
  // Texts kept per font before that font's measurements start afresh (value texts change as
  // controls move, so the set would otherwise grow without end).
  static constexpr std::size_t kMaxKeptTexts = 4096;

  struct TextSize {
    int width = 0;
    int height = 0;
    std::vector<int> extents;  // width of characters 0..i, for each measured character i
  };
  using TextSizes = std::unordered_map<std::string, TextSize>;

  // The size of `text` (its first kMaxMeasured characters) in `font`, from GDI on first use.
  const TextSize& textSize(const std::string& text, FontHandle font);

  HDC target_;
  HWND window_;
  HRGN clip_ = nullptr;
  // The bitmaps made for CPU-drawn pictures, by the image they were made for.
  std::vector<std::pair<const Image*, HBITMAP>> pictures_;
  std::vector<std::pair<FontHandle, TextSizes>> textSizes_;
};

// GDI's COLORREF (red in the low byte) of a 0xRRGGBB colour.
COLORREF toColorRef(int colour);

}  // namespace ziv
