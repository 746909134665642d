// The vrnhost command line: the options, their parsing and the usage text. Options are rows of one
// table (name, value, help, how to apply), so a new option is one new row.
#pragma once

#include <string>
#include <vector>

#include "tools/host/render_job.h"
#include "tools/host/wav_file.h"

namespace vrnhost {

struct HostOptions {
  std::string pluginPath;
  std::string outputPath = "out.wav";
  std::string midiPath;         // empty: the built-in demo phrase
  bool tracks = false;          // each MIDI track through its own instance, mixed
  double targetLoudness = 0.0;  // LUFS to scale the output to; 0: leave the level alone
  std::string loadPath;         // a .fxp or .fxb file to load before playing; empty: none
  int program = -1;             // -1: the plug-in's own start-up program
  std::string programName;      // empty: no program chosen by name
  std::string saveProgramPath;  // .fxp to save the current program to; empty: none
  std::string saveBankPath;     // .fxb to save the bank to; empty: none
  std::vector<ParameterSetting> settings;
  int sampleRate = 44100;
  int blockSize = 512;
  double tempo = 0.0;  // 0: the demo's 120 BPM, or a MIDI file's initial tempo
  double tailSeconds = 2.0;
  double lengthSeconds = 0.0;  // 0: up to the last event plus the tail
  SampleFormat format = SampleFormat::kFloat32;
  bool zeroFrameCalls = false;
  bool transportStopped = false;
  bool listParameters = false;
  bool listPrograms = false;
  std::string editorScript;    // editor script to play instead of rendering; empty: none
  std::string screenshotPath;  // PNG of the editor to write at the end of the editor mode; empty: none
  std::string windowsHost;     // vrnhost.exe or its folder; empty: next to the .dll
  std::string wine = "wine";
  bool quiet = false;
  bool help = false;
};

// Parses the arguments after the program name. On failure returns false with a one-line reason.
bool parseHostOptions(const std::vector<std::string>& args, HostOptions& options, std::string& error);

std::string usageText();

// True for plug-in files that need the Windows host (by their .dll extension).
bool isWindowsPlugin(const std::string& path);

// True when the options ask for the editor mode instead of a render.
bool wantsEditor(const HostOptions& options);

}  // namespace vrnhost
