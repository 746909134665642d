// Signed-distance shapes for the image generator (negative inside, in pixels): the outlines
// every picture is built from. Each returns a callable of (x, y) for `fill` and `glow`.
#pragma once

#include <algorithm>
#include <cmath>

#include "editor/images/generator/raster.h"

namespace art {

constexpr float kPi = 3.14159265358979f;

inline float length(float x, float y) {
  return std::sqrt(x * x + y * y);
}

inline auto circle(float cx, float cy, float radius) {
  return [=](float x, float y) { return length(x - cx, y - cy) - radius; };
}

// A box with corners rounded by `radius`.
inline auto roundedBox(const Box& box, float radius) {
  const float cx = (box.x0 + box.x1) * 0.5f;
  const float cy = (box.y0 + box.y1) * 0.5f;
  const float hx = box.width() * 0.5f - radius;
  const float hy = box.height() * 0.5f - radius;
  return [=](float x, float y) {
    const float qx = std::fabs(x - cx) - hx;
    const float qy = std::fabs(y - cy) - hy;
    return length(std::max(qx, 0.0f), std::max(qy, 0.0f)) + std::min(std::max(qx, qy), 0.0f) - radius;
  };
}

// The band of `width` pixels just inside the outline of `shape`.
template <class Shape>
auto outline(Shape shape, float width) {
  return [=](float x, float y) {
    const float d = shape(x, y);
    return std::max(d, -d - width);
  };
}

// A straight stroke from (ax, ay) to (bx, by) with round caps, `width` pixels thick.
inline auto segment(float ax, float ay, float bx, float by, float width) {
  return [=](float x, float y) {
    const float dx = bx - ax;
    const float dy = by - ay;
    const float lengthSquared = dx * dx + dy * dy;
    const float t =
        lengthSquared > 0.0f ? std::clamp(((x - ax) * dx + (y - ay) * dy) / lengthSquared, 0.0f, 1.0f) : 0.0f;
    return length(x - ax - t * dx, y - ay - t * dy) - width * 0.5f;
  };
}

// The point at `angle` radians clockwise from twelve o'clock on a circle.
inline float dialX(float cx, float radius, float angle) {
  return cx + radius * std::sin(angle);
}
inline float dialY(float cy, float radius, float angle) {
  return cy - radius * std::cos(angle);
}

// A stroke along a circle of `radius` from angle `from` to angle `to` (radians clockwise from
// twelve o'clock, from <= to, within -pi..pi), `width` thick, with round caps.
inline auto arc(float cx, float cy, float radius, float from, float to, float width) {
  return [=](float x, float y) {
    const float angle = std::atan2(x - cx, cy - y);
    if (angle >= from && angle <= to) return std::fabs(length(x - cx, y - cy) - radius) - width * 0.5f;
    const float toStart = length(x - dialX(cx, radius, from), y - dialY(cy, radius, from));
    const float toEnd = length(x - dialX(cx, radius, to), y - dialY(cy, radius, to));
    return std::min(toStart, toEnd) - width * 0.5f;
  };
}

// A triangle through three points given clockwise on screen (y down); the distance is that of
// the nearest edge line, exact along the edges where coverage is decided.
inline auto triangle(float ax, float ay, float bx, float by, float cx, float cy) {
  auto edge = [](float px, float py, float qx, float qy, float x, float y) {
    const float ex = qx - px;
    const float ey = qy - py;
    return ((x - px) * ey - (y - py) * ex) / length(ex, ey);
  };
  return [=](float x, float y) {
    return std::max({edge(ax, ay, bx, by, x, y), edge(bx, by, cx, cy, x, y), edge(cx, cy, ax, ay, x, y)});
  };
}

}  // namespace art
