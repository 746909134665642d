// vrnhost: the command-line host. Turns the options into a render job (events from the demo phrase
// or a MIDI file), runs it in this process for a .so or through vrnhost.exe under wine for a .dll,
// and writes the WAV file or the parameter list. Every failure is one line on stderr and exit 1.
#include <limits.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "tools/host/demo_phrase.h"
#include "tools/host/editor_script.h"
#include "tools/host/host_options.h"
#include "tools/host/loudness.h"
#include "tools/host/midi_file.h"
#include "tools/host/progress_display.h"
#include "tools/host/render_session.h"
#include "tools/host/track_mix.h"
#include "tools/host/wav_file.h"
#include "tools/host/wine_bridge.h"

namespace {

using namespace vrnhost;

// The highest peak that --loudness lets through, leaving room for the inter-sample overs of
// lossy encoders and converters.
constexpr double kPeakCeilingDb = -1.0;

int fail(const std::string& message) {
  std::fprintf(stderr, "vrnhost: %s\n", message.c_str());
  return 1;
}

// dlopen searches library paths for bare names, so the plug-in is always given by absolute path.
bool resolvePlugin(const std::string& path, std::string& absolute, std::string& error) {
  struct stat info {};
  if (stat(path.c_str(), &info) != 0) {
    error = "plug-in file '" + path + "' not found";
    return false;
  }
  if (!S_ISREG(info.st_mode)) {
    error = "'" + path + "' is not a file";
    return false;
  }
  char buffer[PATH_MAX];
  if (!realpath(path.c_str(), buffer)) {
    error = "cannot resolve '" + path + "'";
    return false;
  }
  absolute = buffer;
  return true;
}

// Reads a program or bank file and checks its header, so a bad file fails before the plug-in runs.
bool readFxFile(const std::string& path, RenderJob& job, std::string& error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    error = "cannot read '" + path + "'";
    return false;
  }
  job.loadImage.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  job.loadKind = fxKindOfPath(path);
  if (!checkFxImage(job.loadImage, job.loadKind, error)) {
    error = "'" + path + "' is " + error;
    return false;
  }
  return true;
}

bool writeFxFile(const std::string& path, const FxImage& image, std::string& error) {
  std::ofstream out(path, std::ios::binary);
  out.write(reinterpret_cast<const char*>(image.data()), static_cast<std::streamsize>(image.size()));
  out.close();
  if (!out) {
    error = "cannot write '" + path + "'";
    return false;
  }
  return true;
}

bool buildJob(const HostOptions& options, RenderJob& job, std::string& error) {
  if (!options.loadPath.empty() && !readFxFile(options.loadPath, job, error)) return false;
  MidiSequence sequence;
  if (options.midiPath.empty()) {
    sequence = demoPhrase(options.tempo > 0.0 ? options.tempo : 120.0);
  } else if (!readMidiFile(options.midiPath, sequence, error)) {
    return false;
  }
  job.sampleRate = options.sampleRate;
  job.blockSize = options.blockSize;
  job.tempo = options.tempo > 0.0 ? options.tempo : sequence.tempo > 0.0 ? sequence.tempo : 120.0;
  job.transportPlaying = !options.transportStopped;
  job.zeroFrameCalls = options.zeroFrameCalls;
  job.program = options.program;
  job.programName = options.programName;
  job.settings = options.settings;
  job.saveKind = !options.saveProgramPath.empty() ? FxKind::kProgram
                 : !options.saveBankPath.empty()  ? FxKind::kBank
                                                  : FxKind::kNone;
  job.listParameters = options.listParameters;
  job.listPrograms = options.listPrograms;
  job.events = toFrames(sequence.messages, options.sampleRate);
  if (options.listParameters || options.listPrograms) {
    job.frames = 0;
  } else if (options.lengthSeconds > 0.0) {
    job.frames = std::llround(options.lengthSeconds * options.sampleRate);
  } else {
    job.frames = renderLength(job.events, std::llround(options.tailSeconds * options.sampleRate));
  }
  return true;
}

// A path as the Windows host sees it: absolute paths on drive Z:, which wine maps to the root.
std::string windowsPathOf(const std::string& path) {
  if (!path.empty() && path[0] == '/') return toWineDrivePath(path);
  char cwd[PATH_MAX];
  return toWineDrivePath(std::string(getcwd(cwd, sizeof(cwd)) ? cwd : ".") + "/" + path);
}

// The script the Windows host plays: the user's, checked here so that a mistake is reported
// before wine starts (or just "open" without one); --screenshot adds a wait and the screenshot.
bool editorScriptText(const HostOptions& options, std::string& script, std::string& error) {
  if (options.editorScript.empty()) {
    script = "open\n";
  } else {
    std::ifstream in(options.editorScript);
    if (!in) {
      error = "cannot read '" + options.editorScript + "'";
      return false;
    }
    std::ostringstream text;
    text << in.rdbuf();
    script = text.str();
    std::istringstream check(script);
    std::vector<EditorStep> steps;
    if (!parseEditorScript(check, steps, error)) {
      error = "'" + options.editorScript + "' " + error;
      return false;
    }
    if (!script.empty() && script.back() != '\n') script += '\n';
  }
  if (!options.screenshotPath.empty()) {
    script += "wait 4\nscreenshot " + windowsPathOf(options.screenshotPath) + "\n";
  }
  return true;
}

