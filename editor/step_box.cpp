// The step box: an integer value in a field with an up and a down arrow at its right edge.
// Arrows step once per press and keep stepping, ever faster, while held; the field drags
// vertically, at most one step per pixel.
#include <algorithm>
#include <cmath>

#include "editor/drawing.h"
#include "editor/look.h"
#include "editor/widgets.h"
#include "plugin/parameter_display.h"

namespace ziv {
namespace {

// A drag moves min(1, range maximum / kDragDivisor) steps per pixel.
constexpr int kDragDivisor = 100;
constexpr int kArrowHeight = kStepBoxFieldHeight / 2;
constexpr int kArrowGlyphUp = 0;  // imgMisc members
constexpr int kArrowGlyphDown = 1;
constexpr int kFieldTextDy = 7;
constexpr int kFieldTextMargin = 8;
// The caption sits at the bottom of its strip, flush with the field's left edge: close to its own
// box and clear of a knob's caption that may hang just above the strip (OSC 1's "Gain" over
// "Cents").
constexpr int kCaptionDx = 1;
constexpr int kCaptionDy = 2;

// One arrow: a press steps once and starts a gesture that lasts until release; the button's
// auto-repeats step again while the pointer stays on the arrow. Returns whether it is held.
bool arrow(WidgetContext& context, WidgetId id, const Rect& area, int parameter, int delta) {
  ParameterView& params = context.params();
  WidgetState& state = context.state(id);
  const ButtonInput& left = context.input().left;
  context.endDragOnRelease(state, parameter);
  if (params.valid(parameter) && context.hovered(area)) {
    if (left.pressed) context.beginDrag(state);
    if (state.active && left.pressedOrRepeated()) {
      context.dragChange(state, parameter);
      params.setInteger(parameter, params.integerValue(parameter) + delta);
    }
  }
  const Image& glyph = imageTable::image(imgMisc, delta > 0 ? kArrowGlyphUp : kArrowGlyphDown);
  queuePicture(context.drawList(), look::kLayerControlTop,
               area.x + (area.width - static_cast<int>(glyph.width)) / 2,
               area.y + (area.height - static_cast<int>(glyph.height)) / 2, glyph);
  return state.active;
}

// The value field: a vertical drag of s = min(1, 0.01 x range maximum) steps per pixel, up
// raising the value. Where the range ends, the press point moves along with the pointer so that
// turning back responds at once. Returns whether it is held.
bool valueField(WidgetContext& context, WidgetId id, const Rect& area, int parameter) {
  ParameterView& params = context.params();
  WidgetState& state = context.state(id);
  const InputFrame& input = context.input();
  context.endDragOnRelease(state, parameter);
  if (params.valid(parameter) && context.hovered(area) && input.left.pressed) {
    context.beginDrag(state);
    state.startValue = static_cast<float>(params.integerValue(parameter));
    state.pressY = input.y;
  }
  // s kept as the fraction steps / kDragDivisor, so that whole steps come out exact ("OSC 1:
  // Octave": 5 / 100, 20 pixels a step).
  const int steps = std::min(kDragDivisor, params.rangeMax(parameter));
  if (state.active && !input.left.pressed && input.dy != 0 && steps > 0) {
    const int requested = static_cast<int>(state.startValue + static_cast<double>(state.pressY - input.y) *
                                                                  steps / kDragDivisor);
    context.dragChange(state, parameter);
    params.setInteger(parameter, requested);
    const int result = params.integerValue(parameter);
    state.pressY -=
        static_cast<int>(std::lround(static_cast<double>(requested - result) * kDragDivisor / steps));
  }
  return state.active;
}

}  // namespace

void stepBox(WidgetContext& context, WidgetId id, const Placement& placement, int width, const char* caption,
             int parameter) {
  const Rect placed = context.place(id, placement, width, kStepBoxCaptionHeight + kStepBoxFieldHeight);
  const Placement self{static_cast<int>(id), 0, 0};
  const Rect box{placed.x, placed.y + kStepBoxCaptionHeight, width, kStepBoxFieldHeight};
  const int arrowX = width - kStepArrowWidth;
  const Rect field = context.place(id | kThirdPartBits, Placement{self.anchor, 0, kStepBoxCaptionHeight},
                                   arrowX, kStepBoxFieldHeight);
  const Rect up = context.place(id | kFirstPartBit, Placement{self.anchor, arrowX, kStepBoxCaptionHeight},
                                kStepArrowWidth, kArrowHeight);
  const Rect down =
      context.place(id | kSecondPartBit, Placement{self.anchor, arrowX, kStepBoxCaptionHeight + kArrowHeight},
                    kStepArrowWidth, kArrowHeight);

  const bool held = arrow(context, id | kFirstPartBit, up, parameter, +1) |
                    arrow(context, id | kSecondPartBit, down, parameter, -1) |
                    valueField(context, id | kThirdPartBits, field, parameter);

  char text[kParamTextCapacity];
  context.params().text(parameter, text, sizeof text);
  queueThreePiece(context.drawList(), look::kLayerControl, box, imgField24, held ? look::kPiecesPerState : 0);
  queueLabel(context, look::kLayerText, field.x + field.width / 2, field.y + kFieldTextDy, text, fontSmall,
             held ? look::kValueColour : look::kFieldColour, field.width - kFieldTextMargin, Align::kCentre);
  if (caption != nullptr) {
    queueLabel(context, look::kLayerText, placed.x + kCaptionDx, placed.y + kCaptionDy, caption, fontSmall,
               look::kCaptionColour, width - kCaptionDx);
  }
  context.present(id, box, textLook(text) ^ static_cast<std::uint32_t>(held));
  if (held) context.setControlActive();
}

}  // namespace ziv
