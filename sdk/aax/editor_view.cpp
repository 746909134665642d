#include "sdk/aax/editor_view.h"

namespace ziv::aax {

void EditorView::open(std::int32_t containerType, void* parent, vst2::AEffEditor* editor) {
  close();
  if (containerType != kViewContainerWin32 || parent == nullptr || editor == nullptr) return;
  // An editor that could not open its window shows nothing, so the host gets no size for it.
  if (editor->open(parent)) editor_ = editor;
}

void EditorView::close() {
  if (editor_ == nullptr) return;
  vst2::AEffEditor* editor = editor_;
  editor_ = nullptr;
  editor->close();
}

Result EditorView::size(float* width, float* height) const {
  if (editor_ == nullptr) return kNotInitialized;
  vst2::ERect* rect = nullptr;
  if (!editor_->getRect(&rect) || rect == nullptr) return kNotInitialized;
  if (width != nullptr) *width = static_cast<float>(rect->right - rect->left);
  if (height != nullptr) *height = static_cast<float>(rect->bottom - rect->top);
  return kSuccess;
}

}  // namespace ziv::aax
