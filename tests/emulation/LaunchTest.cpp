#include <atomic>
#include <chrono>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

#include "core/CudaToday.h"
#include "emulation/Cores.h"
#include "support/DeviceTest.h"

using pistonfield::launch;

namespace {

std::atomic<unsigned> visits[5 * 3 * 2 * 4 * 2 * 2];

void visit(std::atomic<unsigned>* total) {
  const unsigned thread = threadIdx.x + blockDim.x * (threadIdx.y + blockDim.y * threadIdx.z);
  const unsigned block = blockIdx.x + gridDim.x * (blockIdx.y + gridDim.y * blockIdx.z);
  const unsigned threads = blockDim.x * blockDim.y * blockDim.z;
  *total = threads * gridDim.x * gridDim.y * gridDim.z;
  ++visits[thread + threads * block];
}

void doNothing() {}

void sleepInBlock(std::thread::id* ids) {
  if (threadIdx.x == 0) ids[blockIdx.x] = std::this_thread::get_id();
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void spinInBlock(std::thread::id* ids) {
  ids[blockIdx.x] = std::this_thread::get_id();
  const auto end = std::chrono::steady_clock::now() + std::chrono::nanoseconds(500);
  while (std::chrono::steady_clock::now() < end) {
  }
}

void throwInBlock(unsigned which) {
  if (blockIdx.x == which) throw std::range_error("kernel");
  std::this_thread::sleep_for(std::chrono::microseconds(200));
}

class EmulatedLaunchTest : public support::EmulationTest {};

TEST_F(EmulatedLaunchTest, EveryThreadOfEveryBlockRunsOnce) {
  for (std::atomic<unsigned>& count : visits) count = 0;
  std::atomic<unsigned> total{0};
  EXPECT_EQ(launch(visit, dim3(5, 3, 2), dim3(4, 2, 2), &total), cudaSuccess);
  EXPECT_EQ(total, std::size(visits));
  for (const std::atomic<unsigned>& count : visits) EXPECT_EQ(count, 1u);
}

TEST_F(EmulatedLaunchTest, LongWorkIsSpreadOverAllCores) {
  std::vector<std::thread::id> ids(64);
  EXPECT_EQ(launch(sleepInBlock, dim3(64), dim3(1), ids.data()), cudaSuccess);
  const std::set<std::thread::id> distinct(ids.begin(), ids.end());
  EXPECT_LE(distinct.size(), emulation::cores());
  if (emulation::cores() > 1) {
    EXPECT_GT(distinct.size(), 1u);
  }
}

TEST_F(EmulatedLaunchTest, ShortWorkStaysOnTheCallingThread) {
  std::vector<std::thread::id> ids(64);
  EXPECT_EQ(launch(spinInBlock, dim3(64), dim3(1), ids.data()), cudaSuccess);
  for (const std::thread::id id : ids) EXPECT_EQ(id, std::this_thread::get_id());
}

TEST_F(EmulatedLaunchTest, AnExceptionOfAnyThreadReachesTheCaller) {
  for (const unsigned block : {0u, 1u, 20u, 63u})
    EXPECT_THROW(launch(throwInBlock, dim3(64), dim3(1), block), std::range_error) << block;
  EXPECT_EQ(launch(doNothing, dim3(1), dim3(1)), cudaSuccess);
}

TEST_F(EmulatedLaunchTest, RefusesShapesThatNoDeviceLaunches) {
  const auto refused = [](dim3 grid, dim3 block) {
    const cudaError_t error = launch(doNothing, grid, block);
    return error == cudaErrorInvalidConfiguration &&
           cudaGetLastError() == cudaErrorInvalidConfiguration;
  };
  EXPECT_TRUE(refused(dim3(0), dim3(1)));
  EXPECT_TRUE(refused(dim3(1, 0), dim3(1)));
  EXPECT_TRUE(refused(dim3(1, 1, 0), dim3(1)));
  EXPECT_TRUE(refused(dim3(1), dim3(0)));
  EXPECT_TRUE(refused(dim3(2147483648u), dim3(1)));
  EXPECT_TRUE(refused(dim3(1, 65536), dim3(1)));
  EXPECT_TRUE(refused(dim3(1, 1, 65536), dim3(1)));
  EXPECT_TRUE(refused(dim3(1), dim3(1025)));
  EXPECT_TRUE(refused(dim3(1), dim3(1, 1, 65)));
  EXPECT_TRUE(refused(dim3(1), dim3(32, 33)));
  EXPECT_FALSE(refused(dim3(1), dim3(32, 32)));
}

}  // namespace
