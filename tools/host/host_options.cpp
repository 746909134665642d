// Option table and parser. Accepts "--name value", "--name=value" and "-x value"; numbers must be
// complete and in range, so that a typo is reported instead of silently read as 0.
#include "tools/host/host_options.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <functional>

namespace vrnhost {

namespace {

using Apply = std::function<bool(HostOptions&, const std::string& value, std::string& error)>;

struct OptionRow {
  const char* longName;
  char shortName;         // 0: none
  const char* valueName;  // nullptr: a switch without value
  const char* help;
  Apply apply;
};

bool parseNumber(const std::string& text, double low, double high, double& value) {
  if (text.empty() || std::isspace(static_cast<unsigned char>(text[0]))) return false;
  char* end = nullptr;
  value = std::strtod(text.c_str(), &end);
  return end && *end == '\0' && std::isfinite(value) && value >= low && value <= high;
}

// Builds an Apply that reads a number in [low, high] into a field; integers reject fractions.
template <typename T>
Apply number(T HostOptions::*field, double low, double high, const char* what) {
  return [=](HostOptions& options, const std::string& text, std::string& error) {
    double value = 0.0;
    bool ok = parseNumber(text, low, high, value);
    if (ok && std::is_integral<T>::value && value != std::floor(value)) ok = false;
    if (!ok) {
      error = std::string(what) + " must be a number from " + std::to_string(static_cast<long long>(low)) +
              " to " + std::to_string(static_cast<long long>(high)) + ", not '" + text + "'";
      return false;
    }
    options.*field = static_cast<T>(value);
    return true;
  };
}

Apply text(std::string HostOptions::*field) {
  return [=](HostOptions& options, const std::string& value, std::string& error) {
    if (value.empty()) {
      error = "empty value";
      return false;
    }
    options.*field = value;
    return true;
  };
}

Apply flag(bool HostOptions::*field) {
  return [=](HostOptions& options, const std::string&, std::string&) {
    options.*field = true;
    return true;
  };
}

bool applySetting(HostOptions& options, const std::string& value, std::string& error) {
  std::size_t equals = value.rfind('=');
  double number = 0.0;
  if (equals == std::string::npos || equals == 0) {
    error = "--set needs PARAM=VALUE, not '" + value + "'";
    return false;
  }
  if (!parseNumber(value.substr(equals + 1), 0.0, 1.0, number)) {
    error = "--set value must be a normalised number from 0 to 1, not '" + value.substr(equals + 1) + "'";
    return false;
  }
  options.settings.push_back({value.substr(0, equals), static_cast<float>(number)});
  return true;
}

bool applyFormat(HostOptions& options, const std::string& value, std::string& error) {
  if (value == "float" || value == "32") {
    options.format = SampleFormat::kFloat32;
  } else if (value == "24") {
    options.format = SampleFormat::kPcm24;
  } else {
    error = "--format must be 'float' or '24', not '" + value + "'";
    return false;
  }
  return true;
}

const std::vector<OptionRow>& optionTable() {
  static const std::vector<OptionRow> table = {
      {"out", 'o', "FILE", "WAV file to write (default out.wav)", text(&HostOptions::outputPath)},
      {"midi", 'm', "FILE", "Standard MIDI File to play (default: the built-in demo phrase)",
       text(&HostOptions::midiPath)},
      {"tracks", 0, nullptr,
       "play each track of the MIDI file through its own plug-in instance, on the program its track name "
       "names, and mix them (a track's controller 7 is its fader)",
       flag(&HostOptions::tracks)},
      {"loudness", 0, "LUFS",
       "bring the output to this integrated loudness, a limiter keeping its peaks at or below -1 dBFS",
       number(&HostOptions::targetLoudness, -60, -1, "--loudness")},
      {"load", 0, "FILE",
       "load a .fxp program or .fxb bank into the plug-in first (before --program and --set)",
       text(&HostOptions::loadPath)},
      {"program", 'p', "N", "select program N (0-based) before playing", number(&HostOptions::program, 0, 9999, "--program")},
      {"program-name", 0, "NAME", "select the program with this name (case ignored) instead of --program",
       text(&HostOptions::programName)},
      {"set", 's', "P=V",
       "set parameter P (name or index) to the normalised value V (0..1); repeatable, applied after --program",
       applySetting},
      {"rate", 'r', "HZ", "sample rate (default 44100)", number(&HostOptions::sampleRate, 8000, 384000, "--rate")},
      {"block", 'b', "N", "host block size in frames (default 512)", number(&HostOptions::blockSize, 1, 65536, "--block")},
      {"tempo", 't', "BPM", "tempo of the demo phrase and the host transport (default 120, or the MIDI file's)",
       number(&HostOptions::tempo, 1, 999, "--tempo")},
      {"tail", 0, "SECONDS", "time rendered after the last event (default 2)",
       number(&HostOptions::tailSeconds, 0, 600, "--tail")},
      {"length", 0, "SECONDS", "render exactly this long, ignoring the events' end and --tail",
       number(&HostOptions::lengthSeconds, 0.001, 3600, "--length")},
      {"format", 'f', "F", "sample format: float (32-bit float, default) or 24 (24-bit integer)", applyFormat},
      {"zero-frame-calls", 0, nullptr, "precede every block with a 0-frame process call, as some hosts do",
       flag(&HostOptions::zeroFrameCalls)},
      {"stopped", 0, nullptr, "report a stopped transport (the song position stays at 0)",
       flag(&HostOptions::transportStopped)},
      {"save-fxp", 0, "FILE",
       "save the current program as .fxp, through the plug-in's chunk, after load, program and --set",
       text(&HostOptions::saveProgramPath)},
      {"save-fxb", 0, "FILE",
       "save the whole bank as .fxb, through the plug-in's chunk, after load, program and --set",
       text(&HostOptions::saveBankPath)},
      {"list-params", 'l', nullptr, "print every parameter's index, name and display text, then exit",
       flag(&HostOptions::listParameters)},
      {"list-programs", 0, nullptr, "print every program's index and name (after --load), then exit",
       flag(&HostOptions::listPrograms)},
      {"editor", 'e', "SCRIPT",
       "open the .dll's editor in a window under wine and play the mouse script SCRIPT instead of rendering "
       "(the steps are listed below)",
       text(&HostOptions::editorScript)},
      {"screenshot", 0, "FILE",
       "open the .dll's editor (after --editor's script, if any), wait 4 timer ticks and save it as a PNG "
       "file",
       text(&HostOptions::screenshotPath)},
      {"win-host", 0, "PATH", "vrnhost.exe, or the folder holding it, for .dll plug-ins (default: the .dll's folder)",
       text(&HostOptions::windowsHost)},
      {"wine", 0, "PROGRAM", "wine launcher for .dll plug-ins (default wine; WINEPREFIX is honoured)",
       text(&HostOptions::wine)},
      {"quiet", 'q', nullptr, "print neither progress nor the summary", flag(&HostOptions::quiet)},
      {"help", 'h', nullptr, "show this text", flag(&HostOptions::help)},
  };
  return table;
}

const OptionRow* findOption(const std::string& arg, std::string& inlineValue, bool& hasInlineValue) {
  hasInlineValue = false;
  if (arg.size() == 2 && arg[0] == '-' && arg[1] != '-') {
    for (const OptionRow& row : optionTable()) {
      if (row.shortName == arg[1]) return &row;
    }
    return nullptr;
  }
  std::string name = arg.substr(2);
  std::size_t equals = name.find('=');
  if (equals != std::string::npos) {
    inlineValue = name.substr(equals + 1);
    hasInlineValue = true;
    name = name.substr(0, equals);
  }
  for (const OptionRow& row : optionTable()) {
    if (name == row.longName) return &row;
  }
  return nullptr;
}

}  // namespace

bool parseHostOptions(const std::vector<std::string>& args, HostOptions& options, std::string& error) {
  std::vector<std::string> positional;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (arg.size() < 2 || arg[0] != '-') {
      positional.push_back(arg);
      continue;
    }
    std::string value;
    bool hasInlineValue = false;
    const OptionRow* row = findOption(arg, value, hasInlineValue);
    if (!row) {
      error = "unknown option '" + arg + "'";
      return false;
    }
    if (row->valueName && !hasInlineValue) {
      if (i + 1 >= args.size()) {
        error = "option '" + arg + "' needs a value (" + row->valueName + ")";
        return false;
      }
      value = args[++i];
    } else if (!row->valueName && hasInlineValue) {
      error = "option '--" + std::string(row->longName) + "' takes no value";
      return false;
    }
    std::string reason;
    if (!row->apply(options, value, reason)) {
      error = reason == "empty value" ? "option '" + arg + "' needs a non-empty value" : reason;
      return false;
    }
  }
  if (options.help) return true;
  if (options.program >= 0 && !options.programName.empty()) {
    error = "give --program or --program-name, not both";
    return false;
  }
  if (options.tracks && options.midiPath.empty()) {
    error = "--tracks needs a MIDI file (--midi)";
    return false;
  }
  if (!options.saveProgramPath.empty() && !options.saveBankPath.empty()) {
    error = "give --save-fxp or --save-fxb, not both";
    return false;
  }
  if (!options.loadPath.empty() && fxKindOfPath(options.loadPath) == FxKind::kNone) {
    error = "--load needs a .fxp or .fxb file, not '" + options.loadPath + "'";
    return false;
  }
  if (wantsEditor(options) && (options.listParameters || options.listPrograms || !options.loadPath.empty() ||
                               !options.saveProgramPath.empty() || !options.saveBankPath.empty())) {
    error = "the editor mode (--editor, --screenshot) does not list, load or save";
    return false;
  }
  if (positional.size() != 1) {
    error = positional.empty() ? "no plug-in file given" : "more than one plug-in file given";
    return false;
  }
  options.pluginPath = positional[0];
  return true;
}

