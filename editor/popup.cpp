#include "editor/popup.h"

#include <algorithm>

#include "editor/drawing.h"
#include "editor/look.h"

namespace ziv {
namespace {

constexpr int kListPadding = 4;  // above the first row and below the last
constexpr int kItemTextDx = 6;
constexpr int kItemTextDy = 2;

Rect itemArea(const Rect& list, int rows, int columnWidth, int item) {
  return Rect{list.x + (item / rows) * columnWidth, list.y + kListPadding + (item % rows) * kPopupItemHeight,
              columnWidth, kPopupItemHeight};
}

int rowsFor(int count) {
  return std::max(1, std::min(count, (kEditorHeight - 2 * kListPadding) / kPopupItemHeight));
}

void serveChoiceList(WidgetContext& context) {
  const PopupRequest& request = context.popup();
  ParameterView& params = context.params();
  const int parameter = request.parameter;
  const int count = params.choiceCount(parameter);
  if (count == 0) {
    context.closePopup();
    return;
  }
  const int rows = rowsFor(count);
  const Rect list = popupListArea(count, request.width, request.position.dx, request.position.dy);
  const InputFrame& input = context.input();
  int hovered = -1;
  for (int i = 0; i < count && hovered < 0; ++i) {
    if (WidgetContext::contains(itemArea(list, rows, request.width, i), input.x, input.y)) hovered = i;
  }

  if (request.keepOpen) {
    context.popupServed();
  } else if (input.left.pressed || input.right.pressed) {
    if (hovered >= 0 && input.left.pressed) {
      params.gesture(parameter, [&] { params.setChoice(parameter, hovered); });
      context.closePopup();
    } else if (!WidgetContext::contains(list, input.x, input.y)) {
      context.closePopup();
    }
    if (context.popup().kind == kPopupNone) {
      context.present(kPopupListId, Rect{}, 0);
      return;
    }
  }

  DrawList& drawList = context.drawList();
  const int current = params.currentChoice(parameter);
  queueNineSlice(drawList, look::kLayerPopup, list, imgPanelSmall);
  for (int i = 0; i < count; ++i) {
    const Rect item = itemArea(list, rows, request.width, i);
    if (i == hovered) queueThreePiece(drawList, look::kLayerPopup, item, imgBar16, look::kPiecesPerState);
    queueLabel(context, look::kLayerPopupText, item.x + kItemTextDx, item.y + kItemTextDy,
               params.choiceName(parameter, i), fontSmall,
               i == current ? look::kPopupChosenColour : look::kPopupColour, item.width - 2 * kItemTextDx);
  }
  context.present(kPopupListId, list,
                  static_cast<std::uint32_t>(hovered + 1) | static_cast<std::uint32_t>(current) << 8 |
                      static_cast<std::uint32_t>(parameter) << 16);
}

}  // namespace

Rect popupListArea(int count, int columnWidth, int x, int y) {
  const int rows = rowsFor(count);
  const int columns = (count + rows - 1) / rows;
  const int width = columns * columnWidth;
  const int height = rows * kPopupItemHeight + 2 * kListPadding;
  return Rect{std::clamp(x, 0, std::max(0, kEditorWidth - width)),
              std::clamp(y, 0, std::max(0, kEditorHeight - height)), width, height};
}

void servePopup(WidgetContext& context) {
  switch (context.popup().kind) {
    case kPopupTargetList:
    case kPopupChoiceList:
      serveChoiceList(context);
      break;
    case kPopupNone:
      // Erases a list closed in an earlier pass (no-op once it is gone).
      context.present(kPopupListId, Rect{}, 0);
      break;
    default:
      context.closePopup();
      break;
  }
}

}  // namespace ziv
