// The popups that controls request during a pass, served after every control has been placed,
// so that they lie above them all and, while one is open, take the clicks that would otherwise
// reach the controls under it. Every popup is made of lists of items, and one list mechanism
// (hit test, click semantics, drawing) serves them all: the selectors' choice lists, the MIDI
// learn menu and the program/bank menu with its factory-bank submenu.
//
// Threads: the host's user-interface thread, at the end of an editor frame.
#pragma once

#include <cstdint>

#include "editor/image_table.h"
#include "editor/widget_context.h"

namespace ziv {

constexpr WidgetId kPopupListId = 0x0A000000;
constexpr WidgetId kPopupSubmenuId = 0x0B000000;
constexpr int kPopupItemHeight = 14;  // the selectors' choice lists
constexpr int kMenuItemHeight = 20;
constexpr int kSubmenuItemHeight = 30;
constexpr int kPopupListPadding = 4;  // above a list's first row and below its last

// What a list answers for one pass.
constexpr int kListNothingChosen = -1;
constexpr int kListClickedOutside = -2;

// One list on screen: `count` items in `rows` rows of `itemHeight`, further columns of
// `columnWidth` to the right.
struct PopupList {
  WidgetId id = kPopupListId;
  Rect area;
  int count = 0;
  int rows = 1;
  int columnWidth = 0;
  int itemHeight = kPopupItemHeight;
  FontId font = fontSmall;
};

// How an item is drawn: its text and colour; inactive items (information lines) never light up
// under the pointer.
struct ListItem {
  const char* text = "";
  int colour = 0;
  bool active = true;
};

// The list's area for `count` items of `columnWidth` requested at (x, y): as many rows as fit
// the editor's height, further columns to the right, moved inside the editor.
Rect popupListArea(int count, int columnWidth, int x, int y, int itemHeight = kPopupItemHeight);
// A single-column menu list of `count` items at (x, y), moved inside the editor.
PopupList menuList(WidgetId id, int count, int width, int x, int y, int itemHeight);

// The item under the pointer, or -1.
int listItemAt(const PopupList& list, int x, int y);
// The list's answer to this pass's press: the active item clicked with the left button,
// kListClickedOutside for a press of either button outside the list, else kListNothingChosen.
// The press that opened the popup (its request's keepOpen pass) is not the list's.
int listChoice(const WidgetContext& context, const PopupList& list, const ListItem* items);

// Queues the list (panel, the hovered active item's bar, the texts) and marks it dirty when its
// look changed; `look` digests whatever else changes the items' texts.
void drawPopupList(WidgetContext& context, const PopupList& list, const ListItem* items, std::uint32_t look);
// Erases a list drawn in an earlier pass (no-op once it is gone).
void erasePopupList(WidgetContext& context, WidgetId id);

// Kinds 1 and 2 show the parameter's choices: a click on one picks it (one edit gesture) and
// closes the list, a click outside closes it.
void serveChoiceList(WidgetContext& context);

}  // namespace ziv
