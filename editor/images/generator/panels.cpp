// The editor-sized pictures and the panel pieces. The background already carries every panel of
// the layout at its place, drawn exactly as the large nine-slice panel draws it, so the editor
// looks whole under any panel drawing; the untitled panel above the program box holds the logo.
// Panels keep a small transparent margin inside their rectangles, so touching panels show a
// dark seam between them.
#include <array>

#include "editor/images/generator/image_set.h"
#include "editor/images/generator/palette.h"
#include "editor/images/generator/shapes.h"
#include "editor/images/generator/stroke_font.h"
#include "editor/images/generator/surfaces.h"

namespace art {
namespace {

constexpr int kEditorWidth = 1040;
constexpr int kEditorHeight = 472;

constexpr int kLargePiece = 32;
constexpr int kSmallPiece = 16;
constexpr PanelStyle kLargePanel{2.0f, 7.0f, 1.0f};
constexpr PanelStyle kSmallPanel{1.0f, 4.0f, 1.0f};

// The editor's panels (left, top, right, bottom), as the layout places them.
constexpr std::array<Box, 18> kPanels = {{
    {8, 12, 224, 124},
    {8, 124, 224, 236},
    {8, 236, 224, 308},
    {8, 308, 224, 460},
    {224, 12, 384, 180},
    {224, 180, 384, 460},
    {384, 12, 544, 180},
    {384, 180, 544, 348},
    {384, 348, 544, 460},
    {544, 12, 704, 92},
    {544, 92, 704, 260},
    {544, 260, 704, 460},
    {712, 12, 872, 140},
    {712, 140, 872, 260},
    {712, 260, 872, 460},
    {872, 12, 1032, 180},
    {872, 180, 1032, 348},
    {872, 348, 1032, 460},
}};
// The untitled panel's upper part, above the program box, where the logo sits.
constexpr Box kLogoArea{872, 12, 1032, 88};

// The information view: a panel in the middle of the editor with the logo at its top.
constexpr Box kInfoBox{260, 86, 780, 386};
constexpr PanelStyle kInfoPanel{0.0f, 10.0f, 18.0f};
constexpr float kInfoLogoTop = 34.0f;
constexpr float kBracketLength = 16.0f;
constexpr float kBracketWidth = 2.0f;
constexpr float kBracketInset = 7.0f;

// The faint highlight outline (MIDI learn) and its corner accents.
constexpr float kGlowInset = 8.0f;
constexpr float kGlowRadius = 8.0f;
constexpr float kGlowStroke = 1.5f;
constexpr float kGlowSpread = 6.0f;

// The logo: "VRN" in light grey, "ZIV" in the accent, over a short accent rule.
void drawLogo(Picture& picture, float cx, float cy, float capHeight) {
  const TextStyle first{capHeight, capHeight * 0.16f, palette::kMarkBright};
  const TextStyle second{capHeight, capHeight * 0.16f, palette::kAccent};
  const float gap = capHeight * 0.45f;
  const float left = textWidth("VRN", first);
  const float right = textWidth("ZIV", second);
  const float x0 = cx - (left + gap + right) * 0.5f;
  drawTextCentred(picture, "VRN", x0 + left * 0.5f, cy, first);
  drawTextCentred(picture, "ZIV", x0 + left + gap + right * 0.5f, cy, second);
  const float ruleY = cy + capHeight * 0.95f;
  const float halfRule = (left + gap + right) * 0.5f;
  fill(picture, Box{cx - halfRule - 2, ruleY - 2, cx + halfRule + 2, ruleY + 2},
       segment(cx - halfRule, ruleY, cx + halfRule, ruleY, 1.5f),
       [&](float x, float) { return withAlpha(palette::kAccent, 1.0f - std::fabs(x - cx) / halfRule); });
}

Picture background() {
  Picture picture(kEditorWidth, kEditorHeight);
  fill(picture, picture.bounds(), everywhere,
       verticalGradient(palette::kGroundTop, palette::kGroundBottom, 0.0f, kEditorHeight));
  for (const Box& panel : kPanels) paintPanel(picture, panel, kLargePanel);
  drawLogo(picture, (kLogoArea.x0 + kLogoArea.x1) * 0.5f, (kLogoArea.y0 + kLogoArea.y1) * 0.5f - 6.0f, 18.0f);
  return picture;
}

Picture infoPanel() {
  Picture picture(kEditorWidth, kEditorHeight);
  paintPanel(picture, kInfoBox, kInfoPanel);
  drawLogo(picture, (kInfoBox.x0 + kInfoBox.x1) * 0.5f, kInfoBox.y0 + kInfoLogoTop + 14.0f, 28.0f);
  return picture;
}

// Accent brackets in the information panel's corners.
Picture infoOverlay() {
  Picture picture(kEditorWidth, kEditorHeight);
  const Box b = kInfoBox.inset(kBracketInset);
  const float l = kBracketLength;
  const std::array<std::array<float, 6>, 4> corners = {{
      {b.x0, b.y0 + l, b.x0, b.y0, b.x0 + l, b.y0},
      {b.x1 - l, b.y0, b.x1, b.y0, b.x1, b.y0 + l},
      {b.x0, b.y1 - l, b.x0, b.y1, b.x0 + l, b.y1},
      {b.x1 - l, b.y1, b.x1, b.y1, b.x1, b.y1 - l},
  }};
  for (const auto& c : corners) {
    const auto bracket = [&](float x, float y) {
      return std::min(segment(c[0], c[1], c[2], c[3], kBracketWidth)(x, y),
                      segment(c[2], c[3], c[4], c[5], kBracketWidth)(x, y));
    };
    const Box area{std::min(c[0], c[4]) - 2, std::min(c[1], c[5]) - 2, std::max(c[0], c[4]) + 2,
                   std::max(c[1], c[5]) + 2};
    fill(picture, area, bracket, withAlpha(palette::kAccent, 0.8f));
  }
  return picture;
}

Picture dimmer() {
  Picture picture(kEditorWidth, kEditorHeight);
  picture.clear(palette::kDim);
  return picture;
}

// The glow outline drawn on a 3 x 3 grid of pieces; pieces 0-7 are its edges and corners in row
// order without the centre, 8-11 brighter corner accents (top-left, top-right, bottom-left,
// bottom-right) to lay over the corners.
void appendGlowFrame(ImageList& images) {
  const int size = 3 * kLargePiece;
  Picture frame(size, size);
  const Box box = frame.bounds().inset(kGlowInset);
  const auto shape = roundedBox(box, kGlowRadius);
  glow(
      frame, box, [&](float x, float y) { return std::fabs(shape(x, y)); },
      withAlpha(palette::kAccent, 0.22f), kGlowSpread);
  fill(frame, frame.bounds(), outline(shape, kGlowStroke), withAlpha(palette::kAccent, 0.45f));

  Picture corners(size, size);
  const float l = kGlowRadius + kBracketLength * 0.5f;
  const auto bracketShape = [&](float x, float y) {
    const bool nearX = x < box.x0 + l || x > box.x1 - l;
    const bool nearY = y < box.y0 + l || y > box.y1 - l;
    return nearX && nearY ? std::fabs(shape(x, y)) - kBracketWidth * 0.5f : 1.0f;
  };
  fill(corners, corners.bounds(), bracketShape, withAlpha(palette::kAccent, 0.9f));

  int index = 0;
  for (int piece = 0; piece < 9; ++piece) {
    if (piece == 4) continue;
    const int x = (piece % 3) * kLargePiece;
    const int y = (piece / 3) * kLargePiece;
    images.push_back(
        ImageFile{memberName("glow_frame", index++), frame.crop(x, y, kLargePiece, kLargePiece), false});
  }
  for (const int piece : {0, 2, 6, 8}) {
    const int x = (piece % 3) * kLargePiece;
    const int y = (piece / 3) * kLargePiece;
    images.push_back(
        ImageFile{memberName("glow_frame", index++), corners.crop(x, y, kLargePiece, kLargePiece), false});
  }
}

}  // namespace

void drawEditorPictures(ImageList& images) {
  images.push_back(ImageFile{"background.png", background(), true});
  images.push_back(ImageFile{"info_panel.png", infoPanel(), false});
  images.push_back(ImageFile{"info_overlay.png", infoOverlay(), false});
  images.push_back(ImageFile{"dimmer.png", dimmer(), false});
}

void drawPanels(ImageList& images) {
  appendGlowFrame(images);
  Picture small(3 * kSmallPiece, 3 * kSmallPiece);
  paintPanel(small, small.bounds(), kSmallPanel);
  appendPieces(images, small, kSmallPiece, kSmallPiece, "panel_small", 0, true);
  Picture large(3 * kLargePiece, 3 * kLargePiece);
  paintPanel(large, large.bounds(), kLargePanel);
  appendPieces(images, large, kLargePiece, kLargePiece, "panel_large", 0, true);
}

}  // namespace art
