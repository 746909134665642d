#include "editor/pixel_drawing.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace ziv {
namespace {

constexpr int kChannels = 4;
constexpr float kCoverageScale = 256.0f;
constexpr int kShadowOffsets = 6;
constexpr int kShadowShift = 5;  // the six alphas' sum, divided by 32

// Coverage c (0..255) of `colour` over the pixel at (x, y), unless it lies outside the buffer.
void blendPixel(Image& image, int x, int y, int coverage, std::uint32_t colour) {
  if (x < 0 || y < 0 || x >= static_cast<int>(image.width) || y >= static_cast<int>(image.height)) return;
  std::uint8_t* pixel =
      image.pixels + (static_cast<std::size_t>(y) * image.width + static_cast<std::size_t>(x)) * kChannels;
  const std::uint32_t source[kChannels] = {colour & 0xFF, (colour >> 8) & 0xFF, (colour >> 16) & 0xFF,
                                           colour >> 24};
  const std::uint32_t c = static_cast<std::uint32_t>(coverage);
  for (int channel = 0; channel < kChannels; ++channel) {
    pixel[channel] = static_cast<std::uint8_t>((pixel[channel] * (255 - c) + c * source[channel]) >> 8);
  }
}

int coverageOf(float distanceInside) {
  return std::clamp(static_cast<int>(distanceInside * kCoverageScale), 0, 255);
}

}  // namespace

void drawLine(Image& image, float x0, float y0, float x1, float y1, float radius, std::uint32_t colour) {
  if (image.pixels == nullptr) return;
  // Walk the major axis (a), cover the minor one (b) around the line.
  const bool yMajor = std::fabs(y1 - y0) > std::fabs(x1 - x0);
  float aStart = yMajor ? y0 : x0, bStart = yMajor ? x0 : y0;
  float aEnd = yMajor ? y1 : x1, bEnd = yMajor ? x1 : y1;
  if (aStart > aEnd) {
    std::swap(aStart, aEnd);
    std::swap(bStart, bEnd);
  }
  const float slope = aEnd > aStart ? (bEnd - bStart) / (aEnd - aStart) : 0.0f;
  const float root = std::sqrt(slope * slope + 1.0f);
  const float perpendicular = root > 0.0f ? 1.0f / root : 1.0f;  // distance along b to distance from the line
  const int segmentFirst = static_cast<int>(aStart), segmentLast = static_cast<int>(aEnd);
  const int reach = static_cast<int>(radius) + 1;

  for (int i = static_cast<int>(aStart - radius); i <= static_cast<int>(aEnd + radius); ++i) {
    const float b = bStart + (static_cast<float>(i) - aStart) * slope;
    const bool inSegment = segmentFirst <= i && i <= segmentLast;
    // Beyond the ends, the round cap around the nearer endpoint.
    const float capA = i < segmentFirst ? aStart : aEnd, capB = i < segmentFirst ? bStart : bEnd;
    for (int j = static_cast<int>(b) - reach; j <= static_cast<int>(b) + reach; ++j) {
      const float dj = static_cast<float>(j), di = static_cast<float>(i);
      const int coverage =
          inSegment ? coverageOf(radius - std::fabs(b - dj) * perpendicular)
                    : coverageOf(radius - std::sqrt((dj - capB) * (dj - capB) + (di - capA) * (di - capA)));
      if (coverage > 0) blendPixel(image, yMajor ? j : i, yMajor ? i : j, coverage, colour);
    }
  }
}

void drawPolyline(Image& image, const float* points, int pointCount, float radius, std::uint32_t colour) {
  for (int i = 0; i + 1 < pointCount; ++i) {
    drawLine(image, points[2 * i], points[2 * i + 1], points[2 * i + 2], points[2 * i + 3], radius, colour);
  }
}

void addShadow(Image& image, std::vector<std::uint8_t>& scratch) {
  if (image.pixels == nullptr) return;
  const std::ptrdiff_t w = static_cast<std::ptrdiff_t>(image.width);
  const std::ptrdiff_t count = w * static_cast<std::ptrdiff_t>(image.height);
  scratch.resize(static_cast<std::size_t>(count * kChannels));
  std::memcpy(scratch.data(), image.pixels, scratch.size());
  const std::ptrdiff_t offsets[kShadowOffsets] = {w + 1,     2 * w + 1, 3 * w + 1,
                                                  2 * w + 2, 3 * w + 2, 4 * w + 2};

  for (std::ptrdiff_t i = 0; i < count; ++i) {
    std::uint32_t sum = 0;
    for (std::ptrdiff_t offset : offsets) {
      if (i >= offset) sum += scratch[static_cast<std::size_t>((i - offset) * kChannels + 3)];
    }
    const std::uint32_t shadow = sum >> kShadowShift;
    std::uint8_t* pixel = image.pixels + i * kChannels;
    const std::uint8_t* own = scratch.data() + i * kChannels;
    for (int channel = 0; channel < 3; ++channel)
      pixel[channel] = static_cast<std::uint8_t>(pixel[channel] * (255 - shadow) >> 8);
    pixel[3] = static_cast<std::uint8_t>((pixel[3] * (255 - shadow) >> 8) + shadow);
    // The stroke itself over its shadow (premultiplied source-over).
    const std::uint32_t ownAlpha = own[3];
    for (int channel = 0; channel < kChannels; ++channel) {
      pixel[channel] = static_cast<std::uint8_t>(
          std::min<std::uint32_t>(255, (pixel[channel] * (255 - ownAlpha) >> 8) + own[channel]));
    }
  }
}

}  // namespace ziv
