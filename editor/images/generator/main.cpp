// ziv_image_generator: draws every picture of the editor and writes it as a PNG file into the
// folder given on the command line (the build's `editor_images` target passes editor/images/).
#include <cstdio>
#include <fstream>

#include "editor/images/generator/image_set.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s <output folder>\n", argv[0]);
    return 2;
  }
  const std::string folder = argv[1];
  for (const art::ImageFile& image : art::drawAllImages()) {
    const std::vector<unsigned char> png = art::encodePng(image);
    const std::string path = folder + "/" + image.name;
    std::ofstream out(path, std::ios::binary);
    if (png.empty() ||
        !out.write(reinterpret_cast<const char*>(png.data()), static_cast<std::streamsize>(png.size()))) {
      std::fprintf(stderr, "%s: cannot write '%s'\n", argv[0], path.c_str());
      return 1;
    }
  }
  return 0;
}
