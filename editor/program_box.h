// The program box: the current program's number and name between a previous and a next button.
// The buttons only note a pending program change, which the frame applies once after drawing,
// so a click never changes the program in the middle of a pass; a click on the name asks for
// the program menu.
//
// Threads: the host's user-interface thread, inside an editor frame.
#pragma once

#include "editor/widget_context.h"

namespace ziv {

constexpr int kProgramTabWidth = 19;
constexpr int kProgramBoxHeight = 24;

// "%02d. %s": the program index as the host sees it (0-based) and the program's name.
void formatProgramTitle(int program, const char* name, char* out, std::size_t capacity);

void programBox(WidgetContext& context, VstTest& instance, WidgetId id, const Placement& placement,
                int width);

}  // namespace ziv
