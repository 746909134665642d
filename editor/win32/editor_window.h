// The editor's native window: a plain Win32 child window of the host's window, with an
// off-screen bitmap that every frame draws into and a 50 ms timer. Its procedure forwards the
// mouse (both buttons, capture, double-clicks, Shift) to the editor's input and runs a frame
// after each mouse message and each tick; painting copies the update rectangle from the
// off-screen bitmap, and the background is never erased. It ignores the wheel and the keyboard.
//
// The window class is registered with the first window of the process and unregistered with
// the last, across all plug-in instances.
//
// Threads: the host's user-interface thread only (the thread that created the window).
#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>

#include "editor/editor_ui.h"
#include "editor/win32/gdi_canvas.h"
#include "editor/win32/text_field.h"
#include "editor/win32/win32_platform.h"

namespace ziv {

class EditorWindow {
 public:
  static constexpr UINT kTimerMs = 50;
  static constexpr const wchar_t* kClassName = L"Quorvantis VRN Ziv Window";

  // Creates the child window of `parent` at (0, 0) with its bitmap, shows it and starts the
  // timer; runs no frame (the caller runs the first, full one).
  EditorWindow(EditorUi& ui, HWND parent, int width, int height);
  // The editor has the window's system services (dialogs, text entry) while the window lives.
  // Closes any open menu, stops the timer and destroys the window (and a text field inside it)
  // and the bitmap.
  ~EditorWindow();
  EditorWindow(const EditorWindow&) = delete;
  EditorWindow& operator=(const EditorWindow&) = delete;

  HWND handle() const { return window_; }
  HWND parent() const { return parent_; }
  // The memory context with the off-screen bitmap selected; all drawing of a frame goes here.
  HDC memoryContext() const { return memoryContext_; }
  TextField& textField() { return textField_; }

  // One editor frame onto the off-screen bitmap.
  void runFrame(bool fullRedraw);

  // Windows of this class alive in the process.
  static int liveCount() { return liveCount_; }

 private:
  static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam);
  void paint();

  static int liveCount_;

  EditorUi& ui_;
  HWND parent_;
  HWND window_ = nullptr;
  HBITMAP offscreen_ = nullptr;
  HDC memoryContext_ = nullptr;
  HGDIOBJ initialBitmap_ = nullptr;  // the memory context's own bitmap, put back before deletion
  std::unique_ptr<GdiCanvas> canvas_;
  TextField textField_;
  std::unique_ptr<Win32Platform> platform_;
};

}  // namespace ziv
