#pragma once

#include <chrono>
#include <filesystem>
#include <iterator>
#include <thread>

namespace support {

inline std::ptrdiff_t threadsOfThisProcess() {
  using Entries = std::filesystem::directory_iterator;
  return std::distance(Entries("/proc/self/task"), Entries());
}

/// Whether this process has at most `count` threads, or soon will: the system may briefly list a
/// thread that has been joined.
inline bool hasThreads(std::ptrdiff_t count) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  while (threadsOfThisProcess() > count) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::yield();
  }
  return true;
}

}  // namespace support
