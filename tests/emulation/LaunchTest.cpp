#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

#include "core/CudaCompatibility.h"
#include "parallel/Cores.h"
#include "support/DeviceTest.h"

using pistonfield::launch;

namespace {

constexpr unsigned threads = 5 * 3 * 2 * 32 * 8 * 4;  // more than a few ranges
std::atomic<unsigned> visits[threads];

void visit() {
  pistonfield::emulation::forRangesOfThreads([](std::uint64_t first, std::uint64_t last) {
    for (std::uint64_t thread = first; thread < last; ++thread) ++visits[thread];
  });
}

void doNothing() {}

using Ids = std::vector<std::thread::id>;

void sleepAndNote(Ids* ids, std::mutex* mutex, int milliseconds) {
  pistonfield::emulation::forRangesOfThreads([=](std::uint64_t /*first*/, std::uint64_t /*last*/) {
    {
      const std::lock_guard lock(*mutex);
      ids->push_back(std::this_thread::get_id());
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
  });
}

void throwFromThread(unsigned least) {
  pistonfield::emulation::forRangesOfThreads([=](std::uint64_t first, std::uint64_t /*last*/) {
    std::this_thread::sleep_for(std::chrono::microseconds(200));
    if (first >= least) throw std::range_error("kernel");
  });
}

class EmulatedLaunchTest : public support::EmulationTest {};

TEST_F(EmulatedLaunchTest, EveryThreadOfEveryBlockRunsOnce) {
  for (std::atomic<unsigned>& count : visits) count = 0;
  EXPECT_EQ(launch(visit, dim3(5, 3, 2), dim3(32, 8, 4)), cudaSuccess);
  for (const std::atomic<unsigned>& count : visits) EXPECT_EQ(count, 1u);
}

TEST_F(EmulatedLaunchTest, LongWorkIsSpreadOverAllCores) {
  Ids ids;
  std::mutex mutex;
  EXPECT_EQ(launch(sleepAndNote, dim3(64), dim3(1024), &ids, &mutex, 1), cudaSuccess);
  EXPECT_GT(ids.size(), 4u);
  const std::set<std::thread::id> distinct(ids.begin(), ids.end());
  EXPECT_LE(distinct.size(), pistonfield::parallel::cores());
  if (pistonfield::parallel::cores() > 1) {
    EXPECT_GT(distinct.size(), 1u);
  }
}

TEST_F(EmulatedLaunchTest, ShortWorkStaysOnTheCallingThread) {
  Ids ids;
  std::mutex mutex;
  EXPECT_EQ(launch(sleepAndNote, dim3(64), dim3(1024), &ids, &mutex, 0), cudaSuccess);
  EXPECT_GT(ids.size(), 4u);
  for (const std::thread::id id : ids) EXPECT_EQ(id, std::this_thread::get_id());
}

TEST_F(EmulatedLaunchTest, AnExceptionOfAnyThreadReachesTheCaller) {
  for (int n = 0; n < 20; ++n)  // with the first number, of all cores at once
    for (const unsigned thread : {1u, 5000u, 20000u, 61440u})
      EXPECT_THROW(launch(throwFromThread, dim3(64), dim3(1024), thread), std::range_error);
  EXPECT_EQ(launch(doNothing, dim3(1), dim3(1)), cudaSuccess);
}

TEST_F(EmulatedLaunchTest, RefusesShapesThatNoDeviceLaunches) {
  const auto refused = [](dim3 grid, dim3 block) {
    const cudaError_t error = launch(doNothing, grid, block);
    return error == cudaErrorInvalidConfiguration &&
           cudaGetLastError() == cudaErrorInvalidConfiguration;
  };
  for (const dim3 grid :
       {dim3(0), dim3(1, 0), dim3(1, 1, 0), dim3(2147483648u), dim3(1, 65536), dim3(1, 1, 65536)})
    EXPECT_TRUE(refused(grid, dim3(1))) << grid.x << " " << grid.y << " " << grid.z;
  EXPECT_TRUE(refused(dim3(1u << 30, 1u << 15, 1u << 15), dim3(16)));  // 2^64 threads
  for (const dim3 block : {dim3(0), dim3(1025), dim3(1, 1, 65), dim3(32, 33)})
    EXPECT_TRUE(refused(dim3(1), block)) << block.x << " " << block.y << " " << block.z;
  EXPECT_FALSE(refused(dim3(1), dim3(32, 32)));
}

}  // namespace
