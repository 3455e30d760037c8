#include "parallel/Spread.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

#include "parallel/Cores.h"

namespace pistonfield::parallel {
namespace {

/// The calling thread works alone for this long, which is about what starting a thread costs.
constexpr std::chrono::microseconds aloneTime{100};

using Body = std::function<void(std::uint64_t, std::uint64_t)>;

/// Distributes ranges among threads until none is left or a body has thrown.
class Ranges {
 public:
  Ranges(std::uint64_t count, std::uint64_t length, const Body& body)
      : count_(count), length_(length), body_(body) {}

  /// The number of ranges left, at most.
  std::uint64_t left() const {
    const std::uint64_t next = next_;
    return next < count_ ? (count_ - next - 1) / length_ + 1 : 0;
  }

  /// The work of one of `threads` threads.
  void runAll(std::uint64_t threads) {
    while (runOne(threads, 8 * length_)) {
    }
  }

  void runFor(std::chrono::microseconds duration) {
    const auto end = std::chrono::steady_clock::now() + duration;
    while (runOne(1, length_) && std::chrono::steady_clock::now() < end) {
    }
  }

  /// Rethrows the first exception that a body threw.
  void rethrow() const {
    if (failure_) std::rethrow_exception(failure_);
  }

 private:
  /// With several threads, takes at most a quarter of a thread's share of the remaining work, so
  /// that all threads finish at about the same time.
  bool runOne(std::uint64_t threads, std::uint64_t longest) {
    std::uint64_t first = next_, last = 0;
    do {
      if (first >= count_) return false;
      const std::uint64_t left = count_ - first;
      const std::uint64_t share = threads > 1 ? left / threads / 4 : left;
      last = first + std::min(std::clamp(share / length_ * length_, length_, longest), left);
    } while (!next_.compare_exchange_weak(first, last));
    try {
      body_(first, last);
    } catch (...) {
      next_ = count_;
      const std::lock_guard lock(failureMutex_);
      if (!failure_) failure_ = std::current_exception();
    }
    return true;
  }

  const std::uint64_t count_, length_;
  const Body& body_;
  std::atomic<std::uint64_t> next_{0};
  std::mutex failureMutex_;
  std::exception_ptr failure_;
};

}  // namespace

void spread(std::uint64_t count, std::uint64_t length, const Body& body) {
  Ranges ranges(count, length, body);
  ranges.runFor(aloneTime);

  const std::uint64_t wanted = std::min<std::uint64_t>(cores() - 1, ranges.left());
  std::vector<std::thread> helpers;
  try {
    helpers.reserve(wanted);
    while (helpers.size() < wanted) helpers.emplace_back([&] { ranges.runAll(wanted + 1); });
  } catch (const std::system_error&) {
    // The system has no more threads; those that run do the work.
  } catch (const std::bad_alloc&) {
  }
  ranges.runAll(wanted + 1);
  for (std::thread& helper : helpers) helper.join();
  ranges.rethrow();
}

}  // namespace pistonfield::parallel
