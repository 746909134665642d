#include "editor/drawing.h"

#include "editor/text_fit.h"

namespace ziv {
namespace {

int widthOf(const Image& image) {
  return static_cast<int>(image.width);
}
int heightOf(const Image& image) {
  return static_cast<int>(image.height);
}
Rect wholeOf(const Image& image) {
  return Rect{0, 0, widthOf(image), heightOf(image)};
}

}  // namespace

Rect queuePicture(DrawList& list, int layer, int x, int y, const Image& image) {
  const Rect area{x, y, widthOf(image), heightOf(image)};
  list.queueImage(layer, area, image, wholeOf(image), 255);
  return area;
}

void queueStretched(DrawList& list, int layer, const Rect& area, const Image& image) {
  list.queueImage(layer, area, image, wholeOf(image), 255);
}

void queueThreePiece(DrawList& list, int layer, const Rect& area, ImageGroup group, int first) {
  const Image& left = imageTable::image(group, first);
  const Image& middle = imageTable::image(group, first + 1);
  const Image& right = imageTable::image(group, first + 2);
  const int leftWidth = widthOf(left), rightWidth = widthOf(right);
  queueStretched(list, layer, Rect{area.x, area.y, leftWidth, area.height}, left);
  queueStretched(list, layer,
                 Rect{area.x + leftWidth, area.y, area.width - leftWidth - rightWidth, area.height}, middle);
  queueStretched(list, layer, Rect{area.x + area.width - rightWidth, area.y, rightWidth, area.height}, right);
}

void queueNineSlice(DrawList& list, int layer, const Rect& area, ImageGroup group) {
  const Image& corner = imageTable::image(group, 0);
  const int w = widthOf(corner), h = heightOf(corner);
  const int columns[3] = {area.x, area.x + w, area.x + area.width - w};
  const int widths[3] = {w, area.width - 2 * w, w};
  const int rows[3] = {area.y, area.y + h, area.y + area.height - h};
  const int heights[3] = {h, area.height - 2 * h, h};
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      queueStretched(list, layer, Rect{columns[column], rows[row], widths[column], heights[row]},
                     imageTable::image(group, row * 3 + column));
    }
  }
}

Rect queueLabel(WidgetContext& context, int layer, int x, int y, const char* text, FontId font, int colour,
                int maxWidth, Align align) {
  if (text == nullptr || *text == '\0') return Rect{x, y, 0, 0};
  const FontHandle handle = imageTable::font(font);
  std::string& whole = context.labelScratch();
  std::string& shown = context.fittedScratch();
  whole.assign(text);
  fitText(context.canvas(), whole, handle, maxWidth, true, -1, shown);
  const Rect size = context.canvas().measureText(shown, handle);
  const int left = align == Align::kCentre ? x - size.width / 2 : x;
  const Rect area{left, y, size.width, size.height};
  context.drawList().queueText(layer, area, shown, handle, colour);
  return area;
}

}  // namespace ziv
