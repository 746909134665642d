// Runs a render job through the Windows host (vrnhost.exe) under wine, for .dll plug-ins: the job
// goes to a temporary text file, the Windows host renders it and writes raw float samples plus
// result lines, and this side reads them back into the same RenderResult an in-process render
// gives. The file formats (WAV, MIDI) thus stay on the Linux side. Editor scripts go the same way
// and their report comes back line by line.
#pragma once

#include <iosfwd>
#include <string>

#include "tools/host/render_job.h"
#include "tools/host/render_session.h"

namespace vrnhost {

struct WineSettings {
  std::string wine = "wine";  // launcher, looked up in PATH
  std::string windowsHost;    // path of vrnhost.exe
};

// The Windows host to use: the option's file, or vrnhost.exe inside the option's folder, or (with
// no option) vrnhost.exe next to the plug-in. Empty with a reason in error when it does not exist.
std::string locateWindowsHost(const std::string& option, const std::string& pluginPath, std::string& error);

// Wine's view of an absolute Linux path: drive Z: is the Linux root in every wine prefix.
std::string toWineDrivePath(const std::string& absolutePath);

// job.pluginPath is the Linux path of the .dll.
bool runJobUnderWine(const RenderJob& job, const WineSettings& settings, RenderResult& result, std::string& error,
                     const ProgressFn& progress = {});

// Plays an editor script (tools/host/editor_script.h) through the Windows host, which shows the
// editor on the X display named by DISPLAY; each line of its report goes to `out` as it comes.
bool runEditorUnderWine(const std::string& pluginPath, const std::string& script,
                        const WineSettings& settings, std::ostream& out, std::string& error);

}  // namespace vrnhost
