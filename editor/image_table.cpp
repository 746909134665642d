#include "editor/image_table.h"

#include <array>
#include <mutex>

namespace ziv::imageTable {
namespace {

// Until the pictures are compiled in, the table knows each entry's size only.
struct EntrySize {
  int group;
  int count;
  int width;
  int height;
};

constexpr EntrySize kSizes[] = {
    {imgBackground, 1, 1040, 472},
    {imgInfoPanel, 1, 1040, 472},
    {imgInfoOverlay, 1, 1040, 472},
    {imgDimmer, 1, 1040, 472},
    {imgGlowFrame, 12, 32, 32},
    {imgPanelSmall, 9, 16, 16},
    {imgPanelLarge, 9, 32, 32},
    {imgBox16, 3, 16, 16},
    {imgButton75, 3, 75, 32},
    {imgLed, 3, 16, 14},
    {imgClose, 3, 16, 16},
    {imgTab, 3, 19, 24},
    {imgToggle, 3, 24, 21},
    {imgArrow, 3, 16, 16},
    {imgKnobLarge, 3, 768, 384},
    {imgKnobSmall, 3, 384, 192},
    {imgBar16, 6, 16, 16},
    {imgBar16 + 6, 1, 10, 24},
    {imgBar16 + 7, 1, 1, 24},
    {imgField24, 6, 16, 24},
    {imgField24 + 6, 1, 10, 24},
    {imgField24 + 7, 1, 1, 24},
    {imgMisc, 3, 8, 8},
    {imgMisc + 3, 2, 75, 32},
    {imgMisc + 8, 2, 75, 32},
    {imgPanelCaps, 6, 16, 16},
    {imgSlider, 1, 21, 9},
    {imgSlider + 1, 1, 21, 2},
    {imgSlider + 2, 1, 21, 10},
    {imgSlider + 3, 1, 21, 9},
    {imgSlider + 4, 1, 21, 2},
    {imgSlider + 5, 1, 21, 10},
    {imgMeter, 2, 9, 105},
    {imgDot, 3, 8, 8},
};

std::array<FontSpec, kFontCount> fonts = {{{9, false}, {14, true}, {16, true}, {10, true}}};

std::array<Image, kImageCount> table;
bool loaded = false;
// Instances come and go on host threads; the count and the release change under this lock.
std::mutex referenceLock;
int references = 0;

}  // namespace

void ensureLoaded() {
  if (loaded) return;
  for (const EntrySize& size : kSizes) {
    for (int i = 0; i < size.count; ++i) {
      Image& entry = table[size.group + i];
      entry.width = static_cast<std::uint32_t>(size.width);
      entry.height = static_cast<std::uint32_t>(size.height);
    }
  }
  loaded = true;
}

const Image& image(ImageGroup group, int index) {
  static const Image kNone;
  const int slot = static_cast<int>(group) + index;
  return slot >= 0 && slot < kImageCount ? table[slot] : kNone;
}

FontHandle font(FontId id) {
  return &fonts[id >= 0 && id < kFontCount ? id : fontSmall];
}

const FontSpec& fontSpec(FontId id) {
  return fonts[id >= 0 && id < kFontCount ? id : fontSmall];
}

void acquire() {
  std::lock_guard<std::mutex> lock(referenceLock);
  ++references;
}

void drop() {
  std::lock_guard<std::mutex> lock(referenceLock);
  if (references > 0 && --references == 0) {
    table.fill(Image{});
    loaded = false;
  }
}

}  // namespace ziv::imageTable
