// bankcheck: measures every program of a built plug-in's bank and checks the factory bank's
// thresholds (matched loudness, headroom, a mod wheel and velocity that do something, basses that
// speak above 200 Hz at their keys' pitch, glides that glide, no near-copies).
//
// usage: bankcheck [--source BANK.txt] [--table PAGE.md] PLUGIN
// Prints the summary, writes the figures page when asked, and exits 1 with one line per missed
// threshold (or 2 when the plug-in cannot be run).
#include <cstdio>
#include <fstream>
#include <string>

#include "tools/bankcheck/bank_check.h"
#include "tools/bankcheck/report.h"

namespace {

constexpr char kUsage[] = "usage: bankcheck [--source BANK.txt] [--table PAGE.md] PLUGIN\n";

int fail(const std::string& message) {
  std::fprintf(stderr, "bankcheck: %s\n", message.c_str());
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  std::string source, table, plugin;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if ((arg == "--source" || arg == "--table") && i + 1 < argc) {
      (arg == "--source" ? source : table) = argv[++i];
    } else if (plugin.empty() && !arg.empty() && arg[0] != '-') {
      plugin = arg;
    } else {
      std::fputs(kUsage, stderr);
      return 2;
    }
  }
  if (plugin.empty()) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  std::map<std::string, std::string> descriptions;
  std::string error;
  if (!source.empty() && !bankcheck::readDescriptions(source, descriptions, error)) return fail(error);

  std::vector<bankcheck::ProgramFigures> figures;
  auto progress = [](int done, int total) {
    std::fprintf(stderr, "\rmeasured %d of %d programs", done, total);
    if (done == total) std::fputc('\n', stderr);
  };
  if (!bankcheck::measureBank(plugin, figures, error, progress)) return fail(error);

  std::fputs(bankcheck::summaryText(figures).c_str(), stdout);
  if (!table.empty()) {
    std::ofstream out(table);
    out << bankcheck::figuresPage(figures, descriptions);
    if (!out) return fail("cannot write '" + table + "'");
    std::printf("Figures written to %s\n", table.c_str());
  }
  const std::vector<std::string> failures = bankcheck::failedThresholds(figures);
  if (failures.empty()) {
    std::printf("The bank meets every threshold.\n");
    return 0;
  }
  std::printf("%zu thresholds missed:\n", failures.size());
  for (const std::string& line : failures) std::printf("  %s\n", line.c_str());
  return 1;
}
