// The vertical slider (a track with a thumb that follows the pointer) and the level light.
#include <algorithm>

#include "editor/drawing.h"
#include "editor/look.h"
#include "editor/widgets.h"

namespace ziv {
namespace {

constexpr int kTrackTopCap = 0, kTrackMiddle = 1, kTrackBottomCap = 2;
constexpr int kLabelGap = 2;  // between the track's end and the value label

int thumbTop(const Rect& placed, int trackHeight, float value) {
  return placed.y + kSliderTrackTop +
         static_cast<int>((1.0f - value) * static_cast<float>(trackHeight - kSliderThumbHeight));
}

void queueTrack(DrawList& list, const Rect& track, bool lit) {
  const int run = lit ? look::kPiecesPerState : 0;
  const Image& top = imageTable::image(imgSlider, run + kTrackTopCap);
  const Image& bottom = imageTable::image(imgSlider, run + kTrackBottomCap);
  const int topHeight = static_cast<int>(top.height), bottomHeight = static_cast<int>(bottom.height);
  queueStretched(list, look::kLayerControl, Rect{track.x, track.y, track.width, topHeight}, top);
  queueStretched(list, look::kLayerControl,
                 Rect{track.x, track.y + topHeight, track.width, track.height - topHeight - bottomHeight},
                 imageTable::image(imgSlider, run + kTrackMiddle));
  queueStretched(list, look::kLayerControl,
                 Rect{track.x, track.y + track.height - bottomHeight, track.width, bottomHeight}, bottom);
}

}  // namespace

void verticalSlider(WidgetContext& context, WidgetId id, const Placement& placement, int trackHeight,
                    const char* caption, int parameter) {
  const Rect placed = context.place(id, placement, kSliderWidth, kSliderTrackTop + trackHeight);
  const Rect track{placed.x, placed.y + kSliderTrackTop, kSliderWidth, trackHeight};
  const float travel = static_cast<float>(trackHeight - kSliderThumbHeight);
  ParameterView& params = context.params();
  WidgetState& state = context.state(id);
  const InputFrame& input = context.input();

  float value = params.value(parameter);
  context.endDragOnRelease(state, parameter);
  // The thumb takes a left press; anywhere on the track takes the right one.
  const bool hovered = params.valid(parameter) && context.hovered(track);
  const int pressThumbTop = thumbTop(placed, trackHeight, value);
  const bool onThumb =
      hovered && context.hovered(Rect{placed.x, pressThumbTop, kSliderWidth, kSliderThumbHeight});
  if (onThumb && input.left.pressed) {
    context.beginDrag(state);
    state.pressY = input.y - pressThumbTop;  // the grab offset
    state.startValue = state.workingValue = value;
  } else if (hovered && input.right.pressed) {
    context.requestPopup(kPopupMidiLearn, parameter, input.x, input.y, kLearnMenuWidth);
  }
  if (state.active && !input.left.pressed && input.dy != 0 && travel > 0.0f) {
    if (input.shift) {
      state.workingValue =
          std::clamp(state.workingValue - static_cast<float>(input.dy) * kFineDragPerPixel, 0.0f, 1.0f);
    } else {
      const int thumbOffset = input.y - state.pressY - placed.y - kSliderTrackTop;
      state.workingValue = std::clamp(1.0f - static_cast<float>(thumbOffset) / travel, 0.0f, 1.0f);
    }
    context.dragChange(state, parameter);
    params.set(parameter, state.workingValue);
    value = params.value(parameter);
    // A fine drag moves the thumb away from the pointer; the grab follows, so letting go of
    // Shift does not make the thumb jump.
    if (input.shift) state.pressY = input.y - thumbTop(placed, trackHeight, value);
  }

  const int top = thumbTop(placed, trackHeight, value);
  const int thumbState = state.active ? look::kStateOn : onThumb ? look::kStateHover : look::kStateNormal;
  const Image& thumb = imageTable::image(imgBox16, thumbState);
  queueTrack(context.drawList(), track, state.active);
  queuePicture(context.drawList(), look::kLayerControlTop,
               placed.x + (kSliderWidth - static_cast<int>(thumb.width)) / 2,
               top + (kSliderThumbHeight - static_cast<int>(thumb.height)) / 2, thumb);
  const bool learning = params.waitingForLearn(parameter);
  const Rect outline{track.x - kLearnHighlightGap, track.y - kLearnHighlightGap,
                     track.width + 2 * kLearnHighlightGap, track.height + 2 * kLearnHighlightGap};
  const Rect shown =
      learning ? queueLearnHighlight(context.drawList(), look::kLayerControlTop, outline) : track;
  context.present(id, shown,
                  static_cast<std::uint32_t>(top - placed.y) | static_cast<std::uint32_t>(thumbState) << 16 |
                      static_cast<std::uint32_t>(learning) << 24);

  ziv::caption(context, id | kSecondPartBit,
               Placement{static_cast<int>(id), kSliderWidth / 2, kSliderTrackTop + trackHeight + kLabelGap},
               caption, parameter, !state.active);
  if (state.active) context.setControlActive();
}

void levelLight(WidgetContext& context, WidgetId id, const Placement& placement, float level) {
  constexpr float kBrightnessPerLevel = 256.0f;
  const Rect placed = context.place(id, placement, kLevelLightWidth, kLevelLightHeight);
  // Brightness min(255, level x 256); silence, and a level that is not a number, leave it dark.
  const int brightness = level > 0.0f ? static_cast<int>(std::min(level * kBrightnessPerLevel, 255.0f)) : 0;
  const Image& on = imageTable::image(imgMeter, 1);
  queueStretched(context.drawList(), look::kLayerControl, placed, imageTable::image(imgMeter, 0));
  context.drawList().queueImage(look::kLayerControlTop, placed, on,
                                Rect{0, 0, static_cast<int>(on.width), static_cast<int>(on.height)},
                                brightness);
  context.present(id, placed, static_cast<std::uint32_t>(brightness));
}

}  // namespace ziv
