// The editor's layout: every panel and control, in a fixed order, with its id, placement,
// parameter and caption, and the help text of each panel. One pass places them all through the
// widget operations; it runs once per frame.
//
// Threads: the host's user-interface thread, inside an editor frame.
#pragma once

#include <string>

#include "editor/widget_context.h"

namespace ziv {

constexpr WidgetId kBackgroundId = 4864;
constexpr WidgetId kProgramBoxId = 4097;
constexpr WidgetId kVersionLabelId = 4098;
constexpr WidgetId kHelpLineId = 4361;

// "Ver. " and the packed version (major in bits 16 and up, minor 8-15, patch 0-7) as a.b.c.
std::string versionText(int packedVersion);

// Places the background, the eighteen panels, their controls and the help line.
void layoutPass(WidgetContext& context, VstTest& instance, const std::string& version);

}  // namespace ziv
