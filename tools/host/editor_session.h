// The Windows host's editor mode: plays an editor script (tools/host/editor_script.h) against
// plug-in instances the way a DAW shows their editors: each editor opens inside a top-level
// window of the host's own, the script's mouse steps arrive as real window messages posted to the
// editor's window and dispatched by the host's message loop, and waits pump that loop while the
// editor's timer runs. Every step prints what happened, followed by the host callbacks it caused,
// one line each:
//
//   instance N | open W H | close | rect TOP LEFT BOTTOM RIGHT | set INDEX VALUE | program N
//   mouse STEP X Y capture 0|1      (capture: whether the editor holds the mouse afterwards)
//   wait TICKS | screenshot FILE W H | destroy N
//   param INDEX VALUE NAME = DISPLAY
//   callback automate INDEX VALUE | callback beginEdit INDEX | callback endEdit INDEX
//   callback updateDisplay
//
// and at the end "frames COUNT wall MS cpu MS": the timer frames dispatched during waits and the
// mean wall-clock and thread CPU time of one, in milliseconds.
//
// Threads: the thread that runs it is the plug-ins' user-interface thread. Windows only.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "tools/host/editor_script.h"

namespace vrnhost {

// Loads instances of the plug-in as the script asks and plays it; false with a reason (naming
// the script line) when a step cannot be done. Every instance is taken down at the end.
bool runEditorScript(const std::string& pluginPath, const std::vector<EditorStep>& steps, std::ostream& out,
                     std::string& error);

}  // namespace vrnhost
