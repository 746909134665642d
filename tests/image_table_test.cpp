// The editor's image table: every entry at its size, the compiled-in files at their PNG colour
// types, the conversion to premultiplied B, G, R, A, the knob strips' frame grid, and the table's
// life across plug-in instances.
#include "editor/image_table.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include "editor/embedded_images.h"
#include "editor/lodepng_c.h"
#include "tests/test_host.h"

namespace ziv {
namespace {

struct Expected {
  int slot;
  int count;
  unsigned width;
  unsigned height;
};

constexpr Expected kTableSizes[] = {
    {imgBackground, 1, 1040, 472}, {imgInfoPanel, 1, 1040, 472}, {imgInfoOverlay, 1, 1040, 472},
    {imgDimmer, 1, 1040, 472},     {imgGlowFrame, 12, 32, 32},   {imgPanelSmall, 9, 16, 16},
    {imgPanelLarge, 9, 32, 32},    {imgBox16, 3, 16, 16},        {imgButton75, 3, 75, 32},
    {imgLed, 3, 16, 14},           {imgClose, 3, 16, 16},        {imgTab, 3, 19, 24},
    {imgToggle, 3, 24, 21},        {imgArrow, 3, 16, 16},        {imgKnobLarge, 3, 768, 384},
    {imgKnobSmall, 3, 384, 192},   {imgBar16, 6, 16, 16},        {imgBar16 + 6, 1, 10, 24},
    {imgBar16 + 7, 1, 1, 24},      {imgField24, 6, 16, 24},      {imgField24 + 6, 1, 10, 24},
    {imgField24 + 7, 1, 1, 24},    {imgMisc, 3, 8, 8},           {imgMisc + 3, 2, 75, 32},
    {imgMisc + 5, 3, 0, 0},        {imgMisc + 8, 2, 75, 32},     {imgMisc + 10, 1, 0, 0},
    {imgPanelCaps, 6, 16, 16},     {imgSlider, 1, 21, 9},        {imgSlider + 1, 1, 21, 2},
    {imgSlider + 2, 1, 21, 10},    {imgSlider + 3, 1, 21, 9},    {imgSlider + 4, 1, 21, 2},
    {imgSlider + 5, 1, 21, 10},    {imgMeter, 2, 9, 105},        {imgDot, 3, 8, 8},
};

// The files stored as RGB; every other one is RGBA.
bool storedAsRgb(const std::string& name) {
  return name == "background.png" || name == "panel_small_4.png" || name == "panel_large_4.png" ||
         name.rfind("slider_", 0) == 0 || name.rfind("meter_", 0) == 0;
}

const Image& entry(int slot) {
  return imageTable::image(static_cast<ImageGroup>(slot));
}

// Every test runs with the table loaded and leaves it loaded; no plug-in instance is alive
// between tests, so the lifecycle test sees the reference count at 0.
class ImageTableTest : public ::testing::Test {
 protected:
  void SetUp() override { imageTable::ensureLoaded(); }
};

TEST_F(ImageTableTest, EveryEntryHasItsSizeAndEveryFileItsColourType) {
  int checked = 0;
  for (const Expected& group : kTableSizes) {
    for (int i = 0; i < group.count; ++i) {
      const Image& image = entry(group.slot + i);
      SCOPED_TRACE("slot " + std::to_string(group.slot + i));
      EXPECT_EQ(image.width, group.width);
      EXPECT_EQ(image.height, group.height);
      EXPECT_EQ(imageTable::pixels(image) != nullptr, group.width > 0);
      ++checked;
    }
  }
  EXPECT_EQ(checked, kImageCount);

  for (std::size_t i = 0; i < embedded::kImageCount; ++i) {
    const embedded::EmbeddedFile& file = embedded::kImages[i];
    SCOPED_TRACE(file.name);
    unsigned width = 0;
    unsigned height = 0;
    LodePNGState state;
    lodepng_state_init(&state);
    ASSERT_EQ(lodepng_inspect(&width, &height, &state, file.data, file.size), 0u);
    EXPECT_EQ(state.info_png.color.colortype, storedAsRgb(file.name) ? LCT_RGB : LCT_RGBA);
    EXPECT_EQ(state.info_png.color.bitdepth, 8u);
    EXPECT_EQ(state.info_png.interlace_method, 0u);
    lodepng_state_cleanup(&state);
  }
}

TEST_F(ImageTableTest, PixelsArePremultipliedWithRedAndBlueSwapped) {
  // The information panel has fully transparent, opaque and partly covered pixels.
  const embedded::EmbeddedFile* file = embedded::findImage("info_panel.png");
  ASSERT_NE(file, nullptr);
  unsigned char* rgba = nullptr;
  unsigned width = 0;
  unsigned height = 0;
  ASSERT_EQ(lodepng_decode32(&rgba, &width, &height, file->data, file->size), 0u);
  const std::uint8_t* bgra = imageTable::pixels(entry(imgInfoPanel));
  ASSERT_NE(bgra, nullptr);

  int transparent = 0;
  int opaque = 0;
  int partial = 0;
  for (std::size_t i = 0; i < std::size_t{width} * height * 4; i += 4) {
    const unsigned a = rgba[i + 3];
    ASSERT_EQ(bgra[i + 0], rgba[i + 2] * a / 255) << "pixel " << i / 4;
    ASSERT_EQ(bgra[i + 1], rgba[i + 1] * a / 255) << "pixel " << i / 4;
    ASSERT_EQ(bgra[i + 2], rgba[i + 0] * a / 255) << "pixel " << i / 4;
    ASSERT_EQ(bgra[i + 3], a) << "pixel " << i / 4;
    if (a == 0) {
      EXPECT_EQ(bgra[i] | bgra[i + 1] | bgra[i + 2], 0);
      ++transparent;
    }
    opaque += a == 255;
    partial += a > 0 && a < 255;
  }
  std::free(rgba);
  EXPECT_GT(transparent, 0);
  EXPECT_GT(opaque, 0);
  EXPECT_GT(partial, 0);

  // An opaque picture keeps its colours, blue first.
  const std::uint8_t* background = imageTable::pixels(entry(imgBackground));
  ASSERT_EQ(lodepng_decode32(&rgba, &width, &height, embedded::findImage("background.png")->data,
                             embedded::findImage("background.png")->size),
            0u);
  for (std::size_t i = 0; i < std::size_t{width} * height * 4; i += 4) {
    ASSERT_EQ(background[i], rgba[i + 2]);
    ASSERT_EQ(background[i + 2], rgba[i]);
    ASSERT_EQ(background[i + 3], 255);
  }
  std::free(rgba);
}

TEST_F(ImageTableTest, FieldEndPiecesAreTheBarFilesLoadedAgain) {
  for (int piece = 6; piece < 8; ++piece) {
    const Image& bar = entry(imgBar16 + piece);
    const Image& field = entry(imgField24 + piece);
    ASSERT_NE(imageTable::pixels(bar), imageTable::pixels(field));
    EXPECT_EQ(0, std::memcmp(imageTable::pixels(bar), imageTable::pixels(field),
                             std::size_t{bar.width} * bar.height * 4));
  }
}

// The accent-coloured pixels in frame n of a knob strip: the length of the value arc.
int accentPixels(const Image& strip, int frame) {
  const std::uint8_t* pixels = imageTable::pixels(strip);
  const unsigned size = strip.width / 16;
  const unsigned x0 = (frame % 16) * size;
  const unsigned y0 = (frame / 16) * size;
  int count = 0;
  for (unsigned y = y0; y < y0 + size; ++y) {
    for (unsigned x = x0; x < x0 + size; ++x) {
      const std::uint8_t* p = pixels + (std::size_t{y} * strip.width + x) * 4;
      count += p[0] > 150 && p[1] > 150 && p[2] < 120;  // blue and green high, red low
    }
  }
  return count;
}

TEST_F(ImageTableTest, KnobFramesRunRowByRowFromTopLeftToBottomRight) {
  for (const ImageGroup group : {imgKnobLarge, imgKnobSmall}) {
    const Image& unipolar = imageTable::image(group, 0);
    const Image& bipolar = imageTable::image(group, 1);
    const Image& negative = imageTable::image(group, 2);
    SCOPED_TRACE(group == imgKnobLarge ? "large" : "small");
    // The unipolar arc grows from frame 0 (top-left square) to frame 127 (bottom-right); the
    // negative-only one shrinks; the bipolar one is shortest in the middle.
    for (int n = 1; n < 128; ++n) {
      EXPECT_GE(accentPixels(unipolar, n), accentPixels(unipolar, n - 1)) << "frame " << n;
      EXPECT_LE(accentPixels(negative, n), accentPixels(negative, n - 1)) << "frame " << n;
    }
    EXPECT_GT(accentPixels(unipolar, 127), 4 * accentPixels(unipolar, 0));
    EXPECT_GT(accentPixels(negative, 0), 4 * accentPixels(negative, 127));
    EXPECT_LT(accentPixels(bipolar, 64), accentPixels(bipolar, 0) / 4);
    EXPECT_LT(accentPixels(bipolar, 63), accentPixels(bipolar, 127) / 4);
    EXPECT_NEAR(accentPixels(bipolar, 0), accentPixels(bipolar, 127), accentPixels(bipolar, 127) / 10);
  }
}

// Captions are centred 48 (large) or 38 (small) pixels below a knob's placement, whose sprite
// starts 8 or 16 pixels down: every frame leaves its bottom rows empty for them.
TEST_F(ImageTableTest, KnobFramesLeaveTheCaptionRowsEmpty) {
  for (const auto& [group, firstFreeRow] : {std::pair{imgKnobLarge, 37u}, std::pair{imgKnobSmall, 20u}}) {
    for (int polarity = 0; polarity < 3; ++polarity) {
      const Image& strip = imageTable::image(group, polarity);
      const std::uint8_t* pixels = imageTable::pixels(strip);
      const unsigned size = strip.height / 8;
      for (unsigned y = 0; y < strip.height; ++y) {
        if (y % size < firstFreeRow) continue;
        for (unsigned x = 0; x < strip.width; ++x) {
          ASSERT_EQ(pixels[(std::size_t{y} * strip.width + x) * 4 + 3], 0)
              << "strip " << group << "+" << polarity << " at " << x << ", " << y;
        }
      }
    }
  }
}

// The background shows every panel as the large nine-slice pieces draw it at that size, so a
// panel drawn over the background changes nothing where its pieces are opaque.
TEST_F(ImageTableTest, BackgroundPanelsMatchTheNineSlicePieces) {
  constexpr Rect kPanels[] = {
      {8, 12, 216, 112}, {224, 180, 160, 280}, {544, 12, 160, 80}, {872, 348, 160, 112}};
  const Image& background = entry(imgBackground);
  const std::uint8_t* ground = imageTable::pixels(background);
  const int piece = static_cast<int>(entry(imgPanelLarge).width);
  int compared = 0;
  for (const Rect& panel : kPanels) {
    for (int y = 0; y < panel.height; ++y) {
      for (int x = 0; x < panel.width; ++x) {
        // The piece and the pixel of it that a nine-slice stretch draws at (x, y).
        const int column = x < piece ? 0 : x >= panel.width - piece ? 2 : 1;
        const int row = y < piece ? 0 : y >= panel.height - piece ? 2 : 1;
        const int px = column == 0 ? x : column == 2 ? x - (panel.width - piece) : piece / 2;
        const int py = row == 0 ? y : row == 2 ? y - (panel.height - piece) : piece / 2;
        const std::uint8_t* p =
            imageTable::pixels(entry(imgPanelLarge + row * 3 + column)) + (py * piece + px) * 4;
        if (p[3] != 255) continue;
        const std::uint8_t* b =
            ground + ((panel.y + y) * static_cast<int>(background.width) + panel.x + x) * 4;
        ASSERT_EQ(std::memcmp(p, b, 4), 0)
            << "panel at " << panel.x << ", " << panel.y << ": pixel " << x << ", " << y;
        ++compared;
      }
    }
  }
  EXPECT_GT(compared, 80000);
}

TEST_F(ImageTableTest, LoadsOnceAndLivesAsLongAsAnInstance) {
  auto first = std::make_unique<testing::TestHost>();
  imageTable::ensureLoaded();
  const std::uint8_t* loaded = imageTable::pixels(entry(imgBackground));
  ASSERT_NE(loaded, nullptr);
  EXPECT_NE(imageTable::font(fontLarge), nullptr);
  EXPECT_EQ(imageTable::fontSpec(fontLarge).pixelHeight, 16);

  auto second = std::make_unique<testing::TestHost>();
  imageTable::ensureLoaded();
  EXPECT_EQ(imageTable::pixels(entry(imgBackground)), loaded) << "decoded again";

  first.reset();
  EXPECT_TRUE(imageTable::isLoaded());
  EXPECT_EQ(imageTable::pixels(entry(imgBackground)), loaded);

  second.reset();
  EXPECT_FALSE(imageTable::isLoaded());
  EXPECT_EQ(entry(imgBackground).width, 0u);
  EXPECT_EQ(imageTable::pixels(entry(imgBackground)), nullptr);

  testing::TestHost third;
  EXPECT_FALSE(imageTable::isLoaded());
  imageTable::ensureLoaded();
  EXPECT_EQ(entry(imgBackground).width, 1040u);
  EXPECT_NE(imageTable::pixels(entry(imgBackground)), nullptr);
}

}  // namespace
}  // namespace ziv
