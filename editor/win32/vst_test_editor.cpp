#include "editor/win32/vst_test_editor.h"

#include "editor/win32/editor_window.h"

namespace ziv {

VstTestEditor::VstTestEditor(VstTest& instance) : ui_(instance) {}

VstTestEditor::~VstTestEditor() {
  close();
}

bool VstTestEditor::getRect(vst2::ERect** rect) {
  // Written on every call: the host may have scribbled on what it was handed last time.
  rect_ = vst2::ERect{0, 0, EditorUi::kHeight, EditorUi::kWidth};
  *rect = &rect_;
  return true;
}

bool VstTestEditor::open(void* parentWindow) {
  close();
  if (parentWindow == nullptr) return false;
  window_ = std::make_unique<EditorWindow>(ui_, static_cast<HWND>(parentWindow), EditorUi::kWidth,
                                           EditorUi::kHeight);
  window_->runFrame(true);
  return true;
}

void VstTestEditor::close() {
  window_.reset();
}

}  // namespace ziv
