// In-place text entry (the program name and other short edits): a Win32 edit control that takes
// the keyboard, the caret and the selection while the editor draws the text itself. The control
// is zero pixels high, so it is never seen. Enter commits (and is swallowed), Escape cancels; the
// editor polls the flags, the text and the selection each frame.
//
// Threads: the host's user-interface thread only.
#pragma once

#include <windows.h>

#include <string>

#include "editor/image.h"

namespace ziv {

class TextField {
 public:
  // Room for the text read back, in UTF-16 units.
  static constexpr int kMaxText = 1000;

  TextField() = default;
  ~TextField() { close(); }
  TextField(const TextField&) = delete;
  TextField& operator=(const TextField&) = delete;

  // The window that the control is created in (the editor's window).
  void attach(HWND owner) { owner_ = owner; }

  // Opens the control over `area` (its height is ignored) with `text` (UTF-8) all selected,
  // unless one is open already; in every case gives it the keyboard focus.
  void open(const Rect& area, const std::string& text, int maxLength, FontHandle font);
  void close();

  bool isOpen() const { return control_ != nullptr; }
  bool hasFocus() const { return control_ != nullptr && GetFocus() == control_; }
  // Start and end of the selection (the caret when they are equal); (0, 0) when closed.
  void selection(int& start, int& end) const;
  // The text as UTF-8; empty when closed.
  std::string text() const;
  bool committed() const { return committed_; }
  bool cancelled() const { return cancelled_; }

 private:
  static LRESULT CALLBACK filter(HWND control, UINT message, WPARAM wParam, LPARAM lParam);

  HWND owner_ = nullptr;
  HWND control_ = nullptr;
  WNDPROC previousProcedure_ = nullptr;
  bool committed_ = false;
  bool cancelled_ = false;
};

// UTF-8 to UTF-16 and back, for the controls and dialogs that speak UTF-16.
std::wstring toWide(const std::string& utf8);
std::string toUtf8(const wchar_t* wide);

}  // namespace ziv
