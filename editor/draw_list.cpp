#include "editor/draw_list.h"

#include <algorithm>

namespace ziv {
namespace {

int clampLayer(int layer) {
  return std::clamp(layer, 0, DrawList::kLayerCount - 1);
}

// Edges count as touching: a command that only borders the dirty rectangle is still drawn.
bool touches(const Rect& a, const Rect& b) {
  return a.x <= b.x + b.width && a.x + a.width >= b.x && a.y <= b.y + b.height && a.y + a.height >= b.y;
}

}  // namespace

void DrawList::queueImage(int layer, const Rect& destination, const Image& image, const Rect& source,
                          int alpha) {
  DrawCommand& command = next(clampLayer(layer));
  command.destination = destination;
  command.text.clear();
  command.font = nullptr;
  command.image = &image;
  command.source = source;
  command.alpha = alpha;
  command.kind = DrawCommand::kImage;
}

void DrawList::queueText(int layer, const Rect& destination, const std::string& text, FontHandle font,
                         int colour) {
  DrawCommand& command = next(clampLayer(layer));
  command.destination = destination;
  command.text.assign(text);
  command.colour = colour;
  command.font = font;
  command.image = nullptr;
  command.kind = DrawCommand::kText;
}

DrawCommand& DrawList::next(int layer) {
  std::vector<DrawCommand>& commands = layers_[layer];
  if (used_[layer] == static_cast<int>(commands.size())) commands.emplace_back();
  return commands[used_[layer]++];
}

void DrawList::markDirty(const Rect& area) {
  if (area.empty()) return;
  if (dirty_.empty()) {
    dirty_ = area;
    return;
  }
  const int left = std::min(dirty_.x, area.x), top = std::min(dirty_.y, area.y);
  const int right = std::max(dirty_.x + dirty_.width, area.x + area.width);
  const int bottom = std::max(dirty_.y + dirty_.height, area.y + area.height);
  dirty_ = Rect{left, top, right - left, bottom - top};
}

void DrawList::flush(Canvas& canvas) {
  if (!dirty_.empty()) {
    canvas.setClip(dirty_);
    for (int layer = 0; layer < kLayerCount; ++layer) {
      for (int i = 0; i < used_[layer]; ++i) {
        const DrawCommand& command = layers_[layer][i];
        if (!touches(command.destination, dirty_)) continue;
        if (command.kind == DrawCommand::kImage && command.image != nullptr) {
          canvas.drawImage(command.destination, *command.image, command.source,
                           static_cast<float>(command.alpha) * (1.0f / 255.0f));
        } else if (command.kind == DrawCommand::kText) {
          canvas.drawText(command.text, command.destination.x, command.destination.y, command.font,
                          command.colour);
        }
      }
    }
    canvas.clearClip();
    canvas.invalidate(dirty_);
  }
  used_.fill(0);
  dirty_ = Rect{};
}

}  // namespace ziv
