// The table and the summary of report.h.
#include "tools/bankcheck/report.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>

namespace bankcheck {

namespace {

std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

std::string number(const char* pattern, double value) {
  if (std::isnan(value)) return "";
  char text[40];
  std::snprintf(text, sizeof(text), pattern, value);
  return text;
}

struct Spread {
  double median, lowest, highest, largestOffset;
  std::string lowestName, highestName;
};

Spread loudnessSpread(const std::vector<ProgramFigures>& figures) {
  Spread s{medianLoudness(figures), INFINITY, -INFINITY, 0.0, "", ""};
  for (const ProgramFigures& f : figures) {
    if (f.category == Category::kNone) continue;
    if (f.loudness < s.lowest) s.lowest = f.loudness, s.lowestName = f.name;
    if (f.loudness > s.highest) s.highest = f.loudness, s.highestName = f.name;
    s.largestOffset = std::max(s.largestOffset, std::fabs(f.loudness - s.median));
  }
  return s;
}

}  // namespace

bool readDescriptions(const std::string& path, std::map<std::string, std::string>& descriptions,
                      std::string& error) {
  std::ifstream in(path);
  if (!in) {
    error = "cannot read '" + path + "'";
    return false;
  }
  std::string line, program;
  while (std::getline(in, line)) {
    line = trimmed(line);
    if (line.size() > 2 && line.front() == '[' && line.back() == ']') {
      program = line.substr(1, line.size() - 2);
    } else if (!program.empty() && line.size() > 1 && line[0] == '#') {
      descriptions[program] = trimmed(line.substr(1));
      program.clear();
    } else if (!line.empty()) {
      program.clear();  // settings came first: this program has no description
    }
  }
  return true;
}

std::string summaryText(const std::vector<ProgramFigures>& figures) {
  const Spread spread = loudnessSpread(figures);
  std::ostringstream out;
  out << "Loudness: median " << number("%.1f", spread.median) << " LUFS, from "
      << number("%.1f", spread.lowest) << " (" << spread.lowestName << ") to "
      << number("%.1f", spread.highest) << " (" << spread.highestName << "), at most "
      << number("%.1f", spread.largestOffset) << " LU from the median.\n";
  double loudestPeak = -INFINITY, loudestChord = -INFINITY;
  std::string peakName;
  int limited = 0;
  for (const ProgramFigures& f : figures) {
    if (f.peakDb > loudestPeak) loudestPeak = f.peakDb, peakName = f.name;
    if (f.chordPeakDb > loudestChord) loudestChord = f.chordPeakDb;
    limited += f.limiter ? 1 : 0;
  }
  out << "Peaks: highest " << number("%.1f", loudestPeak) << " dBFS (" << peakName
      << "); eight-note velocity-127 chords of polys and pads at most " << number("%.1f", loudestChord)
      << " dBFS; " << limited << " programs use the limiter.\n";
  // The program with the smallest value of a figure, named with the figure's value.
  auto least = [&](double ProgramFigures::*field) {
    const ProgramFigures* found = nullptr;
    for (const ProgramFigures& f : figures) {
      if (f.category != Category::kNone && (!found || f.*field < found->*field)) found = &f;
    }
    return found ? number("%.2f", found->*field) + " dB (" + found->name + ")" : std::string("none");
  };
  out << "Mod wheel: the smallest change is " << least(&ProgramFigures::wheelEffect) << ".\n"
      << "Velocity: the smallest change is " << least(&ProgramFigures::velocityEffect) << ".\n"
      << "Nearest program: the closest is " << least(&ProgramFigures::nearestDistance) << " away.\n";
  return out.str();
}

std::string figuresPage(const std::vector<ProgramFigures>& figures,
                        const std::map<std::string, std::string>& descriptions) {
  std::ostringstream out;
  out << "# The factory bank in figures\n\n"
      << "Written by `build/bankcheck` (tools/bankcheck), which renders every program through the built\n"
      << "plug-in with its category's phrase (leads a melody in C4-C5, basses a line in C1-C2, polys\n"
      << "four-note chords in C3-C4, pads slower chords, FX a held C4; velocity 100 at 120 BPM) and "
         "measures\n"
      << "it. Re-run it after any change to the engine or the bank:\n\n"
      << "    build/bankcheck --source presets/factory.txt --table docs/factory-bank.md build/VrnZIV.so\n\n"
      << "- LUFS: integrated loudness of the phrase (ITU-R BS.1770, libebur128).\n"
      << "- Peak: the loudest sample of every render, in dBFS; for polys and pads this includes an\n"
      << "  eight-note chord at velocity 127.\n"
      << "- Wheel, Velocity: how much the sound changes between the mod wheel at rest and fully up, and\n"
      << "  between velocity 30 and 127: the mean level difference in dB over sixth-octave bands and\n"
      << "  46 ms frames.\n"
      << "- Nearest: the same distance at equal loudness to the closest program of the category.\n\n"
      << "```\n"
      << summaryText(figures) << "```\n\n"
      << "| Program | LUFS | Peak | Wheel | Velocity | Nearest | Sound |\n"
      << "|---|---:|---:|---:|---:|---:|---|\n";
  for (const ProgramFigures& f : figures) {
    const auto description = descriptions.find(f.name);
    out << "| " << f.name << " | " << number("%.1f", f.loudness) << " | " << number("%.1f", f.peakDb)
        << (f.limiter ? " (limiter)" : "") << " | " << number("%.1f", f.wheelEffect) << " | "
        << number("%.1f", f.velocityEffect) << " | " << number("%.1f", f.nearestDistance) << " | "
        << (description != descriptions.end() ? description->second : "") << " |\n";
  }
  return out.str();
}

}  // namespace bankcheck
