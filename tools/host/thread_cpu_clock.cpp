// Windows counts thread time in 100 ns units (updated at scheduler ticks, so short calls are
// measured in whole ticks and only totals over many blocks are meaningful); Linux has a
// nanosecond per-thread clock.
#include "tools/host/thread_cpu_clock.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <time.h>
#endif

namespace vrnhost {

double threadCpuSeconds() {
#if defined(_WIN32)
  FILETIME creation, exit, kernel, user;
  if (!GetThreadTimes(GetCurrentThread(), &creation, &exit, &kernel, &user)) return 0.0;
  auto ticks = [](const FILETIME& time) {
    return (static_cast<unsigned long long>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
  };
  return static_cast<double>(ticks(kernel) + ticks(user)) * 1e-7;
#else
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
#endif
}

}  // namespace vrnhost
