// The editor's system services on Windows, for one open editor window: the common file
// choosers, the "Error" message box and the browser over dialogs.h, and the in-place text entry
// over the window's TextField. The window owns it and hands it to the editor while it is open.
//
// Threads: the host's user-interface thread only.
#pragma once

#include <windows.h>

#include "editor/editor_platform.h"
#include "editor/win32/text_field.h"

namespace ziv {

class Win32Platform : public EditorPlatform {
 public:
  Win32Platform(HWND owner, TextField& textField) : owner_(owner), textField_(textField) {}

  std::string openFileDialog(const std::string& description, const std::string& extension,
                             const std::string& title) override;
  std::string saveFileDialog(const std::string& defaultName, const std::string& description,
                             const std::string& extension, const std::string& title) override;
  void showError(const std::string& text) override;
  void openWebPage(const std::string& address) override;

  void openTextField(const Rect& area, const std::string& text, int maxLength, FontHandle font) override {
    textField_.open(area, text, maxLength, font);
  }
  void closeTextField() override { textField_.close(); }
  bool textFieldOpen() const override { return textField_.isOpen(); }
  bool textFieldHasFocus() const override { return textField_.hasFocus(); }
  std::string textFieldText() const override { return textField_.text(); }
  void textFieldSelection(int& start, int& end) const override { textField_.selection(start, end); }
  bool textFieldCommitted() const override { return textField_.committed(); }
  bool textFieldCancelled() const override { return textField_.cancelled(); }

 private:
  HWND owner_;
  TextField& textField_;
};

}  // namespace ziv
