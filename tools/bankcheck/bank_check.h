// The bank check: renders every program of the plug-in's bank through its VST 2.4 entry point
// (the headless host's render jobs), measures it, and holds the figures against the thresholds a
// factory bank must meet. Runs on one thread; each render loads its own plug-in instance.
#pragma once

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "tools/bankcheck/phrases.h"

namespace bankcheck {

struct ProgramFigures {
  int index = 0;
  std::string name;
  Category category = Category::kNone;
  double loudness = NAN;                    // LUFS, the category phrase at velocity 100, wheel at rest
  double peakDb = NAN;                      // the loudest sample of every render of this program
  double chordPeakDb = NAN;                 // the eight-note velocity-127 chord (polys and pads)
  double wheelEffect = NAN;                 // band-picture distance in dB, wheel at rest against fully up
  double velocityEffect = NAN;              // the same, velocity 30 against 127
  double shareAbove200 = NAN;               // basses: share of the phrase's power above 200 Hz
  double fundamentalCents[2] = {NAN, NAN};  // basses: pitch heard on held C1 and C2 against the key
  double glideSemitones = NAN;   // "Glide"/"Legato" titles: how far below the second note it starts
  double nearestDistance = NAN;  // band-picture distance to the nearest program of the category
  std::string nearestName;
  bool limiter = false;  // the program's "MASTER: Limiter" is on
};

// Called after each program is measured, with the count done and the total.
using CheckProgress = std::function<void(int done, int total)>;

// Renders and measures every program; false with a one-line reason when the plug-in fails to load.
bool measureBank(const std::string& pluginPath, std::vector<ProgramFigures>& figures, std::string& error,
                 const CheckProgress& progress);

// The bank's median loudness over every program except "Init Patch".
double medianLoudness(const std::vector<ProgramFigures>& figures);

// Every threshold the bank misses, one readable line each; empty when the bank passes.
std::vector<std::string> failedThresholds(const std::vector<ProgramFigures>& figures);

}  // namespace bankcheck
