// Serving the popup that a control requested during the pass. It runs after every control has
// been placed, so the popup lies above them all and, while it is open, takes the clicks that
// would otherwise reach the controls under it.
//
// Threads: the host's user-interface thread, at the end of an editor frame.
#pragma once

#include "editor/widget_context.h"

namespace ziv {

constexpr WidgetId kPopupListId = 0x0A000000;
constexpr int kPopupItemHeight = 14;

// The list's area for `count` items of `columnWidth` requested at (x, y): as many rows as fit
// the editor's height, further columns to the right, moved inside the editor.
Rect popupListArea(int count, int columnWidth, int x, int y);

// Kinds 1 and 2 show the parameter's choices: a click on one picks it (one edit gesture) and
// closes the list, a click outside closes it. The press that opened a list is not its own.
// Requests of other kinds are closed unserved.
void servePopup(WidgetContext& context);

}  // namespace ziv
