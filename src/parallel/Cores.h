#pragma once

#if defined(__linux__)
#include <sched.h>
#endif

#include <thread>

namespace pistonfield::parallel {

/// The number of CPU cores that this process may use, at least 1. A batch system or taskset may
/// allow fewer than the machine has.
inline unsigned cores() {
#if defined(__linux__)
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof allowed, &allowed) == 0)
    return static_cast<unsigned>(CPU_COUNT(&allowed));
#endif
  const unsigned count = std::thread::hardware_concurrency();
  return count > 0 ? count : 1;
}

}  // namespace pistonfield::parallel
