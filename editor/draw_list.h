// The editor's queued drawing: widgets append commands to one of 20 layers during a frame, and
// the end of the frame draws the layers in order, 0 first, each command only where it meets
// the dirty rectangle, then empties them without freeing their memory.
//
// Threads: the host's user-interface thread only.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "editor/canvas.h"
#include "editor/image.h"

namespace ziv {

struct DrawCommand {
  enum Kind : int { kText = 0, kImage = 1 };

  Rect destination;
  std::string text;
  int colour = 0;  // 0xRRGGBB
  FontHandle font = nullptr;
  const Image* image = nullptr;
  Rect source;
  int alpha = 255;  // 255 opaque blend; negative selects the opaque stretch copy
  int kind = kText;
};

class DrawList {
 public:
  static constexpr int kLayerCount = 20;

  // Layers below 0 are clamped to 0, above 19 to 19.
  void queueImage(int layer, const Rect& destination, const Image& image, const Rect& source, int alpha);
  void queueText(int layer, const Rect& destination, const std::string& text, FontHandle font, int colour);
  // Grows the dirty rectangle to include `area`.
  void markDirty(const Rect& area);
  const Rect& dirty() const { return dirty_; }

  // Draws every queued command that meets the dirty rectangle (edges inclusive) inside a clip
  // of it, empties the layers, invalidates the dirty rectangle on the canvas when it is not
  // empty, and starts the next frame with an empty dirty rectangle.
  void flush(Canvas& canvas);

  // The commands queued on `index` since the last flush.
  int commandCount(int index) const { return used_[index]; }
  const DrawCommand& command(int index, int position) const { return layers_[index][position]; }

 private:
  // A command slot at the end of `layer`, reusing one from an earlier frame when there is one.
  DrawCommand& next(int layer);

  std::array<std::vector<DrawCommand>, kLayerCount> layers_;
  std::array<int, kLayerCount> used_{};  // commands in use per layer; the vectors only grow
  Rect dirty_;
};

}  // namespace ziv
