// Counts the heap allocations (operator new) that the calling thread makes while it has counting
// switched on. The torture host replaces the global operator new; the plug-in module sees that
// replacement where it shares the host's C++ runtime (Linux, where the host exports its symbols),
// not where it links its own runtime in (the Windows .dll).
//
// Threads: each thread counts its own allocations.
#pragma once

namespace torture {

// True when allocations made inside the plug-in module reach this counter.
bool allocationsOfPluginCounted();

// Counts this thread's allocations from construction to destruction.
class AllocationScope {
 public:
  AllocationScope();
  ~AllocationScope();
  AllocationScope(const AllocationScope&) = delete;
  AllocationScope& operator=(const AllocationScope&) = delete;
  long long count() const;
};

// Stops counting on this thread for its lifetime: the host's own work inside a callback is not
// the plug-in's.
class AllocationPause {
 public:
  AllocationPause();
  ~AllocationPause();
  AllocationPause(const AllocationPause&) = delete;
  AllocationPause& operator=(const AllocationPause&) = delete;

 private:
  bool wasCounting_;
};

}  // namespace torture
