#include "editor/win32/text_field.h"

namespace ziv {
namespace {

constexpr WPARAM kEnter = 13;
constexpr WPARAM kEscape = 27;
constexpr DWORD kLowWord = 0xFFFF;

}  // namespace

std::wstring toWide(const std::string& utf8) {
  const int length = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(length), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), wide.data(), length);
  return wide;
}

std::string toUtf8(const wchar_t* wide) {
  const int size = WideCharToMultiByte(CP_UTF8, 0, wide, -1, nullptr, 0, nullptr, nullptr);
  if (size <= 1) return std::string();
  std::string utf8(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, wide, -1, utf8.data(), size, nullptr, nullptr);
  utf8.pop_back();  // the terminator
  return utf8;
}

void TextField::open(const Rect& area, const std::string& text, int maxLength, FontHandle font) {
  if (control_ == nullptr) {
    committed_ = false;
    cancelled_ = false;
    control_ =
        CreateWindowExW(0, L"edit", L"", WS_CHILD | WS_VISIBLE | ES_AUTOVSCROLL | ES_AUTOHSCROLL, area.x,
                        area.y, area.width, 0, owner_, nullptr, GetModuleHandleW(nullptr), nullptr);
    if (control_ == nullptr) return;
    SetWindowLongPtrW(control_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    previousProcedure_ = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(control_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&TextField::filter)));
    SendMessageW(control_, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
    SendMessageW(control_, EM_LIMITTEXT, static_cast<WPARAM>(maxLength), 0);
    const std::wstring wide = toWide(text);
    SetWindowTextW(control_, wide.c_str());
    SendMessageW(control_, EM_SETSEL, 0, static_cast<LPARAM>(wide.size()));
  }
  SetFocus(control_);
}

void TextField::close() {
  if (control_ == nullptr) return;
  DestroyWindow(control_);
  control_ = nullptr;
  previousProcedure_ = nullptr;
  committed_ = false;
  cancelled_ = false;
}

void TextField::selection(int& start, int& end) const {
  start = end = 0;
  if (control_ == nullptr) return;
  const DWORD range = static_cast<DWORD>(SendMessageW(control_, EM_GETSEL, 0, 0));
  start = static_cast<int>(range & kLowWord);
  end = static_cast<int>((range >> 16) & kLowWord);
}

std::string TextField::text() const {
  if (control_ == nullptr) return std::string();
  wchar_t buffer[kMaxText] = {};
  GetWindowTextW(control_, buffer, kMaxText);
  return toUtf8(buffer);
}

LRESULT CALLBACK TextField::filter(HWND control, UINT message, WPARAM wParam, LPARAM lParam) {
  auto* self = reinterpret_cast<TextField*>(GetWindowLongPtrW(control, GWLP_USERDATA));
  if (self == nullptr || self->previousProcedure_ == nullptr)
    return DefWindowProcW(control, message, wParam, lParam);
  const WNDPROC previous = self->previousProcedure_;
  if (message == WM_GETDLGCODE) {
    // Hosts run dialog-style message loops; without this they would take Enter and Escape.
    return CallWindowProcW(previous, control, message, wParam, lParam) | DLGC_WANTALLKEYS;
  }
  if (message == WM_CHAR && wParam == kEnter) {
    self->committed_ = true;
    return 0;  // a single-line edit control would only beep
  }
  if (message == WM_CHAR && wParam == kEscape) self->cancelled_ = true;
  return CallWindowProcW(previous, control, message, wParam, lParam);
}

}  // namespace ziv
