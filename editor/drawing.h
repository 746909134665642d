// Queuing helpers that the widgets share: pictures at their own size or stretched, the
// three-piece bars and nine-slice panels of the image table, and texts placed by their measured
// size (left-aligned or centred, cut with "..." to a width).
//
// Threads: the host's user-interface thread, inside an editor frame.
#pragma once

#include "editor/image_table.h"
#include "editor/widget_context.h"

namespace ziv {

// `image` whole, at its own size with its top-left corner at (x, y); returns where.
Rect queuePicture(DrawList& list, int layer, int x, int y, const Image& image);
// `image` whole, stretched onto `area`.
void queueStretched(DrawList& list, int layer, const Rect& area, const Image& image);
// Left cap, stretched middle and right cap (members first, first + 1, first + 2 of `group`)
// across `area`.
void queueThreePiece(DrawList& list, int layer, const Rect& area, ImageGroup group, int first);
// The nine pieces of `group` (corners at their size, edges and centre stretched) over `area`.
void queueNineSlice(DrawList& list, int layer, const Rect& area, ImageGroup group);

// The learn highlight: a faint outline (the corners and edges of imgGlowFrame) whose line runs
// along the border of `area`; returns the area its pictures cover.
Rect queueLearnHighlight(DrawList& list, int layer, const Rect& area);

enum class Align { kLeft, kCentre };

// `text` (null or empty: nothing) cut with "..." to maxWidth, its top at y and its left edge (kLeft) or its
// middle (kCentre) at x; returns its area.
Rect queueLabel(WidgetContext& context, int layer, int x, int y, const char* text, FontId font, int colour,
                int maxWidth, Align align = Align::kLeft);

}  // namespace ziv
