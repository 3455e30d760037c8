#pragma once

#include <sched.h>

namespace support {

/// During its lifetime, this thread may use only one core, so that the emulation device starts no
/// threads.
class OneCore {
 public:
  OneCore() {
    sched_getaffinity(0, sizeof before_, &before_);
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(sched_getcpu(), &one);
    sched_setaffinity(0, sizeof one, &one);
  }
  OneCore(const OneCore&) = delete;
  OneCore& operator=(const OneCore&) = delete;
  ~OneCore() { sched_setaffinity(0, sizeof before_, &before_); }

 private:
  cpu_set_t before_{};
};

}  // namespace support
