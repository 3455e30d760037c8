#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <thread>
#include <vector>

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

/// Calls work(n) on thread n of `count`, all at once.
template <class Work>
void onThreads(std::size_t count, Work work) {
  std::vector<std::thread> threads;
  for (std::size_t n = 0; n < count; ++n) threads.emplace_back([&work, n] { work(n); });
  for (std::thread& thread : threads) thread.join();
}

}  // namespace support
