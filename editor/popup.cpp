#include "editor/popup.h"

#include <algorithm>
#include <array>

#include "editor/drawing.h"
#include "editor/look.h"

namespace ziv {
namespace {

constexpr int kItemTextDx = 6;
// The most items a list draws: the longest choice list, the modulation targets, has 48.
constexpr int kMaxListItems = 64;

Rect itemArea(const PopupList& list, int item) {
  return Rect{list.area.x + (item / list.rows) * list.columnWidth,
              list.area.y + kPopupListPadding + (item % list.rows) * list.itemHeight, list.columnWidth,
              list.itemHeight};
}

int rowsFor(int count, int itemHeight) {
  return std::max(1, std::min(count, (kEditorHeight - 2 * kPopupListPadding) / itemHeight));
}

Rect insideEditor(int x, int y, int width, int height) {
  return Rect{std::clamp(x, 0, std::max(0, kEditorWidth - width)),
              std::clamp(y, 0, std::max(0, kEditorHeight - height)), width, height};
}

}  // namespace

Rect popupListArea(int count, int columnWidth, int x, int y, int itemHeight) {
  const int rows = rowsFor(count, itemHeight);
  const int columns = (count + rows - 1) / rows;
  return insideEditor(x, y, columns * columnWidth, rows * itemHeight + 2 * kPopupListPadding);
}

PopupList menuList(WidgetId id, int count, int width, int x, int y, int itemHeight) {
  return PopupList{id,       insideEditor(x, y, width, count * itemHeight + 2 * kPopupListPadding),
                   count,    count,
                   width,    itemHeight,
                   fontLabel};
}

int listItemAt(const PopupList& list, int x, int y) {
  for (int i = 0; i < list.count; ++i) {
    if (WidgetContext::contains(itemArea(list, i), x, y)) return i;
  }
  return -1;
}

int listChoice(const WidgetContext& context, const PopupList& list, const ListItem* items) {
  const InputFrame& input = context.input();
  if (context.popup().keepOpen || !(input.left.pressed || input.right.pressed)) return kListNothingChosen;
  if (!WidgetContext::contains(list.area, input.x, input.y)) return kListClickedOutside;
  const int item = listItemAt(list, input.x, input.y);
  return item >= 0 && items[item].active && input.left.pressed ? item : kListNothingChosen;
}

void drawPopupList(WidgetContext& context, const PopupList& list, const ListItem* items, std::uint32_t look) {
  const InputFrame& input = context.input();
  const int under = listItemAt(list, input.x, input.y);
  const int hovered = under >= 0 && items[under].active ? under : -1;
  DrawList& drawList = context.drawList();
  queueNineSlice(drawList, look::kLayerPopup, list.area, imgPanelSmall);
  const int textDy = (list.itemHeight - imageTable::fontSpec(list.font).pixelHeight) / 2;
  for (int i = 0; i < list.count; ++i) {
    const Rect item = itemArea(list, i);
    if (i == hovered) queueThreePiece(drawList, look::kLayerPopup, item, imgBar16, look::kPiecesPerState);
    queueLabel(context, look::kLayerPopupText, item.x + kItemTextDx, item.y + textDy, items[i].text,
               list.font, items[i].colour, item.width - 2 * kItemTextDx);
  }
  context.present(list.id, list.area,
                  mixLook(mixLook(look, static_cast<std::uint32_t>(hovered + 1)),
                          static_cast<std::uint32_t>(list.count)));
}

void erasePopupList(WidgetContext& context, WidgetId id) {
  context.present(id, Rect{}, 0);
}

void serveChoiceList(WidgetContext& context) {
  ParameterView& params = context.params();
  const PopupRequest& request = context.popup();
  const int parameter = request.parameter;
  const int count = std::min(params.choiceCount(parameter), kMaxListItems);
  if (count == 0) {
    context.closePopup();
    return;
  }
  PopupList list;
  list.area = popupListArea(count, request.width, request.position.dx, request.position.dy);
  list.count = count;
  list.rows = rowsFor(count, kPopupItemHeight);
  list.columnWidth = request.width;

  const int current = params.currentChoice(parameter);
  std::array<ListItem, kMaxListItems> items;
  for (int i = 0; i < count; ++i) {
    items[i] = ListItem{params.choiceName(parameter, i),
                        i == current ? look::kPopupChosenColour : look::kPopupColour, true};
  }
  const int chosen = listChoice(context, list, items.data());
  if (chosen >= 0) params.gesture(parameter, [&] { params.setChoice(parameter, chosen); });
  if (chosen != kListNothingChosen) {
    context.closePopup();
    return;
  }
  context.popupServed();
  drawPopupList(context, list, items.data(),
                static_cast<std::uint32_t>(current) | static_cast<std::uint32_t>(parameter) << 16);
}

}  // namespace ziv
