// A canvas that draws nothing and measures every text at a fixed 5 pixels per character (font
// height as its FontSpec gives it): the editor's core runs on it without a screen, and its
// measurements are easy to predict in tests.
#pragma once

#include <algorithm>
#include <string>

#include "editor/canvas.h"
#include "editor/image_table.h"

namespace ziv::testing {

class MeasuringCanvas : public Canvas {
 public:
  static constexpr int kCharWidth = 5;

  void drawImage(const Rect&, const Image&, const Rect&, float) override {}
  void drawText(const std::string&, int, int, FontHandle, int) override {}
  Rect measureText(const std::string& text, FontHandle font) override {
    return Rect{0, 0, kCharWidth * static_cast<int>(text.size()),
                static_cast<const FontSpec*>(font)->pixelHeight};
  }
  int fitCount(const std::string& text, FontHandle, int maxWidth, int* extents, int capacity) override {
    const int count = static_cast<int>(text.size());
    for (int i = 0; i < count && i < capacity; ++i) extents[i] = kCharWidth * (i + 1);
    return std::clamp(maxWidth / kCharWidth, 0, count);
  }
  void setClip(const Rect&) override {}
  void clearClip() override {}
  void invalidate(const Rect&) override {}
  void beginPixels(Image&) override {}
  void endPixels(Image&) override {}
};

}  // namespace ziv::testing
