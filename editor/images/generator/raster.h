// The image generator's drawing surface: a float RGBA picture (premultiplied, rows top first)
// and shape filling by signed distance. A shape is a function giving, for a point, its signed
// distance in pixels to the outline (negative inside); a pixel's coverage is that distance
// taken at the pixel centre through a one-pixel ramp, which anti-aliases every edge the same
// way whatever the shape. Everything here is deterministic, so the pictures are reproducible.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace art {

// A straight (not premultiplied) colour, channels 0..1.
struct Colour {
  float r = 0.0f;
  float g = 0.0f;
  float b = 0.0f;
  float a = 1.0f;
};

// 0xRRGGBB with an opacity.
constexpr Colour hex(std::uint32_t rgb, float alpha = 1.0f) {
  return Colour{static_cast<float>((rgb >> 16) & 0xFF) / 255.0f,
                static_cast<float>((rgb >> 8) & 0xFF) / 255.0f, static_cast<float>(rgb & 0xFF) / 255.0f,
                alpha};
}

inline Colour withAlpha(Colour c, float alpha) {
  c.a = alpha;
  return c;
}

// Linear mix of two colours, t = 0 gives `from`.
inline Colour mix(const Colour& from, const Colour& to, float t) {
  t = std::clamp(t, 0.0f, 1.0f);
  return Colour{from.r + (to.r - from.r) * t, from.g + (to.g - from.g) * t, from.b + (to.b - from.b) * t,
                from.a + (to.a - from.a) * t};
}

// An axis-aligned box in picture coordinates (x0, y0 inclusive edges, x1, y1 exclusive).
struct Box {
  float x0 = 0.0f;
  float y0 = 0.0f;
  float x1 = 0.0f;
  float y1 = 0.0f;

  float width() const { return x1 - x0; }
  float height() const { return y1 - y0; }
  Box inset(float d) const { return Box{x0 + d, y0 + d, x1 - d, y1 - d}; }
  Box moved(float dx, float dy) const { return Box{x0 + dx, y0 + dy, x1 + dx, y1 + dy}; }
};

class Picture {
 public:
  Picture() = default;
  Picture(int width, int height)
      : width_(width), height_(height), rgba_(static_cast<std::size_t>(width) * height * 4) {}

  int width() const { return width_; }
  int height() const { return height_; }
  Box bounds() const { return Box{0.0f, 0.0f, static_cast<float>(width_), static_cast<float>(height_)}; }

  // Source-over of `colour` onto pixel (x, y) with the given coverage 0..1.
  void blend(int x, int y, const Colour& colour, float coverage) {
    const float a = colour.a * coverage;
    if (a <= 0.0f) return;
    float* p = pixel(x, y);
    const float keep = 1.0f - a;
    p[0] = colour.r * a + p[0] * keep;
    p[1] = colour.g * a + p[1] * keep;
    p[2] = colour.b * a + p[2] * keep;
    p[3] = a + p[3] * keep;
  }

  // Every pixel set to `colour`, replacing what was there.
  void clear(const Colour& colour);
  // The part of this picture at (x, y) of the given size, as a picture of its own.
  Picture crop(int x, int y, int width, int height) const;
  // `source` drawn over this picture with its top-left corner at (x, y).
  void compose(const Picture& source, int x, int y);
  // Straight 8-bit R, G, B, A bytes, or R, G, B alone when `withAlpha` is false (the picture is
  // then taken as opaque).
  std::vector<unsigned char> bytes(bool withAlpha) const;

  const float* pixel(int x, int y) const { return &rgba_[(static_cast<std::size_t>(y) * width_ + x) * 4]; }
  float* pixel(int x, int y) { return &rgba_[(static_cast<std::size_t>(y) * width_ + x) * 4]; }

 private:
  int width_ = 0;
  int height_ = 0;
  std::vector<float> rgba_;
};

// How much of a pixel a shape covers, from its signed distance at the pixel centre.
inline float coverageOf(float distance) {
  return std::clamp(0.5f - distance, 0.0f, 1.0f);
}

// The shape that covers every pixel, for fills whose paint does all the work.
inline float everywhere(float, float) {
  return -1.0f;
}

// Fills the shape `distance` (signed distance of a point) with `paint` (colour of a point) over
// the pixels of `area`, clipped to the picture.
template <class Distance, class Paint>
void fill(Picture& picture, const Box& area, Distance distance, Paint paint) {
  const int x0 = std::max(0, static_cast<int>(std::floor(area.x0)));
  const int y0 = std::max(0, static_cast<int>(std::floor(area.y0)));
  const int x1 = std::min(picture.width(), static_cast<int>(std::ceil(area.x1)));
  const int y1 = std::min(picture.height(), static_cast<int>(std::ceil(area.y1)));
  for (int y = y0; y < y1; ++y) {
    for (int x = x0; x < x1; ++x) {
      const float px = static_cast<float>(x) + 0.5f;
      const float py = static_cast<float>(y) + 0.5f;
      const float c = coverageOf(distance(px, py));
      if (c > 0.0f) picture.blend(x, y, paint(px, py), c);
    }
  }
}

// The same with one colour.
template <class Distance>
void fill(Picture& picture, const Box& area, Distance distance, const Colour& colour) {
  fill(picture, area, distance, [&colour](float, float) { return colour; });
}

// A soft halo around a shape: opacity falls from `colour.a` at the outline to 0 at `spread`
// pixels outside it, and stays full inside.
template <class Distance>
void glow(Picture& picture, const Box& area, Distance distance, const Colour& colour, float spread) {
  fill(picture, area.inset(-spread), everywhere, [&](float x, float y) {
    const float t = 1.0f - std::clamp(distance(x, y) / spread, 0.0f, 1.0f);
    return withAlpha(colour, colour.a * t * t);
  });
}

// Vertical gradient from `top` at y0 to `bottom` at y1.
inline auto verticalGradient(const Colour& top, const Colour& bottom, float y0, float y1) {
  return [=](float, float y) { return mix(top, bottom, (y - y0) / (y1 - y0)); };
}

}  // namespace art
