#include "editor/info_view.h"

#include "editor/drawing.h"
#include "editor/look.h"

namespace ziv {
namespace {

constexpr int kButtonWidth = 75;
constexpr int kButtonHeight = 32;
// The INFO button: centred in the untitled panel, between the program box and the version.
constexpr Placement kInfoButtonPlacement{kEditorAnchor, 914, 120};
// The view's two buttons side by side, centred near the panel's foot.
constexpr int kViewButtonsY = kInfoPanelArea.y + kInfoPanelArea.height - 56;
constexpr int kViewButtonGap = 10;
constexpr int kViewCentreX = kInfoPanelArea.x + kInfoPanelArea.width / 2;
constexpr Placement kWebButtonPlacement{kEditorAnchor, kViewCentreX - kViewButtonGap / 2 - kButtonWidth,
                                        kViewButtonsY};
constexpr Placement kCloseButtonPlacement{kEditorAnchor, kViewCentreX + kViewButtonGap / 2, kViewButtonsY};
constexpr int kTextWidth = kInfoPanelArea.width - 40;

// The button labels' slots in the misc group.
constexpr int kInfoLabel = 3;
constexpr int kWebLabel = 4;
constexpr int kCloseLabel = 8;

struct InfoLine {
  int dy;  // below the panel's top
  const char* text;
  FontId font;
  int colour;
};

// Under the logo that the panel's picture carries; the version line follows the first.
const InfoLine kLines[] = {
    {94, "Polyphonic subtractive synthesizer", fontMedium, look::kTitleColour},
    {142, "Made by Quorvantis", fontLabel, look::kTitleColour},
    {160, "quorvantis.com/vrn-ziv", fontSmall, look::kValueColour},
    {190, "PNG images decoded with LodePNG by Lode Vandevenne", fontSmall, look::kCaptionColour},
};
constexpr int kVersionDy = 118;

// A button with a word on it, hit-tested first and drawn once the view knows whether it stays.
struct WordButton {
  WidgetId id;
  Rect area;
  bool hovered;
  bool clicked;
};

WordButton hitButton(WidgetContext& context, WidgetId id, const Placement& placement, bool takesInput) {
  const Rect area = context.place(id, placement, kButtonWidth, kButtonHeight);
  const InputFrame& input = context.input();
  const bool hovered = takesInput && WidgetContext::contains(area, input.x, input.y);
  return WordButton{id, area, hovered, hovered && input.left.pressed};
}

void drawButton(WidgetContext& context, const WordButton& button, int label, int layer) {
  const int state = button.clicked ? look::kStateOn : button.hovered ? look::kStateHover : look::kStateNormal;
  queuePicture(context.drawList(), layer, button.area.x, button.area.y,
               imageTable::image(imgButton75, state));
  queuePicture(context.drawList(), layer, button.area.x, button.area.y, imageTable::image(imgMisc, label));
  context.present(button.id, button.area, static_cast<std::uint32_t>(state));
}

void drawView(WidgetContext& context, const Rect& whole, const std::string& version) {
  DrawList& list = context.drawList();
  queueStretched(list, look::kLayerPopup, whole, imageTable::image(imgDimmer));
  queueStretched(list, look::kLayerPopup, whole, imageTable::image(imgInfoPanel));
  queueStretched(list, look::kLayerPopup, whole, imageTable::image(imgInfoOverlay));
  for (const InfoLine& line : kLines) {
    queueLabel(context, look::kLayerPopupText, kViewCentreX, kInfoPanelArea.y + line.dy, line.text, line.font,
               line.colour, kTextWidth, Align::kCentre);
  }
  queueLabel(context, look::kLayerPopupText, kViewCentreX, kInfoPanelArea.y + kVersionDy, version.c_str(),
             fontSmall, look::kCaptionColour, kTextWidth, Align::kCentre);
}

}  // namespace

void infoView(WidgetContext& context, const std::string& version) {
  // The view's state record: active while the view is open.
  WidgetState& view = context.state(kInfoViewId);
  const Rect whole = context.place(kInfoViewId, Placement{}, kEditorWidth, kEditorHeight);
  const bool wasOpen = view.active;

  // Under the open view, or under a popup, the INFO button takes no input.
  const WordButton info =
      hitButton(context, kInfoButtonId, kInfoButtonPlacement, !wasOpen && context.popup().kind == kPopupNone);
  if (info.clicked) view.active = true;
  drawButton(context, info, kInfoLabel, look::kLayerControl);

  const WordButton web = hitButton(context, kWebButtonId, kWebButtonPlacement, wasOpen);
  const WordButton close = hitButton(context, kCloseButtonId, kCloseButtonPlacement, wasOpen);
  if (wasOpen) {
    const InputFrame& input = context.input();
    if (web.clicked) context.setWebPageRequested(true);
    if (close.clicked || (input.left.pressed && !WidgetContext::contains(kInfoPanelArea, input.x, input.y))) {
      view.active = false;
    }
  }
  // The click that closes the view is still the view's, not the control's under it.
  if (wasOpen || view.active) context.coverControls();
  context.present(kInfoViewId, whole, static_cast<std::uint32_t>(view.active));
  if (!view.active) return;
  drawView(context, whole, version);
  drawButton(context, web, kWebLabel, look::kLayerPopupText);
  drawButton(context, close, kCloseLabel, look::kLayerPopupText);
}

}  // namespace ziv
