// The stretchable strips (bars, fields, caps and the slider track, cut into end caps and a
// middle that the widgets stretch), the level meter, and the small marks: dots, triangles, the
// cross and the button labels.
#include "editor/images/generator/image_set.h"
#include "editor/images/generator/palette.h"
#include "editor/images/generator/shapes.h"
#include "editor/images/generator/stroke_font.h"
#include "editor/images/generator/surfaces.h"

namespace art {
namespace {

// Strips are drawn three pieces wide and cut into left cap, middle and right cap.
constexpr int kCapWidth = 16;
constexpr float kBarRadius = 5.0f;
constexpr float kFieldRadius = 4.0f;
constexpr float kCapsRadius = 7.0f;

// The end piece (a drop-down chevron) and the separator line of bars and fields.
constexpr int kEndWidth = 10;
constexpr int kStripHeight = 24;

// The slider track: a groove down the middle of a 21-pixel column on the panel's body, cut into
// a top cap, a two-row middle and a bottom cap.
constexpr int kSliderWidth = 21;
constexpr int kSliderTop = 9;
constexpr int kSliderMiddle = 2;
constexpr int kSliderBottom = 10;
constexpr Box kSliderGroove{8, 2, 13, 19};

// The level meter: segments of 3 rows on a 4-row pitch; the top few run hot in amber.
constexpr int kMeterWidth = 9;
constexpr int kMeterHeight = 105;
constexpr int kMeterPitch = 4;
constexpr float kMeterSegment = 3.0f;
constexpr int kMeterHotSegments = 4;

constexpr int kMarkSize = 8;
constexpr int kLabelWidth = 75;
constexpr int kLabelHeight = 32;
const TextStyle kLabelStyle{9.0f, 1.6f, palette::kLabel};

// Draws one strip per state with `draw` on a three-cap-wide picture of `height` and appends its
// left cap, middle and right cap, state after state.
template <class Draw>
void appendStrip(ImageList& images, const std::string& group, int height, Draw draw) {
  int member = 0;
  for (const FaceState state : {kRest, kLit}) {
    Picture strip(3 * kCapWidth, height);
    draw(strip, state);
    appendPieces(images, strip, kCapWidth, height, group, member, false);
    member += 3;
  }
}

Picture endPiece() {
  Picture picture(kEndWidth, kStripHeight);
  fill(picture, picture.bounds(), triangle(2.0f, 10.5f, 8.0f, 10.5f, 5.0f, 14.0f), palette::kMark);
  return picture;
}

Picture separator() {
  Picture picture(1, kStripHeight);
  fill(picture, picture.bounds(), everywhere, [](float, float y) {
    const float edge = std::min(y, static_cast<float>(kStripHeight) - y) / 6.0f;
    return withAlpha(palette::kPanelBorder, std::clamp(edge, 0.0f, 1.0f));
  });
  return picture;
}

void appendSlider(ImageList& images) {
  for (const bool lit : {false, true}) {
    Picture track(kSliderWidth, kSliderTop + kSliderMiddle + kSliderBottom);
    track.clear(palette::kPanelBody);
    const auto groove = roundedBox(kSliderGroove, kSliderGroove.width() * 0.5f);
    if (lit) {
      glow(track, kSliderGroove, groove, withAlpha(palette::kAccent, 0.3f), 2.0f);
      fill(track, kSliderGroove, groove, palette::kAccent);
    } else {
      paintRecess(track, kSliderGroove, kSliderGroove.width() * 0.5f, false);
    }
    int member = lit ? 3 : 0;
    int top = 0;
    for (const int height : {kSliderTop, kSliderMiddle, kSliderBottom}) {
      images.push_back(
          ImageFile{memberName("slider", member++), track.crop(0, top, kSliderWidth, height), true});
      top += height;
    }
  }
}

void appendMeter(ImageList& images) {
  const int segments = (kMeterHeight - 1) / kMeterPitch;
  for (const bool on : {false, true}) {
    Picture meter(kMeterWidth, kMeterHeight);
    meter.clear(palette::kPanelBody);
    for (int k = 0; k < segments; ++k) {
      const float top = 1.0f + static_cast<float>(k * kMeterPitch);
      const Box segment{1.0f, top, kMeterWidth - 1.0f, top + kMeterSegment};
      const Colour lit = k < kMeterHotSegments ? palette::kAmber : palette::kAccent;
      fill(meter, segment, roundedBox(segment, 1.0f), on ? lit : palette::kGroove);
    }
    images.push_back(ImageFile{memberName("meter", on ? 1 : 0), std::move(meter), true});
  }
}

void appendLabel(ImageList& images, int slot, const std::string& word) {
  Picture label(kLabelWidth, kLabelHeight);
  drawTextCentred(label, word, kLabelWidth * 0.5f, kLabelHeight * 0.5f, kLabelStyle);
  images.push_back(ImageFile{memberName("misc", slot), std::move(label), false});
}

template <class Shape>
void appendMark(ImageList& images, int slot, Shape shape) {
  Picture mark(kMarkSize, kMarkSize);
  fill(mark, mark.bounds(), shape, palette::kMark);
  images.push_back(ImageFile{memberName("misc", slot), std::move(mark), false});
}

}  // namespace

void drawStrips(ImageList& images) {
  appendStrip(images, "bar16", kCapWidth, [](Picture& strip, FaceState state) {
    paintFace(strip, strip.bounds().inset(1.0f), kBarRadius, state);
  });
  images.push_back(ImageFile{memberName("bar16", 6), endPiece(), false});
  images.push_back(ImageFile{memberName("bar16", 7), separator(), false});
  appendStrip(images, "field24", kStripHeight, [](Picture& strip, FaceState state) {
    paintRecess(strip, strip.bounds().inset(1.0f), kFieldRadius, state == kLit);
  });
  appendStrip(images, "panel_caps", kCapWidth, [](Picture& strip, FaceState state) {
    const Box box = strip.bounds().inset(1.0f);
    const Colour colour =
        state == kLit ? withAlpha(palette::kAccent, 0.85f) : withAlpha(palette::kPanelHighlight, 0.7f);
    fill(strip, box, roundedBox(box, kCapsRadius), colour);
  });
  appendSlider(images);
  appendMeter(images);
}

void drawMarks(ImageList& images) {
  for (const FaceState state : {kRest, kHover, kLit}) {
    Picture dot(kMarkSize, kMarkSize);
    const Box mark{1.0f, 3.0f, 7.0f, 5.0f};
    if (state == kLit) glow(dot, mark, roundedBox(mark, 1.0f), withAlpha(palette::kAccent, 0.4f), 1.5f);
    const Colour colour = state == kRest    ? palette::kTrack
                          : state == kHover ? palette::kMark
                                            : palette::kAccent;
    fill(dot, mark, roundedBox(mark, 1.0f), colour);
    images.push_back(ImageFile{memberName("dot", state), std::move(dot), false});
  }
  appendMark(images, 0, triangle(4.0f, 1.5f, 7.0f, 6.0f, 1.0f, 6.0f));
  appendMark(images, 1, triangle(1.0f, 2.0f, 7.0f, 2.0f, 4.0f, 6.5f));
  appendMark(images, 2, [](float x, float y) {
    return std::min(segment(2, 2, 6, 6, 1.5f)(x, y), segment(6, 2, 2, 6, 1.5f)(x, y));
  });
  // The words of the buttons: the information view, the maker's web page, and closing or
  // confirming a view.
  appendLabel(images, 3, "INFO");
  appendLabel(images, 4, "WEB");
  appendLabel(images, 8, "CLOSE");
  appendLabel(images, 9, "OK");
}

}  // namespace art
