// What one scenario of the torture host saw: the calls it made into the plug-in, the loudest
// sample, the heap allocations made inside process calls and the findings (anything a host must
// never see: a crash aside, non-finite or runaway output, a forbidden callback, a write past the
// block, an allocation on the audio path).
//
// Threads: every operation may be called from any thread at once.
#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

namespace torture {

class Scoreboard {
 public:
  // The first findings are kept word for word; the rest are only counted.
  static constexpr int kKeptFindings = 8;

  void countCalls(long long calls) { calls_.fetch_add(calls, std::memory_order_relaxed); }
  void countAllocations(long long allocations) {
    allocations_.fetch_add(allocations, std::memory_order_relaxed);
  }
  void notePeak(float peak);
  void addFinding(const std::string& message);

  long long calls() const { return calls_.load(std::memory_order_relaxed); }
  long long allocations() const { return allocations_.load(std::memory_order_relaxed); }
  float peak() const { return peak_.load(std::memory_order_relaxed); }
  int findingCount() const;
  std::vector<std::string> keptFindings() const;

 private:
  std::atomic<long long> calls_{0};
  std::atomic<long long> allocations_{0};
  std::atomic<float> peak_{0.0f};
  mutable std::mutex findingsLock_;
  int findingCount_ = 0;
  std::vector<std::string> findings_;
};

}  // namespace torture
