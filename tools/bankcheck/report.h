// The bank check's written results: the figures table for the repository's docs, the summary
// printed after a run, and the one-line descriptions it takes from the bank's source.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tools/bankcheck/bank_check.h"

namespace bankcheck {

// The description of each program: the first comment line under its [NAME] in the bank's source
// (presets/factory.txt). False with a reason when the file cannot be read.
bool readDescriptions(const std::string& path, std::map<std::string, std::string>& descriptions,
                      std::string& error);

// A Markdown page: the summary, then one row per program (name, loudness, peak, wheel and
// velocity effect, nearest program, description).
std::string figuresPage(const std::vector<ProgramFigures>& figures,
                        const std::map<std::string, std::string>& descriptions);

// A few lines: median loudness and spread, the highest peaks, programs whose wheel or velocity
// does little, the closest pair.
std::string summaryText(const std::vector<ProgramFigures>& figures);

}  // namespace bankcheck
