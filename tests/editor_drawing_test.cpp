// The editor's drawing below the widgets: the draw list's dirty rectangle and layers, text
// fitting, the CPU lines and shadow, and when the shape displays draw their pictures.
#include <gtest/gtest.h>

#include <vector>

#include "editor/draw_list.h"
#include "editor/image_table.h"
#include "editor/pixel_drawing.h"
#include "editor/shape_display.h"
#include "editor/text_fit.h"
#include "editor_harness.h"

namespace ziv::testing {
namespace {

TEST(EditorDrawList, DrawsWhatTouchesTheDirtyRectangleInLayerOrder) {
  imageTable::ensureLoaded();
  const Image& image = imageTable::image(imgBox16);
  DrawList list;
  RecordingCanvas canvas;
  list.queueImage(25, Rect{10, 0, 5, 5}, image, Rect{0, 0, 16, 16}, 0);    // clamped to layer 19
  list.queueImage(-3, Rect{11, 0, 5, 5}, image, Rect{0, 0, 16, 16}, 255);  // clamped to 0: outside
  list.queueImage(4, Rect{0, 10, 5, 5}, image, Rect{0, 0, 16, 16}, -1);    // touches the bottom edge
  list.flush(canvas);
  EXPECT_TRUE(canvas.images.empty()) << "an empty dirty rectangle draws nothing";
  EXPECT_TRUE(canvas.invalidated.empty());

  list.queueImage(19, Rect{10, 0, 5, 5}, image, Rect{0, 0, 16, 16}, 0);
  list.queueImage(0, Rect{11, 0, 5, 5}, image, Rect{0, 0, 16, 16}, 255);
  list.queueImage(4, Rect{0, 10, 5, 5}, image, Rect{0, 0, 16, 16}, -1);
  list.markDirty(Rect{0, 0, 10, 10});
  list.flush(canvas);
  ASSERT_EQ(canvas.images.size(), 2u);
  EXPECT_EQ(canvas.images[0].destination.y, 10);  // layer 4 before layer 19
  EXPECT_LT(canvas.images[0].alpha, 0.0f);
  EXPECT_EQ(canvas.images[1].destination.x, 10);
  EXPECT_FLOAT_EQ(canvas.images[1].alpha, 0.0f);
  ASSERT_EQ(canvas.invalidated.size(), 1u);
  EXPECT_EQ(canvas.invalidated[0].width, 10);
  EXPECT_EQ(list.commandCount(19), 0);
}

TEST(EditorTextFit, CutsWithEllipsisOrKeepsTheCaretVisible) {
  imageTable::ensureLoaded();
  RecordingCanvas canvas;  // 5 pixels a character
  const FontHandle font = imageTable::font(fontSmall);
  const auto fit = [&](const std::string& text, int width, bool ellipsis, int keep) {
    std::string out = "stale";
    fitText(canvas, text, font, width, ellipsis, keep, out);
    return out;
  };
  EXPECT_EQ(fit("Hello", 25, true, -1), "Hello");
  EXPECT_EQ(fit("Hello World", 30, true, -1), "Hel...");
  EXPECT_EQ(fit("Hello World", 30, false, -1), "Hello ");
  EXPECT_EQ(fit("Hello", 10, true, -1), "...");
  // The character at index 8 must show: the window ends there and starts as far left as fits.
  EXPECT_EQ(fit("abcdefghij", 20, false, 8), "fghi");
  EXPECT_EQ(fit("abcdefghij", 20, false, 2), "abcd");
  EXPECT_EQ(fit("", 0, true, -1), "");
  EXPECT_EQ(fit(std::string(2000, 'x'), 25, true, -1), "xx...");
}

struct Picture {
  Picture(int width, int height) : pixels(static_cast<std::size_t>(width * height * 4)) {
    image.width = static_cast<std::uint32_t>(width);
    image.height = static_cast<std::uint32_t>(height);
    image.pixels = pixels.data();
  }
  int alpha(int x, int y) const {
    return pixels[static_cast<std::size_t>((y * static_cast<int>(image.width) + x) * 4 + 3)];
  }
  int blue(int x, int y) const {
    return pixels[static_cast<std::size_t>((y * static_cast<int>(image.width) + x) * 4)];
  }
  Image image;
  std::vector<std::uint8_t> pixels;
};

TEST(EditorPixels, LinesAreAntialiasedWithRoundCapsInEveryDirection) {
  Picture across(20, 12);
  drawLine(across.image, 4.0f, 5.0f, 15.0f, 5.0f, 1.5f, 0xFF2040FFu);
  EXPECT_EQ(across.alpha(10, 5), 254);  // fully covered: 255 x 255 >> 8
  EXPECT_EQ(across.blue(10, 5), 254);   // colour 0xAARRGGBB: blue in the low byte
  EXPECT_EQ(across.alpha(10, 4), across.alpha(10, 6));
  EXPECT_EQ(across.alpha(10, 4), 127);  // half a pixel inside: coverage 128
  EXPECT_EQ(across.alpha(10, 8), 0);
  EXPECT_EQ(across.alpha(3, 5), 127);  // the cap, one pixel beyond the end
  EXPECT_EQ(across.alpha(2, 5), 0);

  // The same line along y covers the transposed pixels.
  Picture down(12, 20);
  drawLine(down.image, 5.0f, 15.0f, 5.0f, 4.0f, 1.5f, 0xFF2040FFu);
  for (int i = 0; i < 20; ++i) {
    for (int j = 0; j < 12; ++j) EXPECT_EQ(down.alpha(j, i), across.alpha(i, j)) << i << "," << j;
  }

  // Off the buffer nothing is written; fewer than two points draw nothing.
  Picture edge(8, 8);
  drawLine(edge.image, -20.0f, -3.0f, 30.0f, 20.0f, 2.0f, 0xFFFFFFFFu);
  const float one[2] = {3.0f, 3.0f};
  Picture empty(8, 8);
  drawPolyline(empty.image, one, 1, 2.0f, 0xFFFFFFFFu);
  for (std::uint8_t byte : empty.pixels) EXPECT_EQ(byte, 0);
}

TEST(EditorPixels, ShadowFallsDownAndRight) {
  Picture picture(24, 16);
  drawLine(picture.image, 4.0f, 6.0f, 18.0f, 6.0f, 1.0f, 0xFFFFFFFFu);
  const int stroke = picture.alpha(10, 6);
  std::vector<std::uint8_t> scratch;
  addShadow(picture.image, scratch);
  EXPECT_GT(picture.alpha(12, 9), 0);  // below and right of the stroke
  EXPECT_EQ(picture.blue(12, 9), 0);   // dark
  EXPECT_EQ(picture.alpha(8, 2), 0);   // above stays clear
  EXPECT_EQ(picture.alpha(2, 6), 0);   // and left of its start
  EXPECT_GE(picture.alpha(10, 6), stroke);
}

TEST(EditorShapeDisplay, DrawsItsPictureOnChangeAndOnFullRedraw) {
  EditorHarness editor;
  EXPECT_EQ(editor.canvas.pictures, 5);
  editor.frame();
  EXPECT_EQ(editor.canvas.pictures, 0);
  editor.setValue(kOsc1Waveform, 0.5f);  // "Pulse"
  editor.frame();
  EXPECT_EQ(editor.canvas.pictures, 1);
  editor.frame(true);
  EXPECT_EQ(editor.canvas.pictures, 5);

  // The pulse's picture holds a drawn curve, queued at the display's place.
  const RecordingCanvas::ImageCall* display = editor.canvas.imageAt(Rect{24, 28, 64, kShapeDisplayHeight});
  ASSERT_NE(display, nullptr);
  const std::vector<std::uint8_t>& pixels = editor.canvas.pixels[display->image];
  int drawn = 0;
  for (std::size_t i = 3; i < pixels.size(); i += 4) drawn += pixels[i] > 0;
  EXPECT_GT(drawn, 64);
}

TEST(EditorShapeDisplay, CurvesFollowTheirParameters) {
  TestHost host;
  ParameterView params(host.plugin());
  const ShapeParameters osc{kOsc1Waveform, kOsc1Shape, kOsc1Sync};
  // A pulse of width 0.5 + 0.49 x shape: high for the first part of each of its two cycles.
  host.plugin().setParameter(kOsc1Waveform, 0.5f);
  host.plugin().setParameter(kOsc1Shape, 1.0f);
  EXPECT_FLOAT_EQ(shapeCurve(ShapeKind::kOscillator, params, osc, 0.45f), 1.0f);
  host.plugin().setParameter(kOsc1Shape, 0.0f);
  EXPECT_FLOAT_EQ(shapeCurve(ShapeKind::kOscillator, params, osc, 0.45f), -1.0f);
  // The shaper's clip curve flattens at full drive.
  const ShapeParameters shaper{kShaperMode, kShaperDrive};
  host.plugin().setParameter(kShaperDrive, 1.0f);
  EXPECT_NEAR(shapeCurve(ShapeKind::kShaper, params, shaper, 1.0f), 1.0f, 1e-6);
  EXPECT_NEAR(shapeCurve(ShapeKind::kShaper, params, shaper, 0.0f), -1.0f, 1e-6);
  // The LFO's sine starts at 0 and peaks a quarter cycle in (two cycles across).
  const ShapeParameters lfo{kVoiceLfoWaveform, kVoiceLfoPhase};
  EXPECT_NEAR(shapeCurve(ShapeKind::kLfo, params, lfo, 0.125f), 1.0f, 1e-5);
}

}  // namespace
}  // namespace ziv::testing
