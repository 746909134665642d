// Checks of the editor's Windows layer, run under wine on a private X display (or on Windows):
// the GDI canvas's blits, clipping, CPU pictures and text measuring (with "Arial" measuring as
// its metric twin Liberation Sans under wine), the window class's lifetime across several
// windows, the hidden text field and the file choosers' filter. Prints each failed check and
// exits 1 when any failed. A plain program: GoogleTest is not built for mingw here.
#include <windows.h>

#include <cstdio>
#include <memory>
#include <string>

#include "editor/editor_ui.h"
#include "editor/win32/dialogs.h"
#include "editor/win32/editor_window.h"
#include "editor/win32/gdi_canvas.h"
#include "engine/synth_engine.h"
#include "plugin/vst_test.h"

namespace {

int checks = 0;
int failures = 0;

void check(bool condition, const std::string& what) {
  ++checks;
  if (condition) return;
  std::printf("FAIL: %s\n", what.c_str());
  ++failures;
}

vst2::VstIntPtr VST_CALLBACK quietHost(vst2::AEffect*, vst2::VstInt32 opcode, vst2::VstInt32, vst2::VstIntPtr,
                                       void*, float) {
  return opcode == vst2::audioMasterVersion ? 2400 : 0;
}

// A memory context with a 64 x 32 top-down 32-bit bitmap whose pixels the test reads directly.
struct Surface {
  static constexpr int kWidth = 64;
  static constexpr int kHeight = 32;
  Surface() {
    BITMAPINFO header{};
    header.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    header.bmiHeader.biWidth = kWidth;
    header.bmiHeader.biHeight = -kHeight;
    header.bmiHeader.biPlanes = 1;
    header.bmiHeader.biBitCount = 32;
    context = CreateCompatibleDC(nullptr);
    bitmap = CreateDIBSection(nullptr, &header, DIB_RGB_COLORS, reinterpret_cast<void**>(&bits), nullptr, 0);
    previous = SelectObject(context, bitmap);
  }
  ~Surface() {
    SelectObject(context, previous);
    DeleteObject(bitmap);
    DeleteDC(context);
  }
  // 0xRRGGBB of a pixel.
  unsigned pixel(int x, int y) const {
    GdiFlush();
    return bits[y * kWidth + x] & 0xFFFFFF;
  }
  void fill(unsigned colour) {
    GdiFlush();
    for (int i = 0; i < kWidth * kHeight; ++i) bits[i] = colour;
  }
  HDC context;
  HBITMAP bitmap;
  HGDIOBJ previous;
  unsigned* bits = nullptr;
};

// A 1 x 1 picture of one premultiplied B, G, R, A pixel, drawn through the canvas's CPU path.
void paintPicture(ziv::GdiCanvas& canvas, ziv::Image& image, const unsigned char bgra[4]) {
  canvas.beginPixels(image);
  for (int i = 0; i < 4; ++i) image.pixels[i] = bgra[i];
  canvas.endPixels(image);
}

void testBlits() {
  Surface surface;
  ziv::GdiCanvas canvas(surface.context, nullptr);
  ziv::Image red;
  red.width = red.height = 1;
  const unsigned char opaqueRed[4] = {0, 0, 255, 255};
  paintPicture(canvas, red, opaqueRed);
  check(red.bitmap != nullptr && red.pixels == nullptr, "endPixels keeps the bitmap and frees the buffer");

  const ziv::Rect pixel{0, 0, 1, 1};
  surface.fill(0x000000);
  canvas.drawImage(ziv::Rect{0, 0, 8, 8}, red, pixel, 0.0f);
  check(surface.pixel(4, 4) == 0x000000, "alpha 0 draws nothing");
  canvas.drawImage(ziv::Rect{0, 0, 8, 8}, red, pixel, 1.0f);
  check(surface.pixel(4, 4) == 0xFF0000, "alpha 1 draws the picture, stretched");
  canvas.drawImage(ziv::Rect{8, 0, 8, 8}, red, pixel, 0.5f);
  const unsigned half = surface.pixel(12, 4) >> 16;
  check(half >= 0x7E && half <= 0x81, "alpha 0.5 blends half: " + std::to_string(half));

  // A translucent picture: blended by its own alpha, copied as it is with a negative alpha.
  ziv::Image faint;
  faint.width = faint.height = 1;
  const unsigned char faintBlue[4] = {64, 0, 0, 64};
  paintPicture(canvas, faint, faintBlue);
  surface.fill(0xFFFFFF);
  canvas.drawImage(ziv::Rect{0, 0, 4, 4}, faint, pixel, 1.0f);
  check(surface.pixel(1, 1) == 0xBFBFFF, "per-pixel alpha blends over white");
  canvas.drawImage(ziv::Rect{4, 0, 4, 4}, faint, pixel, -1.0f);
  check(surface.pixel(5, 1) == 0x000040, "a negative alpha copies opaquely");

  // Clipping, and what a missing bitmap draws: nothing.
  surface.fill(0x000000);
  canvas.setClip(ziv::Rect{10, 10, 5, 5});
  canvas.drawImage(ziv::Rect{0, 0, 32, 32}, red, pixel, 1.0f);
  canvas.drawImage(ziv::Rect{0, 0, 32, 32}, ziv::Image{}, pixel, 1.0f);
  canvas.clearClip();
  check(surface.pixel(12, 12) == 0xFF0000 && surface.pixel(9, 12) == 0 && surface.pixel(15, 12) == 0,
        "drawing stays inside the clip");
  canvas.drawImage(ziv::Rect{20, 20, 2, 2}, red, pixel, 1.0f);
  check(surface.pixel(20, 20) == 0xFF0000, "clearClip lifts the clip");
}

HFONT makeFont(const char* face, int pixelHeight, bool bold) {
  LOGFONTA font{};
  font.lfHeight = -pixelHeight;
  font.lfWeight = bold ? FW_BOLD : FW_NORMAL;
  font.lfOutPrecision = OUT_TT_ONLY_PRECIS;
  lstrcpynA(font.lfFaceName, face, LF_FACESIZE);
  return CreateFontIndirectA(&font);
}

void testText() {
  Surface surface;
  HFONT reference = makeFont("Liberation Sans", 16, false);
  HGDIOBJ previous = SelectObject(surface.context, reference);
  char face[LF_FACESIZE] = {};
  GetTextFaceA(surface.context, LF_FACESIZE, face);
  SelectObject(surface.context, previous);
  DeleteObject(reference);
  check(std::string(face) == "Liberation Sans" || std::string(face) == "Arial",
        std::string("the reference font exists: ") + face);
  const char* texts[] = {"Vrn ZIV", "FILTER 1: Cutoff", "PAD - Warm Pad", "12.5 kHz", "WWWWiiii"};
  for (bool bold : {false, true}) {
    for (int size : {9, 10, 14, 16}) {
      HFONT arial = makeFont("Arial", size, bold);
      HFONT liberation = makeFont("Liberation Sans", size, bold);
      // A canvas keeps measurements by font handle, so it must not outlive these fonts.
      ziv::GdiCanvas canvas(surface.context, nullptr);
      for (const char* text : texts) {
        const int arialWidth = canvas.measureText(text, arial).width;
        check(
            arialWidth > 0 && arialWidth == canvas.measureText(text, liberation).width,
            std::string("\"Arial\" measures as Liberation Sans: '") + text + "' at " + std::to_string(size));
      }
      DeleteObject(arial);
      DeleteObject(liberation);
    }
  }

  HFONT font = makeFont("Arial", 16, false);
  ziv::GdiCanvas canvas(surface.context, nullptr);
  const std::string text = "Vrn ZIV";
  const int whole = canvas.measureText(text, font).width;
  int extents[16] = {};
  check(canvas.fitCount(text, font, whole, extents, 16) == 7 && extents[6] == whole,
        "the whole text fits its own width, the last extent is its width");
  check(canvas.fitCount(text, font, extents[2], extents, 16) == 3, "three characters fit their extent");
  check(canvas.fitCount(text, font, 0, nullptr, 0) == 0, "nothing fits no width");
  for (int width = 0; width <= whole + 2; ++width) {
    INT fit = -1;
    SIZE size{};
    HGDIOBJ previous = SelectObject(surface.context, font);
    GetTextExtentExPointA(surface.context, text.data(), static_cast<int>(text.size()), width, &fit, nullptr,
                          &size);
    SelectObject(surface.context, previous);
    check(canvas.fitCount(text, font, width, nullptr, 0) == fit,
          "kept measurements fit as GDI does at width " + std::to_string(width));
  }
  const std::string longText(3000, 'i');
  check(canvas.fitCount(longText, font, 100000, nullptr, 0) == ziv::GdiCanvas::kMaxMeasured,
        "long texts are measured on their first 1024 characters");

  surface.fill(0xFFFFFF);
  SetBkMode(surface.context, TRANSPARENT);
  canvas.drawText("IIII", 0, 0, font, 0xFF0000);
  bool red = false, otherInk = false;
  for (int y = 0; y < Surface::kHeight; ++y) {
    for (int x = 0; x < Surface::kWidth; ++x) {
      const unsigned p = surface.pixel(x, y);
      if (p == 0xFF0000) red = true;
      if (p != 0xFFFFFF && (p & 0xFF) != (p >> 8 & 0xFF)) otherInk = true;
    }
  }
  check(red && !otherInk, "text is drawn in 0xRRGGBB on a transparent background");
  DeleteObject(font);
}

bool classRegistered() {
  WNDCLASSW info{};
  return GetClassInfoW(GetModuleHandleW(nullptr), ziv::EditorWindow::kClassName, &info) != 0;
}

HWND makeParent() {
  return CreateWindowExW(0, L"STATIC", L"host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 1100, 520, nullptr,
                         nullptr, GetModuleHandleW(nullptr), nullptr);
}

void pumpMessages() {
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

void testWindowsAndTextField(ziv::EditorUi& ui) {
  HWND parent = makeParent();
  check(!classRegistered(), "no class before the first window");
  auto first = std::make_unique<ziv::EditorWindow>(ui, parent, ziv::EditorUi::kWidth, ziv::EditorUi::kHeight);
  auto second =
      std::make_unique<ziv::EditorWindow>(ui, parent, ziv::EditorUi::kWidth, ziv::EditorUi::kHeight);
  check(first->handle() != nullptr && second->handle() != nullptr, "both windows exist");
  check(ziv::EditorWindow::liveCount() == 2 && classRegistered(), "two windows share the class");
  RECT client{};
  GetClientRect(first->handle(), &client);
  check(client.right == 1040 && client.bottom == 472, "the window has the editor's size");
  first->runFrame(true);
  check(SendMessageW(first->handle(), WM_ERASEBKGND, 0, 0) == 1, "the background is never erased");

  // Painting copies the off-screen bitmap to the screen, where a screenshot reads it back.
  const RECT whole{0, 0, ziv::EditorUi::kWidth, ziv::EditorUi::kHeight};
  HBRUSH red = CreateSolidBrush(RGB(255, 0, 0));
  FillRect(first->memoryContext(), &whole, red);
  DeleteObject(red);
  InvalidateRect(first->handle(), nullptr, FALSE);
  UpdateWindow(first->handle());
  HDC screen = GetDC(first->handle());
  check(GetPixel(screen, 520, 236) == RGB(255, 0, 0) && GetPixel(screen, 1039, 471) == RGB(255, 0, 0),
        "the window shows the off-screen bitmap");
  ReleaseDC(first->handle(), screen);

  ziv::TextField& field = second->textField();
  field.open(ziv::Rect{10, 10, 100, 16}, "Init Grüße", 24, nullptr);
  int start = -1, end = -1;
  field.selection(start, end);
  check(field.isOpen() && field.text() == "Init Grüße", "the field holds its text as UTF-8: " + field.text());
  check(start == 0 && end == 10, "the whole text starts selected");
  HWND control = GetFocus();
  SendMessageW(control, WM_CHAR, 'A', 0);
  check(field.text() == "A", "typing replaces the selection: " + field.text());
  check(!field.committed() && !field.cancelled(), "no flag while typing");
  check(SendMessageW(control, WM_GETDLGCODE, 0, 0) & DLGC_WANTALLKEYS, "the field wants every key");
  SendMessageW(control, WM_CHAR, 13, 0);
  check(field.committed() && field.text() == "A", "Enter commits and is swallowed");
  SendMessageW(control, WM_CHAR, 27, 0);
  check(field.cancelled(), "Escape cancels");
  field.close();
  field.selection(start, end);
  check(!field.isOpen() && field.text().empty() && start == 0 && end == 0 && !field.committed(),
        "a closed field is empty");

  first.reset();
  pumpMessages();
  check(ziv::EditorWindow::liveCount() == 1 && classRegistered(), "closing the first leaves the class");
  second->textField().open(ziv::Rect{0, 0, 50, 16}, "x", 24, nullptr);
  second.reset();  // with its text field open
  pumpMessages();
  check(ziv::EditorWindow::liveCount() == 0 && !classRegistered(), "closing the last unregisters the class");
  DestroyWindow(parent);
}

void testFileFilter() {
  const std::string filter = ziv::fileFilter("VST Program", "fxp");
  check(filter == std::string("VST Program\0*.fxp\0", 18) && filter.c_str()[18] == '\0',
        "the filter is description, pattern and a double terminator");
}

}  // namespace

int main() {
  std::unique_ptr<ziv::VstTest> instance =
      std::make_unique<ziv::VstTest>(quietHost, std::make_unique<ziv::SynthEngine>());
  ziv::EditorUi ui(*instance);
  testBlits();
  testText();
  testWindowsAndTextField(ui);
  testFileFilter();
  std::printf("%d of %d editor window checks failed\n", failures, checks);
  return failures == 0 ? 0 : 1;
}
