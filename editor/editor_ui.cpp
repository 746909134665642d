#include "editor/editor_ui.h"

#include "editor/image_table.h"
#include "editor/info_view.h"
#include "editor/layout.h"
#include "plugin/vst_test.h"

namespace ziv {

EditorUi::EditorUi(VstTest& instance)
    : instance_(instance),
      context_(instance, drawList_),
      menus_(instance),
      version_(versionText(VstTest::kVersion)) {}

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
  if (inFrame_) return;
  inFrame_ = true;
  imageTable::ensureLoaded();
  if (redrawRequested_.exchange(false, std::memory_order_relaxed)) fullRedraw = true;
  if (fullRedraw) drawList_.markDirty(Rect{0, 0, kWidth, kHeight});

  input_ = sampleInput(input_, mouse_, nowMs);
  for (MouseState::Button& button : mouse_.buttons) {
    button.pressLatch = false;
    button.doubleClick = false;
  }
  context_.beginPass(input_, canvas, fullRedraw);
  layoutPass(context_, instance_, version_);
  menus_.serve(context_);
  drawList_.flush(canvas);

  // A program chosen in this pass is applied once, after everything has been drawn.
  const int program = context_.pendingProgram();
  if (program >= 0) {
    context_.setPendingProgram(-1);
    instance_.setProgram(program);
  }
  if (context_.webPageRequested()) {
    context_.setWebPageRequested(false);
    if (EditorPlatform* platform = context_.platform()) platform->openWebPage(kMakerWebAddress);
  }
  inFrame_ = false;
}

}  // namespace ziv
