// Cuts a text to a width in pixels, as measured by the canvas's font metrics.
//
// Threads: the host's user-interface thread, inside an editor frame.
#pragma once

#include <string>

#include "editor/canvas.h"

namespace ziv {

// Texts are measured on their first kFitMeasureLimit characters only.
constexpr int kFitMeasureLimit = 1024;

// Writes into `out` (which must not be `text`; its memory is reused): `text` when it fits
// `maxWidth`; otherwise the longest head of it that fits together with the suffix ("..." when
// `ellipsis`, else nothing), or the suffix alone. With keepIndex >= 0 and not inside that head,
// the window of text ends at character keepIndex instead (a caret that must stay visible) and
// starts as far left as the width allows.
void fitText(Canvas& canvas, const std::string& text, FontHandle font, int maxWidth, bool ellipsis,
             int keepIndex, std::string& out);

}  // namespace ziv
