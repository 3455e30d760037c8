#pragma once

#if defined(__linux__)
#include <sched.h>
#endif

#include <thread>

namespace parallel {

/// The CPU cores that this process may use, at least 1. A batch system, or a user with taskset, may
/// leave it fewer than the machine has.
inline unsigned cores() {
#if defined(__linux__)
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof allowed, &allowed) == 0)
    return static_cast<unsigned>(CPU_COUNT(&allowed));
#endif
  const unsigned count = std::thread::hardware_concurrency();
  return count > 0 ? count : 1;
}

}  // namespace parallel