int runEditorMode(const HostOptions& options, const std::string& pluginPath) {
  std::string error;
  if (!isWindowsPlugin(pluginPath)) return fail("the editor is part of the Windows plug-in only: give a .dll");
  std::string script;
  if (!editorScriptText(options, script, error)) return fail(error);
  const char* display = std::getenv("DISPLAY");
  if (display == nullptr || *display == '\0') {
    return fail("the editor needs an X display (DISPLAY is unset): run under xvfb-run -a");
  }
  WineSettings wine;
  wine.wine = options.wine;
  wine.windowsHost = locateWindowsHost(options.windowsHost, pluginPath, error);
  if (wine.windowsHost.empty() || !runEditorUnderWine(pluginPath, script, wine, std::cout, error)) {
    return fail(error);
  }
  return 0;
}

void printParameters(const std::vector<ParameterInfo>& parameters) {
  for (const ParameterInfo& info : parameters) {
    std::printf("%3d  %-28s  %s\n", info.index, info.name.c_str(), info.display.c_str());
  }
}

void printSummary(const HostOptions& options, const RenderResult& result) {
  double seconds = static_cast<double>(result.frames) / options.sampleRate;
  std::printf("%s: %.3f s, %d Hz, stereo, %s\n", options.outputPath.c_str(), seconds, options.sampleRate,
              options.format == SampleFormat::kFloat32 ? "32-bit float" : "24-bit");
  std::printf("loudness %.1f LUFS, peak %.1f dBFS\n",
              integratedLoudness(result.samples, 2, options.sampleRate), samplePeakDb(result.samples));
  if (result.pluginCpuSeconds > 0.0) {
    std::printf("plug-in CPU time %.3f s, real-time factor %.1f\n", result.pluginCpuSeconds,
                seconds / result.pluginCpuSeconds);
  } else {
    std::printf("plug-in CPU time below the clock's resolution\n");
  }
  if (!result.codePath.empty()) std::printf("plug-in code path %s\n", result.codePath.c_str());
}

}  // namespace

int main(int argc, char** argv) {
  HostOptions options;
  std::string error;
  if (!parseHostOptions(std::vector<std::string>(argv + 1, argv + argc), options, error)) {
    return fail(error + " (see --help)");
  }
  if (options.help) {
    std::fputs(usageText().c_str(), stdout);
    return 0;
  }
  RenderJob job;
  if (!resolvePlugin(options.pluginPath, job.pluginPath, error)) return fail(error);
  if (wantsEditor(options)) return runEditorMode(options, job.pluginPath);
  if (!buildJob(options, job, error)) {
    return fail(error);
  }

  const bool listing = options.listParameters || options.listPrograms;
  ProgressDisplay display(!options.quiet && !listing, options.sampleRate);
  ProgressFn progress = [&display](std::int64_t done, std::int64_t total) { display.update(done, total); };
  WineSettings wine;
  if (isWindowsPlugin(job.pluginPath)) {
    wine.wine = options.wine;
    wine.windowsHost = locateWindowsHost(options.windowsHost, job.pluginPath, error);
    if (wine.windowsHost.empty()) return fail(error);
  }
  JobRunner run = [&](const RenderJob& one, RenderResult& result, std::string& reason) {
    return wine.windowsHost.empty() ? runRenderJob(one, result, reason, progress)
                                    : runJobUnderWine(one, wine, result, reason, progress);
  };
  RenderResult result;
  std::vector<MidiTrack> tracks;
  std::vector<std::string> trackPrograms;
  const bool ok = options.tracks ? readMidiTracks(options.midiPath, tracks, error) &&
                                       renderTrackMix(job, tracks, run, result, trackPrograms, error)
                                 : run(job, result, error);
  display.finish();
  if (!ok) return fail(error);
  if (options.targetLoudness < 0.0) {
    normaliseLoudness(result.samples, options.sampleRate, options.targetLoudness, kPeakCeilingDb);
  }

  const std::string& savePath =
      !options.saveProgramPath.empty() ? options.saveProgramPath : options.saveBankPath;
  if (!savePath.empty() && !writeFxFile(savePath, result.savedImage, error)) return fail(error);
  if (listing) {
    printParameters(result.parameters);
    for (std::size_t i = 0; i < result.programNames.size(); ++i) {
      std::printf("%3zu  %s\n", i, result.programNames[i].c_str());
    }
    return 0;
  }
  if (!writeWav(options.outputPath, result.samples, 2, options.sampleRate, options.format, error)) {
    return fail(error);
  }
  if (!options.quiet) {
    for (std::size_t i = 0; i < trackPrograms.size(); ++i)
      std::printf("track %zu: %s\n", i + 1, trackPrograms[i].c_str());
    printSummary(options, result);
  }
  return 0;
}
