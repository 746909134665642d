#include "editor/images/generator/image_set.h"

#include <cstdlib>

#include "editor/lodepng_c.h"

namespace art {

std::string memberName(const std::string& group, int index) {
  return group + "_" + std::to_string(index) + ".png";
}

ImageList drawAllImages() {
  ImageList images;
  drawEditorPictures(images);
  drawPanels(images);
  drawButtons(images);
  drawKnobs(images);
  drawStrips(images);
  drawMarks(images);
  return images;
}

std::vector<unsigned char> encodePng(const ImageFile& image) {
  const LodePNGColorType type = image.opaque ? LCT_RGB : LCT_RGBA;
  LodePNGState state;
  lodepng_state_init(&state);
  state.info_raw.colortype = type;
  state.info_raw.bitdepth = 8;
  state.info_png.color.colortype = type;
  state.info_png.color.bitdepth = 8;
  // The file keeps the colour type asked for, even where a smaller one would hold the pixels.
  state.encoder.auto_convert = 0;

  const std::vector<unsigned char> pixels = image.picture.bytes(!image.opaque);
  unsigned char* data = nullptr;
  std::size_t size = 0;
  lodepng_encode(&data, &size, pixels.data(), static_cast<unsigned>(image.picture.width()),
                 static_cast<unsigned>(image.picture.height()), &state);
  const unsigned error = state.error;
  lodepng_state_cleanup(&state);

  std::vector<unsigned char> file;
  if (error == 0 && data != nullptr) file.assign(data, data + size);
  std::free(data);
  return file;
}

}  // namespace art
