// The three-state controls (rest, under the pointer, pressed or lit): the small box, the
// 75 x 32 button, the indicator light, the close cross, the program box's tab, the switch body
// and the up arrow.
#include "editor/images/generator/image_set.h"
#include "editor/images/generator/palette.h"
#include "editor/images/generator/shapes.h"
#include "editor/images/generator/surfaces.h"

namespace art {
namespace {

constexpr FaceState kStates[] = {kRest, kHover, kLit};

constexpr Box kBoxFace{2, 2, 14, 14};
constexpr float kBoxRadius = 3.0f;
constexpr Box kButtonFace{2, 3, 73, 29};
constexpr float kButtonRadius = 6.0f;
constexpr Box kTabFace{1, 2, 18, 22};
constexpr float kTabRadius = 5.0f;

// The light: a pill with a hot centre and a halo when on.
constexpr Box kLedBody{2.5f, 3.5f, 13.5f, 10.5f};
constexpr float kLedHalo = 2.5f;

// The switch: a raised square body with an indicator bar along its foot, below the choice's
// name that the editor writes across the middle (a bar behind the text made it unreadable when lit).
constexpr Box kToggleFace{2, 2, 22, 19};
constexpr float kToggleRadius = 4.0f;
constexpr Box kToggleBar{6, 15, 18, 17};
constexpr float kToggleHalo = 2.0f;

constexpr float kCrossFrom = 4.5f;
constexpr float kCrossTo = 11.5f;
constexpr float kCrossWidth = 2.0f;

Colour markColour(FaceState state) {
  switch (state) {
    case kRest:
      return palette::kMark;
    case kHover:
      return palette::kMarkBright;
    case kLit:
      break;
  }
  return palette::kAccent;
}

template <class Draw>
void appendStates(ImageList& images, const std::string& group, int width, int height, Draw draw) {
  for (const FaceState state : kStates) {
    Picture picture(width, height);
    draw(picture, state);
    images.push_back(ImageFile{memberName(group, state), std::move(picture), false});
  }
}

void drawLed(Picture& picture, FaceState state) {
  const auto shape = roundedBox(kLedBody, kLedBody.height() * 0.5f);
  const float level = state == kRest ? 0.0f : state == kHover ? 0.45f : 1.0f;
  if (state == kLit) glow(picture, kLedBody, shape, withAlpha(palette::kAmber, 0.45f), kLedHalo);
  fill(picture, kLedBody, shape, mix(palette::kAmberOff, palette::kAmber, level));
  fill(picture, kLedBody, outline(shape, 1.0f), withAlpha(palette::kRim, 0.8f));
  // The hot spot, brightest when on.
  const float cx = (kLedBody.x0 + kLedBody.x1) * 0.5f;
  fill(picture, kLedBody, segment(cx - 2.5f, 6.0f, cx + 2.5f, 6.0f, 1.5f),
       withAlpha(palette::kMarkBright, 0.15f + 0.5f * level));
}

void drawToggle(Picture& picture, FaceState state) {
  paintFace(picture, kToggleFace, kToggleRadius, state == kLit ? kRest : state);
  const auto bar = roundedBox(kToggleBar, kToggleBar.height() * 0.5f);
  if (state == kLit) {
    glow(picture, kToggleBar, bar, withAlpha(palette::kAccent, 0.5f), kToggleHalo);
    fill(picture, kToggleBar, bar, palette::kAccent);
  } else {
    fill(picture, kToggleBar, bar, palette::kGroove);
  }
}

void drawClose(Picture& picture, FaceState state) {
  if (state != kRest)
    fill(picture, picture.bounds(), circle(8, 8, 7.5f), withAlpha(palette::kFaceHover, 0.9f));
  const auto cross = [](float x, float y) {
    return std::min(segment(kCrossFrom, kCrossFrom, kCrossTo, kCrossTo, kCrossWidth)(x, y),
                    segment(kCrossTo, kCrossFrom, kCrossFrom, kCrossTo, kCrossWidth)(x, y));
  };
  fill(picture, picture.bounds(), cross, markColour(state));
}

void drawArrow(Picture& picture, FaceState state) {
  fill(picture, picture.bounds(), triangle(8.0f, 4.5f, 12.5f, 11.0f, 3.5f, 11.0f), markColour(state));
}

}  // namespace

void drawButtons(ImageList& images) {
  appendStates(images, "box16", 16, 16,
               [](Picture& p, FaceState s) { paintFace(p, kBoxFace, kBoxRadius, s); });
  appendStates(images, "button75", 75, 32,
               [](Picture& p, FaceState s) { paintFace(p, kButtonFace, kButtonRadius, s); });
  appendStates(images, "led", 16, 14, drawLed);
  appendStates(images, "close", 16, 16, drawClose);
  appendStates(images, "tab", 19, 24, [](Picture& p, FaceState s) { paintFace(p, kTabFace, kTabRadius, s); });
  appendStates(images, "toggle", 24, 21, drawToggle);
  appendStates(images, "arrow", 16, 16, drawArrow);
}

}  // namespace art
