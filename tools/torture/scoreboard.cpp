#include "tools/torture/scoreboard.h"

namespace torture {

void Scoreboard::notePeak(float peak) {
  float seen = peak_.load(std::memory_order_relaxed);
  while (peak > seen && !peak_.compare_exchange_weak(seen, peak, std::memory_order_relaxed)) {
  }
}

void Scoreboard::addFinding(const std::string& message) {
  std::lock_guard<std::mutex> lock(findingsLock_);
  ++findingCount_;
  if (static_cast<int>(findings_.size()) < kKeptFindings) findings_.push_back(message);
}

int Scoreboard::findingCount() const {
  std::lock_guard<std::mutex> lock(findingsLock_);
  return findingCount_;
}

std::vector<std::string> Scoreboard::keptFindings() const {
  std::lock_guard<std::mutex> lock(findingsLock_);
  return findings_;
}

}  // namespace torture
