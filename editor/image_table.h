// The process-wide table of the editor's pictures and fonts. Every image is a PNG compiled into
// the library; the table decodes them all once (premultiplied B, G, R, A) at the first frame of
// the first open editor and keeps them while any plug-in instance lives.
//
// A group is addressed by its base and a member index (a state, a piece or a strip), so members
// stay in the order given with each base below.
#pragma once

#include "editor/image.h"

namespace ziv {

enum ImageGroup : int {
  imgBackground = 0,   // 1040 x 472, opaque
  imgInfoPanel = 1,    // 1040 x 472
  imgInfoOverlay = 2,  // 1040 x 472
  imgDimmer = 3,       // 1040 x 472, translucent
  imgGlowFrame = 4,    // 12 of 32 x 32
  imgPanelSmall = 16,  // 9 of 16 x 16, nine-slice in row order
  imgPanelLarge = 25,  // 9 of 32 x 32, nine-slice in row order
  imgBox16 = 34,       // 3 states of 16 x 16
  imgButton75 = 37,    // 3 states of 75 x 32
  imgLed = 40,         // 3 states of 16 x 14
  imgClose = 43,       // 3 states of 16 x 16
  imgTab = 46,         // 3 states of 19 x 24
  imgToggle = 49,      // 3 states of 24 x 21
  imgArrow = 52,       // 3 states of 16 x 16
  imgKnobLarge = 55,   // unipolar, bipolar, negative-only: 768 x 384, 128 frames of 48 x 48
  imgKnobSmall = 58,   // the same for 384 x 192, 128 frames of 24 x 24
  imgBar16 = 61,       // 8: left, middle, right in two states (16 x 16), end 10 x 24, separator 1 x 24
  imgField24 = 69,     // 8: the same pieces at 16 x 24, then the same end piece and separator
  imgMisc = 77,        // 11: up, down, cross (8 x 8), labels 75 x 32 in slots 3, 4, 8, 9; 5, 6, 7, 10 empty
  imgPanelCaps = 88,   // 6: left, middle, right of a 16-pixel strip, two states
  imgSlider = 94,      // 6: top 21 x 9, middle 21 x 2, bottom 21 x 10, two states
  imgMeter = 100,      // 2: 9 x 105, off and on
  imgDot = 102,        // 3 states of 8 x 8
  kImageCount = 105
};

enum FontId : int {
  fontSmall = 0,   // 9 px normal: labels and values
  fontMedium = 1,  // 14 px bold
  fontLarge = 2,   // 16 px bold: panel titles
  fontLabel = 3,   // 10 px bold: program list and menus
  kFontCount = 4
};

// What a font is, on every platform (the window layer creates "Arial" at this pixel height).
struct FontSpec {
  int pixelHeight;
  bool bold;
};

namespace imageTable {

// Loads the whole table and the fonts unless already loaded. User-interface thread, at the start
// of every editor frame.
void ensureLoaded();
// Whether the table is loaded now (it is from the first editor frame until the last instance
// drops its reference). Any thread.
bool isLoaded();
// An entry; index counts from the group's base. Entries never loaded stay empty (null bitmap).
const Image& image(ImageGroup group, int index = 0);
// The decoded pixels of a table entry (premultiplied B, G, R, A, rows top first), on systems
// without GDI bitmaps, where the table keeps them; null on Windows, for an entry not loaded and
// for an image that is not a table entry. Valid while the table stays loaded.
const std::uint8_t* pixels(const Image& image);
// The font's platform handle (on Windows an HFONT; elsewhere a pointer to its FontSpec).
FontHandle font(FontId id);
const FontSpec& fontSpec(FontId id);
// Every plug-in instance holds one reference from construction to destruction; dropping the
// last releases the table. Any thread; serialised by the process-wide instance mutex.
void acquire();
void drop();

}  // namespace imageTable
}  // namespace ziv
