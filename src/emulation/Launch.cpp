#include <cstdint>

#include "emulation/Call.h"
#include "parallel/Spread.h"

namespace pistonfield::emulation {
namespace {

bool fits(dim3 grid, dim3 block) {
  const auto within = [](dim3 size, unsigned x, unsigned y, unsigned z) {
    return 0 < size.x && size.x <= x && 0 < size.y && size.y <= y && 0 < size.z && size.z <= z;
  };
  constexpr std::uint64_t mostBlocks = std::uint64_t{1} << 53;  // the threads fit 64 bits
  return within(grid, 2147483647, 65535, 65535) && within(block, 1024, 1024, 64) &&
         std::uint64_t{block.x} * block.y * block.z <= 1024 &&
         std::uint64_t{grid.x} * grid.y * grid.z <= mostBlocks;
}

/// The fewest threads that a core takes at once: enough to outweigh the cost of distributing them,
/// few enough to keep all cores busy to the end.
constexpr std::uint64_t rangeLength = 2048;

/// The number of threads of the current launch. There is one launch at a time.
std::uint64_t threadCount = 0;

}  // namespace

void forRangesOfThreads(const ThreadWork& work) {
  parallel::spread(threadCount, rangeLength, work);
}

cudaError_t runKernel(dim3 grid, dim3 block, std::size_t sharedMemory,
                      const std::function<void()>& kernel) {
  return performOnDevice({"cudaLaunchKernel", sharedMemory, grid, block}, [&](State&) {
    if (!kernel) return cudaErrorInvalidDeviceFunction;
    if (!fits(grid, block)) return cudaErrorInvalidConfiguration;
    if (sharedMemory > 49152) return cudaErrorInvalidValue;
    threadCount = std::uint64_t{grid.x} * grid.y * grid.z * block.x * block.y * block.z;
    kernel();
    return cudaSuccess;
  });
}

}  // namespace pistonfield::emulation
