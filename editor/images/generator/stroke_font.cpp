#include "editor/images/generator/stroke_font.h"

#include <limits>
#include <vector>

#include "editor/images/generator/shapes.h"

namespace art {
namespace {

// Glyphs are designed on a grid 6 units high (y down), most 4 units wide.
constexpr float kGridHeight = 6.0f;
// Space between letters and the width of a space, in grid units.
constexpr float kTracking = 1.7f;
constexpr float kSpaceWidth = 2.5f;
// Points per quarter of an elliptic arc.
constexpr int kArcStepsPerQuarter = 6;

struct Point {
  float x;
  float y;
};
using Stroke = std::vector<Point>;

struct Glyph {
  float width;
  std::vector<Stroke> strokes;
};

// Appends to `stroke` the arc of the ellipse at (cx, cy) with radii rx, ry from `fromDegrees` to
// `toDegrees` (0 = right, increasing clockwise on screen).
void appendArc(Stroke& stroke, float cx, float cy, float rx, float ry, float fromDegrees, float toDegrees) {
  const float span = toDegrees - fromDegrees;
  const int steps = std::max(2, static_cast<int>(std::fabs(span) / 90.0f * kArcStepsPerQuarter));
  for (int i = 0; i <= steps; ++i) {
    const float a = (fromDegrees + span * static_cast<float>(i) / static_cast<float>(steps)) * kPi / 180.0f;
    stroke.push_back(Point{cx + rx * std::cos(a), cy + ry * std::sin(a)});
  }
}

Stroke arcStroke(Stroke start, float cx, float cy, float rx, float ry, float from, float to,
                 Stroke end = {}) {
  appendArc(start, cx, cy, rx, ry, from, to);
  start.insert(start.end(), end.begin(), end.end());
  return start;
}

Glyph glyphFor(char letter) {
  switch (letter) {
    case 'B':
      return {4.0f,
              {{{0, 0}, {0, 6}},
               arcStroke({{0, 0}, {2.3f, 0}}, 2.3f, 1.5f, 1.5f, 1.5f, -90, 90, {{0, 3}}),
               arcStroke({{0, 3}, {2.5f, 3}}, 2.5f, 4.5f, 1.5f, 1.5f, -90, 90, {{0, 6}})}};
    case 'C':
      return {4.0f, {arcStroke({}, 2.2f, 3, 2.2f, 3, -48, -312)}};
    case 'E':
      return {3.6f, {{{3.6f, 0}, {0, 0}, {0, 6}, {3.6f, 6}}, {{0, 3}, {3.0f, 3}}}};
    case 'F':
      return {3.6f, {{{3.6f, 0}, {0, 0}, {0, 6}}, {{0, 3}, {3.0f, 3}}}};
    case 'I':
      return {0.0f, {{{0, 0}, {0, 6}}}};
    case 'K':
      return {3.8f, {{{0, 0}, {0, 6}}, {{3.8f, 0}, {0, 3.9f}}, {{1.3f, 2.7f}, {3.9f, 6}}}};
    case 'L':
      return {3.4f, {{{0, 0}, {0, 6}, {3.4f, 6}}}};
    case 'N':
      return {4.0f, {{{0, 6}, {0, 0}, {4, 6}, {4, 0}}}};
    case 'O':
      return {4.6f, {arcStroke({}, 2.3f, 3, 2.3f, 3, 0, 360)}};
    case 'R':
      return {4.0f,
              {arcStroke({{0, 6}, {0, 0}, {2.4f, 0}}, 2.4f, 1.6f, 1.6f, 1.6f, -90, 90, {{0, 3.2f}}),
               {{2.2f, 3.2f}, {4, 6}}}};
    case 'S':
      return {4.0f, {arcStroke(arcStroke({}, 2, 1.5f, 2, 1.5f, -25, -270), 2, 4.5f, 2, 1.5f, -90, 155)}};
    case 'V':
      return {4.4f, {{{0, 0}, {2.2f, 6}, {4.4f, 0}}}};
    case 'W':
      return {5.6f, {{{0, 0}, {1.3f, 6}, {2.8f, 1.2f}, {4.3f, 6}, {5.6f, 0}}}};
    case 'Z':
      return {4.0f, {{{0, 0}, {4, 0}, {0, 6}, {4, 6}}}};
    default:
      return {kSpaceWidth - kTracking, {}};
  }
}

struct Segment {
  Point a;
  Point b;
};

// The strokes of `text` as segments in grid units, the first letter starting at x = 0; returns
// the text's width in grid units.
float layout(const std::string& text, std::vector<Segment>& segments) {
  float x = 0.0f;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const Glyph glyph = glyphFor(text[i]);
    for (const Stroke& stroke : glyph.strokes) {
      for (std::size_t p = 1; p < stroke.size(); ++p) {
        segments.push_back(Segment{{x + stroke[p - 1].x, stroke[p - 1].y}, {x + stroke[p].x, stroke[p].y}});
      }
    }
    x += glyph.width + (i + 1 < text.size() ? kTracking : 0.0f);
  }
  return x;
}

}  // namespace

float textWidth(const std::string& text, const TextStyle& style) {
  std::vector<Segment> segments;
  return layout(text, segments) * style.capHeight / kGridHeight + style.strokeWidth;
}

void drawTextCentred(Picture& picture, const std::string& text, float cx, float cy, const TextStyle& style) {
  std::vector<Segment> segments;
  const float scale = style.capHeight / kGridHeight;
  const float left = cx - layout(text, segments) * scale * 0.5f;
  const float top = cy - style.capHeight * 0.5f;
  for (Segment& s : segments) {
    s.a = Point{left + s.a.x * scale, top + s.a.y * scale};
    s.b = Point{left + s.b.x * scale, top + s.b.y * scale};
  }
  const auto distance = [&](float x, float y) {
    float nearest = std::numeric_limits<float>::max();
    for (const Segment& s : segments) {
      nearest = std::min(nearest, segment(s.a.x, s.a.y, s.b.x, s.b.y, style.strokeWidth)(x, y));
    }
    return nearest;
  };
  const float halfWidth = textWidth(text, style) * 0.5f;
  const Box area{cx - halfWidth - 1.0f, top - style.strokeWidth, cx + halfWidth + 1.0f,
                 top + style.capHeight + style.strokeWidth};
  fill(picture, area, distance, style.colour);
}

}  // namespace art
