#include "editor/win32/editor_window.h"

#include <windowsx.h>

namespace ziv {
namespace {

constexpr UINT_PTR kTimerId = 0;
constexpr int kLeftButton = 0;
constexpr int kRightButton = 1;

// The class and its windows belong to the host process's module rather than the plug-in's; the
// class's registration and every window creation name the same module, so they always match.
HINSTANCE hostModule() {
  return GetModuleHandleW(nullptr);
}

void registerWindowClass(WNDPROC procedure) {
  WNDCLASSW windowClass{};
  windowClass.style = CS_DBLCLKS;
  windowClass.lpfnWndProc = procedure;
  windowClass.hInstance = hostModule();
  windowClass.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
  windowClass.lpszClassName = EditorWindow::kClassName;
  RegisterClassW(&windowClass);
}

}  // namespace

int EditorWindow::liveCount_ = 0;

EditorWindow::EditorWindow(EditorUi& ui, HWND parent, int width, int height) : ui_(ui), parent_(parent) {
  if (++liveCount_ == 1) registerWindowClass(&EditorWindow::procedure);
  window_ = CreateWindowExW(0, kClassName, L"", WS_CHILD | WS_CLIPCHILDREN, 0, 0, width, height, parent,
                            nullptr, hostModule(), this);
  HDC windowContext = GetWindowDC(window_);
  offscreen_ = CreateCompatibleBitmap(windowContext, width, height);
  memoryContext_ = CreateCompatibleDC(windowContext);
  initialBitmap_ = SelectObject(memoryContext_, offscreen_);
  ReleaseDC(window_, windowContext);
  canvas_ = std::make_unique<GdiCanvas>(memoryContext_, window_);
  textField_.attach(window_);
  platform_ = std::make_unique<Win32Platform>(window_, textField_);
  ui_.setPlatform(platform_.get());

  ShowWindow(window_, SW_SHOW);
  InvalidateRect(window_, nullptr, FALSE);
  UpdateWindow(window_);
  SetTimer(window_, kTimerId, kTimerMs, nullptr);
}

EditorWindow::~EditorWindow() {
  // Messages sent while the window goes (capture loss, focus) must not run a frame any more.
  if (window_ != nullptr) SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
  ui_.closePopup();
  ui_.setPlatform(nullptr);
  textField_.close();
  KillTimer(window_, kTimerId);
  DestroyWindow(window_);
  canvas_.reset();
  if (memoryContext_ != nullptr) SelectObject(memoryContext_, initialBitmap_);
  DeleteObject(offscreen_);
  DeleteDC(memoryContext_);
  if (--liveCount_ == 0) UnregisterClassW(kClassName, hostModule());
}

void EditorWindow::runFrame(bool fullRedraw) {
  if (window_ == nullptr || memoryContext_ == nullptr) return;
  // Texts are drawn over the images, never on a box of their own.
  SetBkMode(memoryContext_, TRANSPARENT);
  ui_.runFrame(*canvas_, fullRedraw, static_cast<std::uint32_t>(GetTickCount()));
}

LRESULT CALLBACK EditorWindow::procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_CREATE) {
    // Messages arrive before CreateWindowExW returns the handle to the constructor.
    auto* created =
        static_cast<EditorWindow*>(reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpCreateParams);
    created->window_ = window;
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(created));
  }
  auto* self = reinterpret_cast<EditorWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  if (self == nullptr) return DefWindowProcW(window, message, wParam, lParam);
  // Nothing the editor throws (an allocation failing inside a frame, above all) may unwind through
  // the host's message loop: the message then counts as handled.
  try {
    return self->handleMessage(message, wParam, lParam);
  } catch (...) {
    return 0;
  }
}

LRESULT EditorWindow::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_LBUTTONDOWN:
    case WM_RBUTTONDOWN:
      if (GetCapture() != window_) SetCapture(window_);
      ui_.buttonDown(message == WM_LBUTTONDOWN ? kLeftButton : kRightButton);
      break;
    case WM_LBUTTONUP:
    case WM_RBUTTONUP:
      if (GetCapture() == window_) ReleaseCapture();
      ui_.buttonUp(message == WM_LBUTTONUP ? kLeftButton : kRightButton);
      break;
    case WM_LBUTTONDBLCLK:
    case WM_RBUTTONDBLCLK: {
      const int button = message == WM_LBUTTONDBLCLK ? kLeftButton : kRightButton;
      ui_.buttonDown(button);
      ui_.buttonDoubleClick(button);
      break;
    }
    case WM_CAPTURECHANGED:
      // Losing the capture mid-drag (another window took it) ends every press.
      ui_.buttonUp(kLeftButton);
      ui_.buttonUp(kRightButton);
      break;
    case WM_MOUSEMOVE:
      ui_.setShift((wParam & MK_SHIFT) != 0);
      ui_.setMousePosition(GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam));
      break;
    case WM_PAINT:
      if (memoryContext_ == nullptr) return DefWindowProcW(window_, message, wParam, lParam);
      paint();
      return 0;
    case WM_ERASEBKGND:
      return 1;
    case WM_TIMER:
      runFrame(false);
      return 1;
    default:
      // The wheel and every other message in the mouse range, the keyboard and the rest.
      return DefWindowProcW(window_, message, wParam, lParam);
  }
  runFrame(false);
  return 1;
}

void EditorWindow::paint() {
  RECT update{};
  GetUpdateRect(window_, &update, FALSE);
  // The update region may be several rectangles; with the whole window invalid, BeginPaint clips
  // to the whole window and the copy of their bounding rectangle is not cut back to them.
  InvalidateRect(window_, nullptr, FALSE);
  PAINTSTRUCT paintInfo{};
  HDC screen = BeginPaint(window_, &paintInfo);
  BitBlt(screen, update.left, update.top, update.right - update.left, update.bottom - update.top,
         memoryContext_, update.left, update.top, SRCCOPY);
  EndPaint(window_, &paintInfo);
}

}  // namespace ziv
