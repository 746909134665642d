#include "editor/win32/gdi_canvas.h"

#include <algorithm>
#include <cstring>

namespace ziv {
namespace {

constexpr int kBytesPerPixel = 4;
constexpr BYTE kOpaque = 255;

// A top-down 32-bit header for an image's pixel buffer.
BITMAPINFO pictureHeader(const Image& image) {
  BITMAPINFO info{};
  info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
  info.bmiHeader.biWidth = static_cast<LONG>(image.width);
  info.bmiHeader.biHeight = -static_cast<LONG>(image.height);
  info.bmiHeader.biPlanes = 1;
  info.bmiHeader.biBitCount = 32;
  info.bmiHeader.biCompression = BI_RGB;
  return info;
}

int measuredLength(const std::string& text) {
  return static_cast<int>(std::min<std::size_t>(text.size(), GdiCanvas::kMaxMeasured));
}

}  // namespace

COLORREF toColorRef(int colour) {
  return RGB((colour >> 16) & 0xFF, (colour >> 8) & 0xFF, colour & 0xFF);
}

GdiCanvas::GdiCanvas(HDC target, HWND window) : target_(target), window_(window) {}

GdiCanvas::~GdiCanvas() {
  clearClip();
  for (auto& picture : pictures_) DeleteObject(picture.second);
}

void GdiCanvas::drawImage(const Rect& dst, const Image& image, const Rect& src, float alpha) {
  if (image.bitmap == nullptr) return;
  HDC source = CreateCompatibleDC(target_);
  HGDIOBJ previous = SelectObject(source, static_cast<HBITMAP>(image.bitmap));
  if (alpha >= 0.0f) {
    BLENDFUNCTION blend{};
    blend.BlendOp = AC_SRC_OVER;
    blend.SourceConstantAlpha = static_cast<BYTE>(std::min(alpha, 1.0f) * kOpaque);
    blend.AlphaFormat = AC_SRC_ALPHA;
    AlphaBlend(target_, dst.x, dst.y, dst.width, dst.height, source, src.x, src.y, src.width, src.height,
               blend);
  } else {
    StretchBlt(target_, dst.x, dst.y, dst.width, dst.height, source, src.x, src.y, src.width, src.height,
               SRCCOPY);
  }
  SelectObject(source, previous);
  DeleteDC(source);
}

void GdiCanvas::drawText(const std::string& text, int x, int y, FontHandle font, int colour) {
  if (font == nullptr) return;
  SetTextColor(target_, toColorRef(colour));
  HGDIOBJ previous = SelectObject(target_, static_cast<HFONT>(font));
  TextOutA(target_, x, y, text.data(), static_cast<int>(text.size()));
  SelectObject(target_, previous);
}

Rect GdiCanvas::measureText(const std::string& text, FontHandle font) {
  if (font == nullptr) return Rect{};
  const TextSize& size = textSize(text, font);
  return Rect{0, 0, size.width, size.height};
}

int GdiCanvas::fitCount(const std::string& text, FontHandle font, int maxWidth, int* extents, int capacity) {
  if (font == nullptr) return 0;
  const TextSize& size = textSize(text, font);
  if (extents != nullptr && capacity > 0) {
    std::copy_n(size.extents.begin(), std::min<std::size_t>(capacity, size.extents.size()), extents);
  }
  // As GetTextExtentExPoint counts: the characters whose extent is within the width.
  return static_cast<int>(std::upper_bound(size.extents.begin(), size.extents.end(), maxWidth) -
                          size.extents.begin());
}

const GdiCanvas::TextSize& GdiCanvas::textSize(const std::string& text, FontHandle font) {
  auto kept = std::find_if(textSizes_.begin(), textSizes_.end(),
                           [font](const auto& sizes) { return sizes.first == font; });
  if (kept == textSizes_.end()) kept = textSizes_.insert(textSizes_.end(), {font, TextSizes{}});
  TextSizes& sizes = kept->second;
  auto found = sizes.find(text);
  if (found != sizes.end()) return found->second;

  if (sizes.size() >= kMaxKeptTexts) sizes.clear();
  TextSize& size = sizes[text];
  const int length = measuredLength(text);
  size.extents.resize(static_cast<std::size_t>(length));
  HGDIOBJ previous = SelectObject(target_, static_cast<HFONT>(font));
  SIZE total{};
  // Without a fit count to fill, GDI measures every character regardless of a maximum width.
  GetTextExtentExPointA(target_, text.data(), length, 0, nullptr, size.extents.data(), &total);
  SelectObject(target_, previous);
  size.width = total.cx;
  size.height = total.cy;
  return size;
}

void GdiCanvas::setClip(const Rect& clip) {
  clearClip();
  clip_ = CreateRectRgn(clip.x, clip.y, clip.x + clip.width, clip.y + clip.height);
  SelectClipRgn(target_, clip_);
}

void GdiCanvas::clearClip() {
  if (clip_ == nullptr) return;
  SelectClipRgn(target_, nullptr);
  DeleteObject(clip_);
  clip_ = nullptr;
}

void GdiCanvas::invalidate(const Rect& area) {
  const RECT rect{area.x, area.y, area.x + area.width, area.y + area.height};
  InvalidateRect(window_, &rect, FALSE);
}

void GdiCanvas::beginPixels(Image& image) {
  if (image.width == 0 || image.height == 0) return;
  delete[] image.pixels;
  image.pixels = new std::uint8_t[std::size_t{image.width} * image.height * kBytesPerPixel]();
  auto made = std::find_if(pictures_.begin(), pictures_.end(),
                           [&image](const auto& picture) { return picture.first == &image; });
  if (made != pictures_.end() && made->second == image.bitmap) return;
  // A bitmap from an earlier window is gone with it: this window makes its own.
  const BITMAPINFO header = pictureHeader(image);
  void* bits = nullptr;
  HBITMAP bitmap = CreateDIBSection(nullptr, &header, DIB_RGB_COLORS, &bits, nullptr, 0);
  if (made != pictures_.end()) {
    DeleteObject(made->second);
    made->second = bitmap;
  } else {
    pictures_.emplace_back(&image, bitmap);
  }
  image.bitmap = bitmap;
}

void GdiCanvas::endPixels(Image& image) {
  if (image.pixels == nullptr) return;
  if (image.bitmap != nullptr) {
    const BITMAPINFO header = pictureHeader(image);
    // SetDIBits wants the bitmap selected into no context; the temporary one only names the
    // display the bits are meant for.
    HDC temporary = CreateCompatibleDC(nullptr);
    SetDIBits(temporary, static_cast<HBITMAP>(image.bitmap), 0, image.height, image.pixels, &header,
              DIB_RGB_COLORS);
    DeleteDC(temporary);
  }
  delete[] image.pixels;
  image.pixels = nullptr;
}

}  // namespace ziv
