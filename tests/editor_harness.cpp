#include "editor_harness.h"

#include <algorithm>

#include "editor/image_table.h"

namespace ziv::testing {

void RecordingCanvas::drawImage(const Rect& dst, const Image& image, const Rect& src, float alpha) {
  images.push_back({dst, &image, src, alpha});
}

void RecordingCanvas::drawText(const std::string& text, int x, int y, FontHandle, int) {
  texts.push_back({text, x, y});
}

void RecordingCanvas::beginPixels(Image& image) {
  std::vector<std::uint8_t>& buffer = drawing_[&image];
  buffer.assign(static_cast<std::size_t>(image.width) * image.height * 4, 0);
  image.pixels = buffer.data();
}

void RecordingCanvas::endPixels(Image& image) {
  pixels[&image] = drawing_[&image];
  image.pixels = nullptr;
  ++pictures;
}

void RecordingCanvas::clear() {
  images.clear();
  texts.clear();
  invalidated.clear();
  pictures = 0;
}

const RecordingCanvas::ImageCall* RecordingCanvas::imageAt(const Rect& d) const {
  for (const ImageCall& call : images) {
    const Rect& r = call.destination;
    if (r.x == d.x && r.y == d.y && r.width == d.width && r.height == d.height) return &call;
  }
  return nullptr;
}

bool RecordingCanvas::drewText(const std::string& text) const {
  return std::any_of(texts.begin(), texts.end(), [&](const TextCall& call) { return call.text == text; });
}

bool RecordingCanvas::drewTextStartingWith(const std::string& head) const {
  return std::any_of(texts.begin(), texts.end(),
                     [&](const TextCall& call) { return call.text.compare(0, head.size(), head) == 0; });
}

std::string RecordingCanvas::textAt(int x, int y) const {
  for (const TextCall& call : texts) {
    if (call.y == y && call.x <= x && x < call.x + kCharWidth * static_cast<int>(call.text.size()))
      return call.text;
  }
  return "";
}

EditorHarness::EditorHarness() : ui(host.plugin()) {
  frame(true);
}

void EditorHarness::frame(bool fullRedraw, std::uint32_t elapsedMs) {
  canvas.clear();
  now += elapsedMs;
  ui.runFrame(canvas, fullRedraw, now);
}

void EditorHarness::moveTo(int x, int y, bool shift) {
  ui.setShift(shift);
  ui.setMousePosition(x, y);
  frame();
}

void EditorHarness::press(int x, int y, int button) {
  ui.setMousePosition(x, y);
  ui.buttonDown(button);
  frame();
}

void EditorHarness::release(int button) {
  ui.buttonUp(button);
  frame();
}

void EditorHarness::click(int x, int y, int button) {
  press(x, y, button);
  release(button);
}

void EditorHarness::doubleClick(int x, int y) {
  click(x, y);
  ui.setMousePosition(x, y);
  ui.buttonDown(0);
  ui.buttonDoubleClick(0);
  frame();
  release();
}

int EditorHarness::centreX(WidgetId id) const {
  const Rect r = context().rect(id);
  return r.x + r.width / 2;
}

int EditorHarness::centreY(WidgetId id) const {
  const Rect r = context().rect(id);
  return r.y + r.height / 2;
}

}  // namespace ziv::testing
