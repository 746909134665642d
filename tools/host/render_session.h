// Plays a render job through a plug-in: loads and prepares it (program, parameter settings), then
// runs the blocks, handing each block its events with offsets inside the block and the transport
// time at its start, and collects the audio and the plug-in's CPU time.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "sdk/vst2/aeffect.h"
#include "tools/host/plugin_driver.h"
#include "tools/host/render_job.h"

namespace vrnhost {

// Called after each block with the frames done so far and the total.
using ProgressFn = std::function<void(std::int64_t done, std::int64_t total)>;

// Transport state at a block starting at startFrame: sample and song position, tempo, 4/4 bars.
// With the transport stopped the song position stays at 0 and the playing flag is clear.
vst2::VstTimeInfo transportAt(const RenderJob& job, std::int64_t startFrame);

// Finds a setting's parameter: a decimal key is an index, anything else is compared with the
// plug-in's parameter names ignoring case and surrounding spaces. -1 when nothing matches.
int findParameter(const std::string& key, const std::vector<std::string>& names);

// Finds a program by name, ignoring case and surrounding spaces; -1 when none matches.
int findProgram(const std::string& name, const std::vector<std::string>& names);

class RenderSession {
 public:
  RenderSession(PluginDriver& driver, const RenderJob& job) : driver_(driver), job_(job) {}

  // Opens the plug-in at the job's rate and block size and applies, in this order, the file to
  // load, the program (by index or name) and the settings; then saves the state if asked to.
  bool prepare(std::string& error);
  void listParameters(std::vector<ParameterInfo>& parameters);
  void listPrograms(std::vector<std::string>& names);
  // The state file image the job asked for, taken at the end of prepare.
  const FxImage& savedImage() const { return savedImage_; }
  // Starts processing, renders job.frames frames and stops again.
  void render(RenderResult& result, const ProgressFn& progress);

 private:
  void collectBlockEvents(std::int64_t start, int frames);
  bool selectProgram(std::string& error);

  PluginDriver& driver_;
  const RenderJob& job_;
  std::size_t nextEvent_ = 0;
  std::vector<vst2::VstMidiEvent> blockEvents_;
  FxImage savedImage_;
};

// Loads the job's plug-in, runs the job and takes the plug-in down: what one host process does.
bool runRenderJob(const RenderJob& job, RenderResult& result, std::string& error, const ProgressFn& progress = {});

}  // namespace vrnhost
