// A render job: everything a render session needs to play one plug-in (where it is, the audio
// settings, program and parameter choices, and the MIDI events in frames), and what it yields.
// Both have a line-based text form so that the Linux host can hand a job to the Windows host
// running under wine and read its answers back; samples travel separately as raw floats.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "tools/host/fx_transfer.h"
#include "tools/host/midi_events.h"

namespace vrnhost {

// One "name or index = value" request; the key is resolved against the plug-in's own names by the
// session, since only the process holding the plug-in can ask for them.
struct ParameterSetting {
  std::string key;
  float value = 0.0f;
};

struct RenderJob {
  std::string pluginPath;
  int sampleRate = 44100;
  int blockSize = 512;
  double tempo = 120.0;
  bool transportPlaying = true;
  bool zeroFrameCalls = false;      // precede each block with a 0-frame call
  FxKind loadKind = FxKind::kNone;  // a program or bank file to load first
  FxImage loadImage;
  int program = -1;         // -1: keep the plug-in's current program
  std::string programName;  // empty: select no program by name
  std::vector<ParameterSetting> settings;
  FxKind saveKind = FxKind::kNone;  // save the state as a file image once prepared
  bool listParameters = false;      // report every parameter after program and settings are applied
  bool listPrograms = false;        // report every program's name
  std::int64_t frames = 0;          // length of the render; 0 renders nothing
  std::vector<FrameMidi> events;
};

struct ParameterInfo {
  int index = 0;
  std::string name;
  std::string display;
};

struct RenderResult {
  std::vector<float> samples;  // interleaved stereo, 2 × frames values
  std::int64_t frames = 0;
  double pluginCpuSeconds = 0.0;  // thread CPU time spent inside effProcessEvents and processReplacing
  std::string codePath;           // PluginDriver::codePath(), empty when the plug-in does not say
  std::vector<ParameterInfo> parameters;
  std::vector<std::string> programNames;
  FxImage savedImage;  // the state file image the job asked for
};

void writeJob(const RenderJob& job, std::ostream& out);
// Rejects unknown keywords and malformed values, naming the line.
bool readJob(std::istream& in, RenderJob& job, std::string& error);

// The result without its samples: "param", "programname" and "saved" lines and one "stats" line.
void writeResultText(const RenderResult& result, std::ostream& out);
// Reads one line of that form into result; false for a line of another kind.
bool readResultLine(const std::string& line, RenderResult& result);

}  // namespace vrnhost
