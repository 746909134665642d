// Drawing on an image's CPU pixel buffer (B, G, R, A bytes, rows top first), for the pictures
// the editor makes itself: anti-aliased lines of any thickness with round caps, and a soft drop
// shadow under what has been drawn. Images without a pixel buffer are left alone.
//
// Threads: the host's user-interface thread, between Canvas::beginPixels and endPixels.
#pragma once

#include <cstdint>
#include <vector>

#include "editor/image.h"

namespace ziv {

// A line from (x0, y0) to (x1, y1) of half-thickness `radius`, colour 0xAARRGGBB blended over
// what the buffer holds by each pixel's coverage.
void drawLine(Image& image, float x0, float y0, float x1, float y1, float radius, std::uint32_t colour);
// Lines between consecutive points (x, y pairs); fewer than two points draw nothing.
void drawPolyline(Image& image, const float* points, int pointCount, float radius, std::uint32_t colour);
// Darkens each pixel by the alpha found one to four rows up and one or two columns left of it,
// then draws the pixel itself over the darkening: a shadow falling down and to the right.
// `scratch` holds the copy of the buffer it reads (grown on first use).
void addShadow(Image& image, std::vector<std::uint8_t>& scratch);

}  // namespace ziv