std::string usageText() {
  std::string text =
      "usage: vrnhost [options] PLUGIN\n"
      "Plays MIDI through a VST 2.4 instrument and writes the audio to a WAV file.\n"
      "PLUGIN is a Linux .so (run in this process) or a Windows .dll (run by vrnhost.exe under wine).\n"
      "\n"
      "options:\n";
  for (const OptionRow& row : optionTable()) {
    std::string left = "  ";
    left += row.shortName ? std::string("-") + row.shortName + ", " : "    ";
    left += "--" + std::string(row.longName);
    if (row.valueName) left += " " + std::string(row.valueName);
    left.resize(std::max<std::size_t>(left.size() + 2, 28), ' ');
    text += left + row.help + "\n";
  }
  text +=
      "\n"
      "editor scripts (one step per line, '#' starts a comment; X Y are editor pixels, BUTTON is left or "
      "right):\n"
      "  open, close               open the editor in a window of its own (effEditOpen), close it\n"
      "  rect                      print the editor rectangle (effEditGetRect)\n"
      "  move X Y                  move the mouse (with the held buttons and Shift)\n"
      "  press [BUTTON], release [BUTTON]\n"
      "  click X Y [BUTTON], double X Y [BUTTON]\n"
      "  drag X0 Y0 X1 Y1 [STEPS]  press left at X0 Y0, move to X1 Y1 in STEPS moves (default 8), release\n"
      "  shift down|up             hold Shift in the following mouse messages, or not\n"
      "  wheel DELTA               turn the mouse wheel (120 per notch)\n"
      "  wait TICKS                let the editor run TICKS timer ticks of 50 ms\n"
      "  screenshot FILE           save the editor's pixels as a PNG file\n"
      "  params                    print every parameter's value, name and display\n"
      "  set P=V, program N        host automation of parameter P (name or index), host program change\n"
      "  instance N, destroy       switch to plug-in instance N (0..3), creating it; close the instance\n"
      "  cc N V                    send MIDI controller N with value V (0..127), then one audio block\n"
      "  type TEXT, key enter|escape  type into the window with the keyboard focus (a text field)\n"
      "  name                      print the current program's index and name\n"
      "The report prints each step, the host callbacks it caused (automate, beginEdit, endEdit,\n"
      "updateDisplay) and the timer frames' mean wall-clock and CPU time. The editor needs an X display:\n"
      "  xvfb-run -a vrnhost --screenshot editor.png build-win/VrnZIV.dll\n";
  return text;
}

bool wantsEditor(const HostOptions& options) {
  return !options.editorScript.empty() || !options.screenshotPath.empty();
}

bool isWindowsPlugin(const std::string& path) {
  if (path.size() < 4) return false;
  std::string extension = path.substr(path.size() - 4);
  for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return extension == ".dll";
}

}  // namespace vrnhost
