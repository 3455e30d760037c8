#pragma once

#include <thread>

namespace emulation {

/// The CPU cores that this process may use, at least 1.
inline unsigned cores() {
  const unsigned count = std::thread::hardware_concurrency();
  return count > 0 ? count : 1;
}

}  // namespace emulation
