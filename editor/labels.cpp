// The widgets that only show something: captions, panels (which also set the help text),
// dividers and plain text lines. A panel draws only its title: its frame is part of the
// background picture, so the untitled panel keeps the logo that the background carries there.
#include "editor/drawing.h"
#include "editor/look.h"
#include "editor/widgets.h"
#include "plugin/parameter_display.h"

namespace ziv {
namespace {

constexpr int kCaptionMaxWidth = 64;
constexpr int kTitleDx = 8;
constexpr int kTitleDy = 3;
constexpr int kDividerHeight = 8;
constexpr int kTextLineHeight = 12;
// The middle columns of the mark image, stretched into a rule.
constexpr Rect kDividerSource{2, 0, 4, 8};

}  // namespace

void caption(WidgetContext& context, WidgetId id, const Placement& placement, const char* text, int parameter,
             bool idle) {
  const Rect point = context.place(id, placement, 0, 0);
  char value[kParamTextCapacity];
  if (!idle) context.params().text(parameter, value, sizeof value);
  const char* shown = idle ? text : value;
  const Rect area =
      queueLabel(context, look::kLayerText, point.x, point.y, shown, fontSmall,
                 idle ? look::kCaptionColour : look::kValueColour, kCaptionMaxWidth, Align::kCentre);
  context.present(id, area, textLook(shown) ^ static_cast<std::uint32_t>(idle));
}

void panel(WidgetContext& context, WidgetId id, const Placement& placement, int width, int height,
           const char* title, const char* help) {
  const Rect area = context.place(id, placement, width, height);
  const InputFrame& input = context.input();
  if (!context.controlHeldMouse() && !context.controlsCovered() &&
      WidgetContext::contains(area, input.x, input.y)) {
    context.setHelpText(help);
  }
  queueLabel(context, look::kLayerPanelText, area.x + kTitleDx, area.y + kTitleDy, title, fontLarge,
             look::kTitleColour, width - 2 * kTitleDx);
  context.present(id, area, 0);
}

void divider(WidgetContext& context, WidgetId id, const Placement& placement, int width) {
  const Rect area = context.place(id, placement, width, kDividerHeight);
  context.drawList().queueImage(look::kLayerPanelText, area, imageTable::image(imgDot, look::kStateNormal),
                                kDividerSource, 255);
  context.present(id, area, 0);
}

void textLine(WidgetContext& context, WidgetId id, const Placement& placement, int width, const char* text,
              int colour) {
  const Rect area = context.place(id, placement, width, kTextLineHeight);
  queueLabel(context, look::kLayerText, area.x, area.y, text, fontSmall, colour, width);
  context.present(id, area, textLook(text));
}

}  // namespace ziv
