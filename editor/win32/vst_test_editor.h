// The plug-in's VST 2.4 editor on Windows: a fixed 1040 x 472 window that the host opens inside
// a window of its own. The editor object lives as long as the instance; its window exists only
// between open and close (or the editor's destruction, whichever comes first).
//
// Threads: the host's user-interface thread, except requestRedraw (any thread).
#pragma once

#include <memory>

#include "editor/editor_ui.h"
#include "plugin/plugin_editor.h"

namespace ziv {

class EditorWindow;
class VstTest;

class VstTestEditor : public PluginEditor {
 public:
  explicit VstTestEditor(VstTest& instance);
  ~VstTestEditor() override;

  // Answers 0, 0, 472, 1040 (top, left, bottom, right) whether open or not.
  bool getRect(vst2::ERect** rect) override;
  // Creates the window in `parentWindow` (an HWND) and runs a full-redraw frame; a window
  // already open is closed first, so a host may open again in a new parent. False for no parent.
  bool open(void* parentWindow) override;
  void close() override;
  void requestRedraw() override { ui_.requestRedraw(); }

  bool isOpen() const { return window_ != nullptr; }

 private:
  EditorUi ui_;
  vst2::ERect rect_{};
  std::unique_ptr<EditorWindow> window_;
};

}  // namespace ziv
