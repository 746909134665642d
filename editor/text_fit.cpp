#include "editor/text_fit.h"

#include <algorithm>
#include <array>

namespace ziv {
namespace {

constexpr const char* kEllipsis = "...";
// Wide enough to measure every character's extent when looking for the caret's window.
constexpr int kUnlimitedWidth = 10000;

}  // namespace

void fitText(Canvas& canvas, const std::string& text, FontHandle font, int maxWidth, bool ellipsis,
             int keepIndex, std::string& out) {
  std::array<int, kFitMeasureLimit> extents{};
  const int length = std::min(static_cast<int>(text.size()), kFitMeasureLimit);
  // Only a text beyond the limit needs a shortened copy to measure.
  const std::string longHead = length < static_cast<int>(text.size()) ? text.substr(0, kFitMeasureLimit) : "";
  const std::string& measured = longHead.empty() ? text : longHead;
  int fit = canvas.fitCount(measured, font, maxWidth, extents.data(), length);
  if (fit >= static_cast<int>(text.size())) {
    out.assign(text);
    return;
  }

  const std::string suffix = ellipsis ? kEllipsis : "";
  const int suffixWidth = suffix.empty() ? 0 : canvas.measureText(suffix, font).width;

  if (fit > keepIndex) {
    while (fit > 0 && extents[static_cast<std::size_t>(fit - 1)] + suffixWidth > maxWidth) --fit;
    out.assign(text, 0, static_cast<std::size_t>(fit));
    out += suffix;
    return;
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
  out.assign(text, static_cast<std::size_t>(start), static_cast<std::size_t>(keep - start + 1));
  out += suffix;
}

}  // namespace ziv
