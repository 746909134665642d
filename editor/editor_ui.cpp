#include "editor/editor_ui.h"

#include "editor/image_table.h"
#include "plugin/vst_test.h"

namespace ziv {

EditorUi::EditorUi(VstTest& instance) : instance_(instance) {}

void EditorUi::setShift(bool down) {
  mouse_.shift = down;
}

void EditorUi::setMousePosition(int x, int y) {
  mouse_.x = x;
  mouse_.y = y;
}

void EditorUi::buttonDown(int button) {
  if (button < 0 || button > 1) return;
  mouse_.buttons[button].down = true;
  mouse_.buttons[button].pressLatch = true;
}

void EditorUi::buttonDoubleClick(int button) {
  if (button < 0 || button > 1) return;
  mouse_.buttons[button].doubleClick = true;
}

void EditorUi::buttonUp(int button) {
  if (button < 0 || button > 1) return;
  mouse_.buttons[button].down = false;
}

void EditorUi::runFrame(Canvas& canvas, bool fullRedraw, std::uint32_t nowMs) {
  (void)nowMs;
  if (inFrame_) return;
  inFrame_ = true;
  imageTable::ensureLoaded();
  if (redrawRequested_.exchange(false, std::memory_order_relaxed)) fullRedraw = true;
  if (fullRedraw) drawList_.markDirty(Rect{0, 0, kWidth, kHeight});

  const Image& background = imageTable::image(imgBackground);
  drawList_.queueImage(0, Rect{0, 0, kWidth, kHeight}, background, Rect{0, 0, kWidth, kHeight}, 255);

  drawList_.flush(canvas);
  for (Button& button : mouse_.buttons) {
    button.pressLatch = false;
    button.doubleClick = false;
  }
  (void)instance_;
  inFrame_ = false;
}

}  // namespace ziv
