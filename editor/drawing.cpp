#include "editor/drawing.h"

#include <algorithm>

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

// The learn highlight's pieces draw their line this far inside their outer edge.
constexpr int kGlowLineInset = 6;

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

Rect queueLearnHighlight(DrawList& list, int layer, const Rect& area) {
  // Members 0-7 of the group: top-left, top, top-right, left, right, bottom-left, bottom,
  // bottom-right. Corners shrink to half the frame on controls smaller than two of them.
  const Rect frame{area.x - kGlowLineInset, area.y - kGlowLineInset, area.width + 2 * kGlowLineInset,
                   area.height + 2 * kGlowLineInset};
  const Image& corner = imageTable::image(imgGlowFrame, 0);
  const int w = std::min(widthOf(corner), frame.width / 2), h = std::min(heightOf(corner), frame.height / 2);
  const int columns[3] = {frame.x, frame.x + w, frame.x + frame.width - w};
  const int widths[3] = {w, frame.width - 2 * w, w};
  const int rows[3] = {frame.y, frame.y + h, frame.y + frame.height - h};
  const int heights[3] = {h, frame.height - 2 * h, h};
  int member = 0;
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      if (row == 1 && column == 1) continue;  // no centre piece
      const Rect piece{columns[column], rows[row], widths[column], heights[row]};
      if (piece.width > 0 && piece.height > 0)
        queueStretched(list, layer, piece, imageTable::image(imgGlowFrame, member));
      ++member;
    }
  }
  return frame;
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
