// What the editor asks of the system beyond drawing: the modal file choosers and message box,
// the in-place text entry, and the web browser. The window layer implements it over Win32 while
// the window is open; tests implement it with scripted answers.
//
// Threads: the host's user-interface thread only, inside an editor frame.
#pragma once

#include <string>

#include "editor/image.h"

namespace ziv {

class EditorPlatform {
 public:
  virtual ~EditorPlatform() = default;

  // Modal file choosers: the chosen path, or an empty string when the user cancels. `extension`
  // has no dot ("fxb").
  virtual std::string openFileDialog(const std::string& description, const std::string& extension,
                                     const std::string& title) = 0;
  virtual std::string saveFileDialog(const std::string& defaultName, const std::string& description,
                                     const std::string& extension, const std::string& title) = 0;
  // A modal message box titled "Error".
  virtual void showError(const std::string& text) = 0;
  // Opens `address` in the web browser.
  virtual void openWebPage(const std::string& address) = 0;

  // The single-line text entry over `area` (the keyboard goes to it; the editor draws its text):
  // opened with `text` selected and at most `maxLength` characters; committed by Enter,
  // cancelled by Escape.
  virtual void openTextField(const Rect& area, const std::string& text, int maxLength, FontHandle font) = 0;
  virtual void closeTextField() = 0;
  virtual bool textFieldOpen() const = 0;
  virtual bool textFieldHasFocus() const = 0;
  virtual std::string textFieldText() const = 0;
  // The selection (start, end) in characters; (0, 0) when no field is open.
  virtual void textFieldSelection(int& start, int& end) const = 0;
  virtual bool textFieldCommitted() const = 0;
  virtual bool textFieldCancelled() const = 0;
};

}  // namespace ziv
