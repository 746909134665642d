#include "editor/text_fit.h"

#include <algorithm>
#include <array>

namespace ziv {
namespace {

constexpr const char* kEllipsis = "...";
// Wide enough to measure every character's extent when looking for the caret's window.
constexpr int kUnlimitedWidth = 10000;

}  // namespace

std::string fitText(Canvas& canvas, const std::string& text, FontHandle font, int maxWidth, bool ellipsis,
                    int keepIndex) {
  std::array<int, kFitMeasureLimit> extents{};
  const int length = std::min(static_cast<int>(text.size()), kFitMeasureLimit);
  const std::string measured = text.substr(0, static_cast<std::size_t>(length));
  int fit = canvas.fitCount(measured, font, maxWidth, extents.data(), length);
  if (fit >= static_cast<int>(text.size())) return text;

  const std::string suffix = ellipsis ? kEllipsis : "";
  const int suffixWidth = suffix.empty() ? 0 : canvas.measureText(suffix, font).width;

  if (fit > keepIndex) {
    while (fit > 0 && extents[static_cast<std::size_t>(fit - 1)] + suffixWidth > maxWidth) --fit;
    return text.substr(0, static_cast<std::size_t>(fit)) + suffix;
  }

  // The character at keepIndex stays visible: find the first start that lets it fit.
  const int keep = std::min(keepIndex, length - 1);
  canvas.fitCount(measured, font, kUnlimitedWidth, extents.data(), length);
  int start = 0;
  while (start < keep) {
    const int before = start == 0 ? 0 : extents[static_cast<std::size_t>(start - 1)];
    if (suffixWidth + extents[static_cast<std::size_t>(keep)] - before <= maxWidth) break;
    ++start;
  }
  return text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(keep - start + 1)) + suffix;
}

}  // namespace ziv
