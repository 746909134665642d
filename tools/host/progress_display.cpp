// Throttled progress output.
#include "tools/host/progress_display.h"

#include <unistd.h>

#include <cstdio>

namespace vrnhost {

namespace {

constexpr auto kTerminalInterval = std::chrono::milliseconds(100);
// Without a terminal, nothing appears during the first seconds and then a line every few seconds.
constexpr auto kLogQuietTime = std::chrono::seconds(3);
constexpr auto kLogInterval = std::chrono::seconds(5);

}  // namespace

ProgressDisplay::ProgressDisplay(bool enabled, int sampleRate)
    : enabled_(enabled),
      terminal_(isatty(STDERR_FILENO) != 0),
      sampleRate_(sampleRate),
      started_(Clock::now()),
      lastShown_(started_) {}

void ProgressDisplay::update(std::int64_t done, std::int64_t total) {
  if (!enabled_ || total <= 0) return;
  auto now = Clock::now();
  if (terminal_) {
    if (lineShown_ && now - lastShown_ < kTerminalInterval) return;
  } else if (now - started_ < kLogQuietTime || (lineShown_ && now - lastShown_ < kLogInterval)) {
    return;
  }
  lastShown_ = now;
  lineShown_ = true;
  double percent = 100.0 * static_cast<double>(done) / static_cast<double>(total);
  std::fprintf(stderr, "%srendering %5.1f%%  %.1f / %.1f s%s", terminal_ ? "\r" : "vrnhost: ", percent,
               static_cast<double>(done) / sampleRate_, static_cast<double>(total) / sampleRate_,
               terminal_ ? "" : "\n");
  std::fflush(stderr);
}

void ProgressDisplay::finish() {
  if (enabled_ && terminal_ && lineShown_) std::fprintf(stderr, "\r%40s\r", "");
  lineShown_ = false;
}

}  // namespace vrnhost
