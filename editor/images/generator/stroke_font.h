// A small geometric stroke font for the words baked into pictures (the logo and the button
// labels): capitals built from straight strokes and elliptic arcs, drawn as one shape so that
// crossing strokes do not double their opacity. Only the letters the pictures use exist; any
// other character is a space.
#pragma once

#include <string>

#include "editor/images/generator/raster.h"

namespace art {

struct TextStyle {
  float capHeight;    // letter height in pixels
  float strokeWidth;  // pixels
  Colour colour;
};

// Width in pixels of `text` set in `style` (from the first stroke's left edge to the last one's
// right edge, stroke width included).
float textWidth(const std::string& text, const TextStyle& style);
// Draws `text` centred on (cx, cy).
void drawTextCentred(Picture& picture, const std::string& text, float cx, float cy, const TextStyle& style);

}  // namespace art
