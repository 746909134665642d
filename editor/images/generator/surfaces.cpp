#include "editor/images/generator/surfaces.h"

#include "editor/images/generator/palette.h"
#include "editor/images/generator/shapes.h"

namespace art {
namespace {

// The light comes from above: a shadow one pixel down and a highlight along the top edge that
// fades out over this many pixels.
constexpr float kShadowDrop = 1.0f;
constexpr float kHighlightFade = 6.0f;
constexpr float kBorderWidth = 1.0f;
constexpr float kLitHalo = 3.0f;
constexpr float kLitHaloOpacity = 0.35f;

// The top-edge highlight of a rounded shape: its inner border row, bright at the top and gone
// `kHighlightFade` pixels lower.
void paintTopHighlight(Picture& picture, const Box& box, float radius, const Colour& colour) {
  fill(picture, box, outline(roundedBox(box, radius), kBorderWidth), [&](float, float y) {
    return withAlpha(colour, colour.a * std::clamp(1.0f - (y - box.y0) / kHighlightFade, 0.0f, 1.0f));
  });
}

}  // namespace

void paintPanel(Picture& picture, const Box& area, const PanelStyle& style) {
  const Box box = area.inset(style.margin);
  glow(picture, box.moved(0.0f, kShadowDrop), roundedBox(box.moved(0.0f, kShadowDrop), style.radius),
       palette::kPanelShadow, style.shadow);
  fill(picture, box, roundedBox(box, style.radius), palette::kPanelBody);
  fill(picture, box, outline(roundedBox(box, style.radius), kBorderWidth), palette::kPanelBorder);
  paintTopHighlight(picture, box.inset(kBorderWidth), style.radius - kBorderWidth, palette::kPanelHighlight);
}

void paintFace(Picture& picture, const Box& area, float radius, FaceState state) {
  const auto shape = roundedBox(area, radius);
  if (state == kLit) {
    glow(picture, area, shape, withAlpha(palette::kAccent, kLitHaloOpacity), kLitHalo);
    fill(picture, area, shape,
         verticalGradient(palette::kAccentDeep, palette::kAccentDark, area.y0, area.y1));
    fill(picture, area, outline(shape, kBorderWidth), palette::kAccent);
    paintTopHighlight(picture, area.inset(kBorderWidth), radius - kBorderWidth,
                      withAlpha(palette::kMarkBright, 0.6f));
    return;
  }
  glow(picture, area.moved(0.0f, kShadowDrop), roundedBox(area.moved(0.0f, kShadowDrop), radius),
       palette::kPanelShadow, kShadowDrop + 1.0f);
  const Colour top =
      state == kHover ? mix(palette::kFaceTop, palette::kMarkBright, 0.12f) : palette::kFaceTop;
  const Colour bottom = state == kHover ? palette::kFaceHover : palette::kFace;
  fill(picture, area, shape, verticalGradient(top, bottom, area.y0, area.y1));
  fill(picture, area, outline(shape, kBorderWidth), palette::kRim);
  paintTopHighlight(picture, area.inset(kBorderWidth), radius - kBorderWidth,
                    withAlpha(palette::kMarkBright, 0.18f));
}

void paintRecess(Picture& picture, const Box& area, float radius, bool lit) {
  const auto shape = roundedBox(area, radius);
  fill(picture, area, shape, palette::kGroove);
  fill(picture, area, outline(shape, kBorderWidth), lit ? palette::kAccent : palette::kGrooveBorder);
  // The inner shadow along the top edge that makes it read as sunk into the panel.
  if (!lit) paintTopHighlight(picture, area.inset(kBorderWidth), radius - kBorderWidth, hex(0x000000, 0.5f));
}

void appendPieces(ImageList& images, const Picture& picture, int pieceWidth, int pieceHeight,
                  const std::string& group, int first, bool opaqueCentre) {
  const int columns = picture.width() / pieceWidth;
  const int rows = picture.height() / pieceHeight;
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < columns; ++column) {
      const int piece = row * columns + column;
      const bool centre = columns == 3 && rows == 3 && piece == 4;
      images.push_back(
          ImageFile{memberName(group, first + piece),
                    picture.crop(column * pieceWidth, row * pieceHeight, pieceWidth, pieceHeight),
                    opaqueCentre && centre});
    }
  }
}

}  // namespace art
