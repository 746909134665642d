// The knob: a 48- or 24-pixel film-strip sprite turned by a vertical drag.
#include <algorithm>

#include "editor/drawing.h"
#include "editor/look.h"
#include "editor/widgets.h"

namespace ziv {
namespace {

// The strip of the knob's group that suits the parameter's range.
enum KnobPolarity { kUnipolar = 0, kBipolar = 1, kNegativeOnly = 2 };

KnobPolarity polarityOf(const ParameterView& params, int parameter) {
  if (params.rangeMin(parameter) >= 0) return kUnipolar;
  return params.rangeMax(parameter) >= 1 ? kBipolar : kNegativeOnly;
}

}  // namespace

int knobFrame(float value) {
  return std::clamp(static_cast<int>(value * kKnobFrameCount), 0, kKnobFrameCount - 1);
}

void knob(WidgetContext& context, WidgetId id, const Placement& placement, const char* caption, bool small,
          int parameter) {
  const int size = small ? kSmallKnobSize : kKnobSize;
  const int offset = small ? kSmallKnobSpriteOffset : kKnobSpriteOffset;
  const Rect placed = context.place(id, placement, size, offset + size);
  const Rect sprite{placed.x, placed.y + offset, size, size};
  ParameterView& params = context.params();
  WidgetState& state = context.state(id);
  const InputFrame& input = context.input();

  float value = params.value(parameter);
  context.endDragOnRelease(state, parameter);
  if (params.valid(parameter) && context.hovered(sprite)) {
    if (input.left.doubleClick) {
      params.gesture(parameter, [&] { params.set(parameter, params.defaultValue(parameter)); });
      value = params.value(parameter);
    } else if (input.left.pressed) {
      context.beginDrag(state);
      state.startValue = state.workingValue = value;
      state.pressY = input.y;
    } else if (input.right.pressed) {
      context.requestPopup(kPopupMidiLearn, parameter, input.x, input.y, kLearnMenuWidth);
    }
  }
  // Motion before the press is not part of the drag.
  if (state.active && !input.left.pressed && input.dy != 0) {
    // The store gets the unclamped result; the next pass starts again from the clamped value.
    const float step = input.shift ? kFineDragPerPixel : kKnobDragPerPixel;
    const float dragged = state.workingValue - static_cast<float>(input.dy) * step;
    state.workingValue = std::clamp(dragged, 0.0f, 1.0f);
    context.dragChange(state, parameter);
    params.set(parameter, dragged);
    value = params.value(parameter);
  }

  const KnobPolarity polarity = polarityOf(params, parameter);
  const Image& strip = imageTable::image(small ? imgKnobSmall : imgKnobLarge, polarity);
  const int frame = knobFrame(value);
  const int frameWidth = static_cast<int>(strip.width) / kKnobFrameColumns;
  const int frameHeight = static_cast<int>(strip.height) / kKnobFrameRows;
  const Rect source{(frame % kKnobFrameColumns) * frameWidth, (frame / kKnobFrameColumns) * frameHeight,
                    frameWidth, frameHeight};
  context.drawList().queueImage(look::kLayerControl, sprite, strip, source, 255);
  const bool learning = params.waitingForLearn(parameter);
  const Rect shown =
      learning ? queueLearnHighlight(context.drawList(), look::kLayerControlTop, placed) : sprite;
  context.present(id, shown,
                  static_cast<std::uint32_t>(frame) | static_cast<std::uint32_t>(polarity) << 8 |
                      static_cast<std::uint32_t>(learning) << 16);

  ziv::caption(
      context, id | kFirstPartBit,
      Placement{static_cast<int>(id), size / 2, small ? kSmallKnobCaptionOffset : kKnobCaptionOffset},
      caption, parameter, !state.active);
  if (state.active) context.setControlActive();
}

}  // namespace ziv
