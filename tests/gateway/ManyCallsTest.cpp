#include <cuda_runtime.h>

#include <cstddef>
#include <vector>

#include "gateway/GatewayTest.h"
#include "support/ProcessMemory.h"

// A host that makes many calls, often with mistakes, must not use more memory at the end than at
// the beginning. EveryCallTest and EveryAllocationTest count what single calls leave.

namespace {

#if defined(CUDART_VERSION)

long takenOnTheDevice() {
  std::size_t free = 0, total = 0;
  EXPECT_EQ(cudaMemGetInfo(&free, &total), cudaSuccess);
  return static_cast<long>(total - free);
}

// The driver and other processes take and return memory as they like. What can be asked is that
// good calls do not, of which each would leave an array: 40 kB or more.
constexpr long mostLeft = 500 * 40'000 / 2;

#else

/// It is the host's.
long takenOnTheDevice() { return 0; }

constexpr long mostLeft = 4 << 20;

#endif

class ManyCallsTest : public GatewayTest {
 protected:
  ManyCallsTest() {
    std::vector<double> points;
    for (int n = 0; n < 5000; ++n) points.insert(points.end(), {n * 1e-6, n * 2e-6, 0.01});
    good.points = host::matrix(3, 5000, points);
    wrong = {good, good, good, good};
    wrong[0].points = host::text("abc");
    wrong[1].mode = host::text("gpu");
    wrong[2].nabscissas = host::scalar(513);
    wrong[3].nabscissas = host::matrix(513, 2, std::vector<double>(1026));
  }

  void makeCalls(std::size_t count) {
    for (std::size_t n = 0; n < count; n += 2) {
      EXPECT_EQ(pressures(good).size(), 5000u);
      EXPECT_NE(errorOf(wrong[n / 2 % wrong.size()]), "");
    }
  }

  Arguments good;
  std::vector<Arguments> wrong;
};

TEST_F(ManyCallsTest, AThousandLeaveTheMemoryAsItWas) {
#if defined(CUDART_VERSION)
  // Holds the device's context, which a call would otherwise take with it, and all that the call
  // had left in it. It stays: to end it under the module's own runtime would break that.
  EXPECT_EQ(cudaFree(nullptr), cudaSuccess);
#endif
  makeCalls(200);  // after which everything has been used once
  const long onTheDevice = takenOnTheDevice();
  const std::size_t resident = support::residentMemory();
  makeCalls(1000);
  EXPECT_LE(takenOnTheDevice() - onTheDevice, mostLeft);
  if (support::memoryIsOnlyOurs) {
    EXPECT_LE(static_cast<long>(support::residentMemory() - resident), mostLeft);
  }
}

}  // namespace
