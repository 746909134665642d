// The image table: decodes the compiled-in PNG files in a fixed load order into premultiplied
// B, G, R, A entries (GDI bitmaps on Windows, where the four fonts are created with them; the
// decoded pixels elsewhere, so that the table can be checked without a screen), and frees them
// when the last plug-in instance drops its reference.
#include "editor/image_table.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "editor/embedded_images.h"
#include "editor/lodepng_c.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace ziv {
namespace embedded {

const EmbeddedFile* findImage(const char* name) {
  for (std::size_t i = 0; i < kImageCount; ++i) {
    if (std::strcmp(kImages[i].name, name) == 0) return &kImages[i];
  }
  return nullptr;
}

}  // namespace embedded

namespace imageTable {
namespace {

// One step of the load order: `count` slots from `slot` take the files <group>_<first>.png,
// <group>_<first + 1>.png, ...; a step with first < 0 loads the single file <group>.png.
struct LoadStep {
  int slot;
  int count;
  const char* group;
  int first;
};

// The order in which the table is filled. Slots 5, 6, 7 and 10 of imgMisc are never loaded, and
// imgField24's end piece and separator are imgBar16's files decoded a second time.
constexpr LoadStep kLoadOrder[] = {
    {imgBackground, 1, "background", -1},
    {imgInfoPanel, 1, "info_panel", -1},
    {imgInfoOverlay, 1, "info_overlay", -1},
    {imgDimmer, 1, "dimmer", -1},
    {imgGlowFrame, 12, "glow_frame", 0},
    {imgPanelSmall, 9, "panel_small", 0},
    {imgPanelLarge, 9, "panel_large", 0},
    {imgBox16, 3, "box16", 0},
    {imgButton75, 3, "button75", 0},
    {imgLed, 3, "led", 0},
    {imgClose, 3, "close", 0},
    {imgTab, 3, "tab", 0},
    {imgToggle, 3, "toggle", 0},
    {imgArrow, 3, "arrow", 0},
    {imgKnobLarge, 3, "knob_large", 0},
    {imgKnobSmall, 3, "knob_small", 0},
    {imgBar16, 6, "bar16", 0},
    {imgBar16 + 6, 2, "bar16", 6},
    {imgField24, 6, "field24", 0},
    {imgField24 + 6, 2, "bar16", 6},
    {imgPanelCaps, 6, "panel_caps", 0},
    {imgSlider, 6, "slider", 0},
    {imgMeter, 2, "meter", 0},
    {imgDot, 3, "dot", 0},
    {imgMisc, 1, "misc", 0},
    {imgMisc + 1, 1, "misc", 1},
    {imgMisc + 4, 1, "misc", 4},
    {imgMisc + 3, 1, "misc", 3},
    {imgMisc + 2, 1, "misc", 2},
    {imgMisc + 8, 1, "misc", 8},
    {imgMisc + 9, 1, "misc", 9},
};

// In creation order; on other systems a font's handle points at its entry here.
std::array<FontSpec, kFontCount> fontSpecs = {{{9, false}, {14, true}, {16, true}, {10, true}}};

std::array<Image, kImageCount> table;
std::array<FontHandle, kFontCount> fonts{};
bool loaded = false;
int references = 0;
// Guards the loaded flag, the reference count and the release. It is taken last, after the
// instance-creation lock where that is held, and nothing is locked while holding it.
std::mutex tableLock;

// The platform side of an entry: createBitmap turns the decoded pixels of `entry` into its
// bitmap handle. On Windows that is a GDI bitmap holding a copy of them; elsewhere the table
// keeps the pixels themselves and the handle stays null.
#ifdef _WIN32

void* createBitmap(const Image& entry, std::vector<std::uint8_t>&& pixels) {
  return CreateBitmap(static_cast<int>(entry.width), static_cast<int>(entry.height), 1, 32, pixels.data());
}

FontHandle createFont(const FontSpec& style) {
  LOGFONTA description{};
  description.lfHeight = -style.pixelHeight;  // character height, not cell height
  description.lfWeight = style.bold ? FW_BOLD : FW_NORMAL;
  description.lfOutPrecision = OUT_TT_ONLY_PRECIS;
  std::strcpy(description.lfFaceName, "Arial");
  return CreateFontIndirectA(&description);
}

void deleteObject(void* handle) {
  if (handle != nullptr) DeleteObject(static_cast<HGDIOBJ>(handle));
}

#else

// Without GDI the decoded pixels stay with the table, one buffer per slot.
std::array<std::vector<std::uint8_t>, kImageCount> decodedPixels;

void* createBitmap(const Image& entry, std::vector<std::uint8_t>&& pixels) {
  decodedPixels[static_cast<std::size_t>(&entry - table.data())] = std::move(pixels);
  return nullptr;
}

FontHandle createFont(const FontSpec& style) {
  return const_cast<FontSpec*>(&style);
}

void deleteObject(void*) {}

#endif

// Decodes `file` into premultiplied B, G, R, A and makes `image` of it. A file that is missing
// or does not decode leaves the entry empty.
void loadImage(Image& image, const embedded::EmbeddedFile* file) {
  image = Image{};
  if (file == nullptr) return;
  unsigned char* rgba = nullptr;
  unsigned width = 0;
  unsigned height = 0;
  if (lodepng_decode32(&rgba, &width, &height, file->data, file->size) == 0 && width > 0 && height > 0) {
    std::vector<std::uint8_t> pixels(rgba, rgba + static_cast<std::size_t>(width) * height * 4);
    for (std::size_t i = 0; i < pixels.size(); i += 4) {
      const unsigned a = pixels[i + 3];
      const unsigned red = pixels[i];
      pixels[i] = static_cast<std::uint8_t>(pixels[i + 2] * a / 255);
      pixels[i + 1] = static_cast<std::uint8_t>(pixels[i + 1] * a / 255);
      pixels[i + 2] = static_cast<std::uint8_t>(red * a / 255);
    }
    image.width = width;
    image.height = height;
    image.bitmap = createBitmap(image, std::move(pixels));
  }
  std::free(rgba);
}

void loadAll() {
  for (const LoadStep& step : kLoadOrder) {
    for (int i = 0; i < step.count; ++i) {
      const std::string name =
          std::string(step.group) + (step.first < 0 ? "" : "_" + std::to_string(step.first + i)) + ".png";
      loadImage(table[static_cast<std::size_t>(step.slot + i)], embedded::findImage(name.c_str()));
    }
  }
  for (int id = 0; id < kFontCount; ++id) fonts[id] = createFont(fontSpecs[id]);
}

void release() {
  for (int slot = 0; slot < kImageCount; ++slot) {
    // The tab bitmaps are not freed here: a reload creates them again and the earlier handles
    // stay allocated for the life of the process.
    if (slot < imgTab || slot >= imgTab + 3) deleteObject(table[slot].bitmap);
    table[slot] = Image{};
  }
  for (FontHandle& font : fonts) {
    deleteObject(font);
    font = nullptr;
  }
#ifndef _WIN32
  for (std::vector<std::uint8_t>& pixels : decodedPixels) std::vector<std::uint8_t>().swap(pixels);
#endif
  loaded = false;
}

}  // namespace

void ensureLoaded() {
  std::lock_guard<std::mutex> lock(tableLock);
  if (loaded) return;
  loadAll();
  loaded = true;
}

bool isLoaded() {
  std::lock_guard<std::mutex> lock(tableLock);
  return loaded;
}

const Image& image(ImageGroup group, int index) {
  static const Image kNone;
  const int slot = static_cast<int>(group) + index;
  return slot >= 0 && slot < kImageCount ? table[slot] : kNone;
}

const std::uint8_t* pixels(const Image& image) {
#ifdef _WIN32
  (void)image;
  return nullptr;
#else
  if (&image < table.data() || &image >= table.data() + kImageCount) return nullptr;
  const std::vector<std::uint8_t>& buffer = decodedPixels[static_cast<std::size_t>(&image - table.data())];
  return buffer.empty() ? nullptr : buffer.data();
#endif
}

FontHandle font(FontId id) {
#ifdef _WIN32
  return fonts[id >= 0 && id < kFontCount ? id : fontSmall];
#else
  return &fontSpecs[id >= 0 && id < kFontCount ? id : fontSmall];
#endif
}

const FontSpec& fontSpec(FontId id) {
  return fontSpecs[id >= 0 && id < kFontCount ? id : fontSmall];
}

void acquire() {
  std::lock_guard<std::mutex> lock(tableLock);
  ++references;
}

void drop() {
  std::lock_guard<std::mutex> lock(tableLock);
  if (references > 0 && --references == 0 && loaded) release();
}

}  // namespace imageTable
}  // namespace ziv
