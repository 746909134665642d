// Every picture of the editor's image table, drawn in memory: the generator writes them to
// editor/images/, and a test draws them again and compares them with the committed files.
//
// A picture is named after its image group and member index ("knob_large_1.png"), the names
// the image table loads by. Group drawing lives in knobs.cpp, panels.cpp and controls.cpp.
#pragma once

#include <string>
#include <vector>

#include "editor/images/generator/raster.h"

namespace art {

struct ImageFile {
  std::string name;  // file name, e.g. "panel_large_4.png"
  Picture picture;
  bool opaque;  // stored as an RGB PNG (colour type 2) instead of RGBA (colour type 6)
};

using ImageList = std::vector<ImageFile>;

// Every picture, in a fixed order.
ImageList drawAllImages();
// The PNG file of `image` (8 bits per sample, colour type 2 or 6 as `opaque` says, not
// interlaced), or an empty vector if encoding failed.
std::vector<unsigned char> encodePng(const ImageFile& image);

// `name` followed by "_<index>.png": the file name of member `index` of a group.
std::string memberName(const std::string& group, int index);

// The groups, each appended to `images`.
void drawKnobs(ImageList& images);
void drawPanels(ImageList& images);
void drawEditorPictures(ImageList& images);
void drawButtons(ImageList& images);
void drawStrips(ImageList& images);
void drawMarks(ImageList& images);

}  // namespace art
