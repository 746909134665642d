// png_check: the editor tests' probe for screenshots.
//   png_check FILE region X Y W H
//     prints a digest (FNV-1a, hex) of the RGBA pixels of that rectangle, to compare two shots;
//   png_check FILE pixel X Y
//     prints the pixel's red, green, blue and alpha.
// Exits 1 with a message when the file does not decode or the area lies outside the picture.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "editor/lodepng_c.h"

namespace {

int usage() {
  std::fputs("usage: png_check FILE region X Y W H | png_check FILE pixel X Y\n", stderr);
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  const bool region = argc == 7 && std::strcmp(argv[2], "region") == 0;
  const bool pixel = argc == 5 && std::strcmp(argv[2], "pixel") == 0;
  if (!region && !pixel) return usage();
  const long x = std::strtol(argv[3], nullptr, 10), y = std::strtol(argv[4], nullptr, 10);
  const long w = region ? std::strtol(argv[5], nullptr, 10) : 1;
  const long h = region ? std::strtol(argv[6], nullptr, 10) : 1;

  unsigned char* rgba = nullptr;
  unsigned width = 0, height = 0;
  if (const unsigned error = lodepng_decode32_file(&rgba, &width, &height, argv[1])) {
    std::fprintf(stderr, "png_check: %s: %s\n", argv[1], lodepng_error_text(error));
    return 1;
  }
  if (x < 0 || y < 0 || w < 1 || h < 1 || x + w > static_cast<long>(width) ||
      y + h > static_cast<long>(height)) {
    std::fprintf(stderr, "png_check: %ld,%ld %ldx%ld lies outside %ux%u\n", x, y, w, h, width, height);
    std::free(rgba);
    return 1;
  }
  const unsigned char* first = rgba + 4 * (static_cast<long>(width) * y + x);
  if (pixel) {
    std::printf("%d %d %d %d\n", first[0], first[1], first[2], first[3]);
  } else {
    unsigned digest = 2166136261u;
    for (long row = 0; row < h; ++row) {
      const unsigned char* p = first + 4 * static_cast<long>(width) * row;
      for (long i = 0; i < 4 * w; ++i) digest = (digest ^ p[i]) * 16777619u;
    }
    std::printf("%08x\n", digest);
  }
  std::free(rgba);
  return 0;
}
