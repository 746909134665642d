// Render progress on stderr. On a terminal it is one line redrawn in place; otherwise (logs, CI)
// it stays silent for short renders and prints an occasional line for long ones, so that scripts
// and tests are not cluttered.
#pragma once

#include <chrono>
#include <cstdint>

namespace vrnhost {

class ProgressDisplay {
 public:
  ProgressDisplay(bool enabled, int sampleRate);
  void update(std::int64_t done, std::int64_t total);
  // Clears the terminal line; call once the render is over.
  void finish();

 private:
  using Clock = std::chrono::steady_clock;

  bool enabled_;
  bool terminal_;
  int sampleRate_;
  bool lineShown_ = false;
  Clock::time_point started_;
  Clock::time_point lastShown_;
};

}  // namespace vrnhost
