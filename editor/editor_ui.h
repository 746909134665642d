// The editor's platform-free side: it keeps the mouse state that the window forwards, and runs
// one immediate-mode frame on request (on opening, every timer tick and after every mouse
// message): the layout places every panel and control, which read the input, change parameters
// through the instance and queue draw commands; the end of the frame flushes them onto the
// window's canvas.
//
// Threads: the host's user-interface thread only, except `requestRedraw`, which any thread may
// call.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "editor/canvas.h"
#include "editor/draw_list.h"
#include "editor/editor_platform.h"
#include "editor/menus.h"
#include "editor/widget_context.h"

namespace ziv {

class VstTest;

class EditorUi {
 public:
  static constexpr int kWidth = kEditorWidth;
  static constexpr int kHeight = kEditorHeight;

  explicit EditorUi(VstTest& instance);

  // Mouse input, as the window procedure receives it. Buttons: 0 left, 1 right.
  void setShift(bool down);
  void setMousePosition(int x, int y);
  void buttonDown(int button);
  void buttonDoubleClick(int button);
  void buttonUp(int button);

  // Runs one frame onto `canvas`; `fullRedraw` marks the whole editor dirty; `nowMs` is a
  // millisecond clock for the step boxes' key repeat. A call made while a frame runs returns at
  // once.
  void runFrame(Canvas& canvas, bool fullRedraw, std::uint32_t nowMs);
  // The next frame redraws the whole editor (after a program or name change).
  void requestRedraw() { redrawRequested_.store(true, std::memory_order_relaxed); }

  // The system services of the open window (dialogs, text entry, browser); null while no window
  // is open, and then the editor offers none of what needs them.
  void setPlatform(EditorPlatform* platform) { context_.setPlatform(platform); }
  // Closes any open menu (ending a learn its menu started) and drops a pending rename, before
  // the window goes.
  void closePopup() {
    menus_.close(context_);
    context_.takeRenameRequest();
  }
  EditorPlatform* platform() const { return context_.platform(); }

  // What the frames share (the help text, the popup request, the widgets' rectangles), for the
  // layers above and for tests.
  const WidgetContext& context() const { return context_; }

 private:
  VstTest& instance_;
  DrawList drawList_;
  WidgetContext context_;
  PopupMenus menus_;
  MouseState mouse_;
  InputFrame input_;
  std::string version_;
  bool inFrame_ = false;
  std::atomic<bool> redrawRequested_{false};
};

}  // namespace ziv
