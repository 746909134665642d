#include "editor/images/generator/raster.h"

namespace art {
namespace {

unsigned char toByte(float value) {
  return static_cast<unsigned char>(std::lround(std::clamp(value, 0.0f, 1.0f) * 255.0f));
}

}  // namespace

void Picture::clear(const Colour& colour) {
  for (int y = 0; y < height_; ++y) {
    for (int x = 0; x < width_; ++x) {
      float* p = pixel(x, y);
      p[0] = colour.r * colour.a;
      p[1] = colour.g * colour.a;
      p[2] = colour.b * colour.a;
      p[3] = colour.a;
    }
  }
}

Picture Picture::crop(int x, int y, int width, int height) const {
  Picture part(width, height);
  for (int row = 0; row < height; ++row) {
    for (int column = 0; column < width; ++column) {
      std::copy_n(pixel(x + column, y + row), 4, part.pixel(column, row));
    }
  }
  return part;
}

void Picture::compose(const Picture& source, int x, int y) {
  for (int row = 0; row < source.height(); ++row) {
    for (int column = 0; column < source.width(); ++column) {
      const int tx = x + column;
      const int ty = y + row;
      if (tx < 0 || ty < 0 || tx >= width_ || ty >= height_) continue;
      const float* s = source.pixel(column, row);
      float* d = pixel(tx, ty);
      const float keep = 1.0f - s[3];
      for (int c = 0; c < 4; ++c) d[c] = s[c] + d[c] * keep;
    }
  }
}

std::vector<unsigned char> Picture::bytes(bool withAlpha) const {
  const int channels = withAlpha ? 4 : 3;
  std::vector<unsigned char> out(static_cast<std::size_t>(width_) * height_ * channels);
  unsigned char* o = out.data();
  for (int y = 0; y < height_; ++y) {
    for (int x = 0; x < width_; ++x) {
      const float* p = pixel(x, y);
      const float a = p[3];
      // Opaque output keeps the premultiplied colour, which is the colour over black.
      const float scale = withAlpha && a > 0.0f ? 1.0f / a : 1.0f;
      *o++ = toByte(p[0] * scale);
      *o++ = toByte(p[1] * scale);
      *o++ = toByte(p[2] * scale);
      if (withAlpha) *o++ = toByte(a);
    }
  }
  return out;
}

}  // namespace art
