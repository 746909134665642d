// The knob film strips: 128 frames in a grid of 16 columns by 8 rows, frame n at column n mod 16,
// row n div 16, for three polarities in two sizes. A frame shows the knob at value n / 127 (so
// the first frame is the minimum and the last the maximum): a graphite cap with a white pointer,
// inside a 270-degree track whose accent arc runs from the polarity's origin to the value:
// from the minimum (unipolar), from the top centre (bipolar) or from the maximum (negative-only,
// whose zero is at the top of its range). The knob sits in the upper part of its square, leaving
// the bottom rows, between the ends of the track, to the caption the widget centres there.
#include "editor/images/generator/image_set.h"
#include "editor/images/generator/palette.h"
#include "editor/images/generator/shapes.h"

namespace art {
namespace {

constexpr int kColumns = 16;
constexpr int kRows = 8;
constexpr int kFrames = kColumns * kRows;
// The track runs from 135 degrees left of twelve o'clock to 135 degrees right of it.
constexpr float kSweep = 0.75f * kPi;

struct KnobGeometry {
  int size;            // frame width and height
  float centreY;       // the centre's row (the centre's column is size / 2)
  float trackRadius;   // radius of the track's centre line
  float trackWidth;    // stroke width of track and value arc
  float capRadius;     // the graphite cap
  float pointerInner;  // pointer from this fraction of the cap radius ...
  float pointerOuter;  // ... to this one
  float pointerWidth;  // stroke width
  float shadowSpread;  // soft shadow around the cap
};

constexpr KnobGeometry kLarge{48, 20.0f, 17.0f, 3.5f, 12.5f, 0.25f, 0.85f, 2.4f, 2.5f};
constexpr KnobGeometry kSmall{24, 10.5f, 9.0f, 2.4f, 6.3f, 0.0f, 0.8f, 1.7f, 1.5f};

// Where the accent arc starts, as a value 0..1: unipolar, bipolar, negative-only (the strips' order).
constexpr int kPolarities = 3;
constexpr float kOrigins[kPolarities] = {0.0f, 0.5f, 1.0f};

float angleOf(float value) {
  return -kSweep + 2.0f * kSweep * value;
}

void drawFrame(Picture& strip, int originX, int originY, const KnobGeometry& knob, float origin,
               float value) {
  const float cx = static_cast<float>(originX) + static_cast<float>(knob.size) * 0.5f;
  const float cy = static_cast<float>(originY) + knob.centreY;
  const Box frame{static_cast<float>(originX), static_cast<float>(originY),
                  static_cast<float>(originX + knob.size), static_cast<float>(originY + knob.size)};

  fill(strip, frame, arc(cx, cy, knob.trackRadius, -kSweep, kSweep, knob.trackWidth), palette::kTrack);
  const float from = angleOf(std::min(origin, value));
  const float to = angleOf(std::max(origin, value));
  fill(strip, frame, arc(cx, cy, knob.trackRadius, from, to, knob.trackWidth), palette::kAccent);

  const Box capBox{cx - knob.capRadius, cy - knob.capRadius, cx + knob.capRadius, cy + knob.capRadius};
  glow(strip, capBox.moved(0.0f, 1.0f), circle(cx, cy + 1.0f, knob.capRadius), palette::kPanelShadow,
       knob.shadowSpread);
  fill(strip, capBox, circle(cx, cy, knob.capRadius),
       verticalGradient(palette::kFaceTop, palette::kFace, capBox.y0, capBox.y1));
  fill(strip, capBox, outline(circle(cx, cy, knob.capRadius), 1.0f), palette::kRim);
  // A thin light rim on the upper half of the cap, for the light from above.
  fill(strip, capBox, outline(circle(cx, cy, knob.capRadius - 1.0f), 1.0f), [&](float, float y) {
    return withAlpha(palette::kMarkBright, 0.22f * std::clamp((cy - y) / knob.capRadius, 0.0f, 1.0f));
  });

  const float angle = angleOf(value);
  const float inner = knob.capRadius * knob.pointerInner;
  const float outer = knob.capRadius * knob.pointerOuter;
  fill(strip, capBox,
       segment(dialX(cx, inner, angle), dialY(cy, inner, angle), dialX(cx, outer, angle),
               dialY(cy, outer, angle), knob.pointerWidth),
       palette::kMarkBright);
}

void appendStrips(ImageList& images, const KnobGeometry& knob, const std::string& group) {
  for (int polarity = 0; polarity < kPolarities; ++polarity) {
    Picture strip(knob.size * kColumns, knob.size * kRows);
    for (int n = 0; n < kFrames; ++n) {
      const float value = static_cast<float>(n) / static_cast<float>(kFrames - 1);
      drawFrame(strip, (n % kColumns) * knob.size, (n / kColumns) * knob.size, knob, kOrigins[polarity],
                value);
    }
    images.push_back(ImageFile{memberName(group, polarity), std::move(strip), false});
  }
}

}  // namespace

void drawKnobs(ImageList& images) {
  appendStrips(images, kLarge, "knob_large");
  appendStrips(images, kSmall, "knob_small");
}

}  // namespace art
