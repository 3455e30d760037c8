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

/// Hands the blocks of one launch out to whoever asks, until none is left or one has thrown.
class Blocks {
 public:
  Blocks(dim3 grid, dim3 block, const std::function<void()>& runBlock)
      : grid_(grid),
        block_(block),
        count_(std::uint64_t{grid.x} * grid.y * grid.z),
        runBlock_(runBlock) {}

  bool empty() const { return next_ >= count_; }

  void runAll() {
    while (runOne()) {
    }
  }

  void runFor(std::chrono::microseconds duration) {
    const auto end = std::chrono::steady_clock::now() + duration;
    while (runOne() && std::chrono::steady_clock::now() < end) {
    }
  }

  /// The first exception that a block threw, in the caller's hands.
  void rethrow() const {
    if (failure_) std::rethrow_exception(failure_);
  }

 private:
  bool runOne() {
    const std::uint64_t index = next_++;
    if (index >= count_) return false;
    gridDim = grid_;
    blockDim = block_;
    blockIdx = {static_cast<unsigned>(index % grid_.x),
                static_cast<unsigned>(index / grid_.x % grid_.y),
                static_cast<unsigned>(index / grid_.x / grid_.y)};
    try {
      runBlock_();
    } catch (...) {
      next_ = count_;
      const std::lock_guard lock(failureMutex_);
      if (!failure_) failure_ = std::current_exception();
    }
    return true;
  }

  const dim3 grid_, block_;
  const std::uint64_t count_;
  const std::function<void()>& runBlock_;
  std::atomic<std::uint64_t> next_{0};
  std::mutex failureMutex_;
  std::exception_ptr failure_;
};

void run(Blocks& blocks) {
  blocks.runFor(aloneTime);
  if (blocks.empty()) return;

  const unsigned wanted = cores() - 1;
  std::vector<std::thread> helpers;
  helpers.reserve(wanted);
  try {
    while (helpers.size() < wanted) helpers.emplace_back([&] { blocks.runAll(); });
  } catch (const std::system_error&) {
    // The machine gives no more threads: those that run suffice.
  } catch (const std::bad_alloc&) {
  }
  blocks.runAll();
  for (std::thread& helper : helpers) helper.join();
}

}  // namespace

cudaError_t launch(dim3 grid, dim3 block, std::size_t sharedMemory,
                   const std::function<void()>& runBlock) {
  return performOnDevice({"cudaLaunchKernel", sharedMemory, grid, block}, [&](State&) {
    if (!runBlock) return cudaErrorInvalidDeviceFunction;
    if (!fits(grid, block)) return cudaErrorInvalidConfiguration;
    if (sharedMemory > 49152) return cudaErrorInvalidValue;
    Blocks blocks(grid, block, runBlock);
    run(blocks);
    blocks.rethrow();
    return cudaSuccess;
  });
}

}  // namespace emulation
