// vrntorture: loads a built plug-in through its VST 2.4 entry point and runs the torture
// scenarios against it, each for a bounded time from a fixed seed, then prints one row per
// scenario (calls made, duration, output peak, heap allocations inside process calls, findings)
// and the first findings word for word. Exits 1 when anything was found, 2 on bad arguments.
//
//   vrntorture [--seconds S] [--seed N] [--only name,name...] plugin
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tools/host/plugin_module.h"
#include "tools/torture/allocation_counter.h"
#include "tools/torture/scenario.h"

namespace {

using namespace torture;

struct Options {
  std::string plugin;
  double seconds = 2.0;
  std::uint32_t seed = 1;
  std::string only;  // comma-separated scenario names; empty runs all
};

int usage(const char* problem) {
  std::fprintf(stderr, "vrntorture: %s\nusage: vrntorture [--seconds S] [--seed N] [--only a,b] plugin\n",
               problem);
  return 2;
}

bool selected(const Options& options, const std::string& name) {
  if (options.only.empty()) return true;
  const std::string list = "," + options.only + ",";
  return list.find("," + name + ",") != std::string::npos;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    const bool hasValue = i + 1 < argc;
    if (argument == "--seconds" && hasValue) {
      options.seconds = std::atof(argv[++i]);
    } else if (argument == "--seed" && hasValue) {
      options.seed = static_cast<std::uint32_t>(std::strtoul(argv[++i], nullptr, 10));
    } else if (argument == "--only" && hasValue) {
      options.only = argv[++i];
    } else if (argument.rfind("--", 0) == 0 || !options.plugin.empty()) {
      return usage(("unexpected argument '" + argument + "'").c_str());
    } else {
      options.plugin = argument;
    }
  }
  if (options.plugin.empty()) return usage("no plug-in given");
  if (!(options.seconds > 0.0)) return usage("--seconds needs a positive number");

  vrnhost::PluginModule module;
  std::string error;
  if (!module.load(options.plugin, error)) {
    std::fprintf(stderr, "vrntorture: %s\n", error.c_str());
    return 1;
  }

  const bool allocationsCounted = allocationsOfPluginCounted();
  std::printf("%-20s %10s %9s %11s %7s %9s\n", "scenario", "calls", "seconds", "peak", "allocs", "findings");
  int totalFindings = 0;
  std::string details;
  std::uint32_t seed = options.seed;
  for (const Scenario& scenario : allScenarios()) {
    ++seed;  // each scenario its own sequence, the same on every run
    if (!selected(options, scenario.name)) continue;
    Scoreboard board;
    const auto begin = std::chrono::steady_clock::now();
    scenario.run(ScenarioContext{module.entry(), options.seconds, seed, board});
    const double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    const std::string allocations = allocationsCounted ? std::to_string(board.allocations()) : "-";
    std::printf("%-20s %10lld %9.2f %11.4g %7s %9d\n", scenario.name, board.calls(), elapsed, board.peak(),
                allocations.c_str(), board.findingCount());
    std::fflush(stdout);
    totalFindings += board.findingCount();
    for (const std::string& finding : board.keptFindings())
      details += std::string(scenario.name) + ": " + finding + "\n";
  }
  if (!details.empty()) std::printf("\n%s", details.c_str());
  std::printf("%d finding%s\n", totalFindings, totalFindings == 1 ? "" : "s");
  return totalFindings == 0 ? 0 : 1;
}
