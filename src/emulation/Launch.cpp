#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <exception>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

#include "emulation/Call.h"
#include "emulation/Cores.h"

namespace emulation {
namespace {

/// Launches that end within this time never start a thread, which costs about as much.
constexpr std::chrono::microseconds aloneTime{100};

bool fits(dim3 grid, dim3 block) {
  const auto within = [](dim3 size, unsigned x, unsigned y, unsigned z) {
    return 0 < size.x && size.x <= x && 0 < size.y && size.y <= y && 0 < size.z && size.z <= z;
  };
  return within(grid, 2147483647, 65535, 65535) && within(block, 1024, 1024, 64) &&
         std::uint64_t{block.x} * block.y * block.z <= 1024;
}

/// How many threads a kernel's call stands for: enough to fill lanes and to be worth handing out,
/// few enough to share a launch out evenly.
constexpr std::uint64_t runLength = 2048;

/// Hands the threads of one launch out, run by run, to whoever asks, until none is left or one has
/// thrown.
class Runs {
 public:
  Runs(dim3 grid, dim3 block, const std::function<void()>& kernel)
      : threads_(std::uint64_t{grid.x} * grid.y * grid.z * block.x * block.y * block.z),
        kernel_(kernel) {}

  /// How many runs nobody has taken yet.
  std::uint64_t left() const {
    const std::uint64_t next = next_;
    return next < threads_ ? (threads_ - next - 1) / runLength + 1 : 0;
  }

  void runAll() {
    while (runOne()) {
    }
  }

  void runFor(std::chrono::microseconds duration) {
    const auto end = std::chrono::steady_clock::now() + duration;
    while (runOne() && std::chrono::steady_clock::now() < end) {
    }
  }

  /// The first exception that a kernel threw, in the caller's hands.
  void rethrow() const {
    if (failure_) std::rethrow_exception(failure_);
  }

 private:
  bool runOne() {
    const std::uint64_t first = next_.fetch_add(runLength);
    if (first >= threads_) return false;
    threadRun = {first, std::min(first + runLength, threads_)};
    try {
      kernel_();
    } catch (...) {
      next_ = threads_;
      const std::lock_guard lock(failureMutex_);
      if (!failure_) failure_ = std::current_exception();
    }
    return true;
  }

  const std::uint64_t threads_;
  const std::function<void()>& kernel_;
  std::atomic<std::uint64_t> next_{0};
  std::mutex failureMutex_;
  std::exception_ptr failure_;
};

void run(Runs& runs) {
  runs.runFor(aloneTime);

  const std::uint64_t wanted = std::min<std::uint64_t>(cores() - 1, runs.left());
  std::vector<std::thread> helpers;
  helpers.reserve(wanted);
  try {
    while (helpers.size() < wanted) helpers.emplace_back([&] { runs.runAll(); });
  } catch (const std::system_error&) {
    // The machine gives no more threads: those that run suffice.
  } catch (const std::bad_alloc&) {
  }
  runs.runAll();
  for (std::thread& helper : helpers) helper.join();
}

}  // namespace

cudaError_t launch(dim3 grid, dim3 block, std::size_t sharedMemory,
                   const std::function<void()>& kernel) {
  return performOnDevice({"cudaLaunchKernel", sharedMemory, grid, block}, [&](State&) {
    if (!kernel) return cudaErrorInvalidDeviceFunction;
    if (!fits(grid, block)) return cudaErrorInvalidConfiguration;
    if (sharedMemory > 49152) return cudaErrorInvalidValue;
    Runs runs(grid, block, kernel);
    run(runs);
    runs.rethrow();
    return cudaSuccess;
  });
}

}  // namespace emulation
