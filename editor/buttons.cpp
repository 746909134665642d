// The clickable widgets: the toggle button, the mode selector's column of choices and the
// target selector's button that opens the list of modulation targets.
#include "editor/drawing.h"
#include "editor/look.h"
#include "editor/widgets.h"

namespace ziv {
namespace {

constexpr int kToggleCaptionGap = 4;
constexpr int kToggleCaptionDy = 2;
constexpr int kButtonTextDy = 5;  // a 9-pixel text's top inside a 21-pixel button
constexpr int kBarTextDy = 2;     // inside a 16-pixel bar
constexpr int kBarTextMargin = 12;
constexpr int kToggleCaptionMaxWidth = 64;

int buttonState(bool on, bool hovered) {
  return on ? look::kStateOn : hovered ? look::kStateHover : look::kStateNormal;
}

}  // namespace

void toggleButton(WidgetContext& context, WidgetId id, const Placement& placement, const char* caption,
                  int parameter) {
  const Rect placed = context.place(id, placement, kToggleWidth, kToggleHeight);
  const Rect button =
      context.place(id | kFirstPartBit, Placement{static_cast<int>(id), 0, 0}, kToggleWidth, kToggleHeight);
  ParameterView& params = context.params();
  const bool hovered = params.valid(parameter) && context.hovered(button);
  int n = params.integerValue(parameter);
  if (hovered && context.input().left.pressed) {
    params.gesture(parameter, [&] { params.setInteger(parameter, 1 - n); });
    n = params.integerValue(parameter);
  }
  const int state = buttonState(n == 1, hovered);
  queuePicture(context.drawList(), look::kLayerControl, button.x, button.y, imageTable::image(imgLed, state));
  queueLabel(context, look::kLayerText, placed.x + kToggleWidth + kToggleCaptionGap,
             placed.y + kToggleCaptionDy, caption, fontSmall, look::kCaptionColour, kToggleCaptionMaxWidth);
  context.present(id, button, static_cast<std::uint32_t>(state));
}

void modeSelector(WidgetContext& context, WidgetId id, const Placement& placement, int parameter) {
  ParameterView& params = context.params();
  const int count = params.choiceCount(parameter);
  const int current = params.currentChoice(parameter);
  for (int i = 0; i < count; ++i) {
    // Button 0 carries the selector's own id; the column starts one button below the placement.
    const WidgetId buttonId = static_cast<WidgetId>(i) << kChoiceShift | id;
    const Rect button = context.place(
        buttonId, Placement{placement.anchor, placement.dx, placement.dy + (i + 1) * kModeButtonHeight},
        kModeButtonWidth, kModeButtonHeight);
    const bool hovered = context.hovered(button);
    if (hovered && context.input().left.pressed && i != current) {
      params.gesture(parameter, [&] { params.setChoice(parameter, i); });
    }
    const int state = buttonState(params.currentChoice(parameter) == i, hovered);
    queuePicture(context.drawList(), look::kLayerControl, button.x, button.y,
                 imageTable::image(imgToggle, state));
    queueLabel(context, look::kLayerText, button.x + kModeButtonWidth / 2, button.y + kButtonTextDy,
               params.choiceName(parameter, i), fontSmall, look::kFieldColour, kModeButtonWidth,
               Align::kCentre);
    context.present(buttonId, button, static_cast<std::uint32_t>(state));
  }
}

void targetSelector(WidgetContext& context, WidgetId id, const Placement& placement, int width,
                    int parameter) {
  context.place(id, placement, width, kTargetButtonOffset + kTargetButtonHeight);
  const Rect button =
      context.place(id | kFirstPartBit, Placement{static_cast<int>(id), 0, kTargetButtonOffset}, width,
                    kTargetButtonHeight);
  ParameterView& params = context.params();
  if (params.valid(parameter) && context.hovered(button) && context.input().left.pressed) {
    context.requestPopup(kPopupTargetList, parameter, button.x, button.y, width);
  }
  const PopupRequest& popup = context.popup();
  const bool open = popup.kind == kPopupTargetList && popup.parameter == parameter;
  queueThreePiece(context.drawList(), look::kLayerControl, button, imgBar16,
                  open ? look::kPiecesPerState : 0);
  const char* name = params.choiceName(parameter, params.currentChoice(parameter));
  queueLabel(context, look::kLayerText, button.x + width / 2, button.y + kBarTextDy, name, fontSmall,
             look::kFieldColour, width - kBarTextMargin, Align::kCentre);
  context.present(id, button, textLook(name) ^ static_cast<std::uint32_t>(open));
}

}  // namespace ziv
