#include <cstddef>
#include <optional>
#include <vector>

#include "gateway/EmulatedGatewayTest.h"
#include "support/OneCore.h"
#include "support/ProcessMemory.h"

// Calls with more points than memory allows.

namespace {

using MemoryTest = EmulatedGatewayTest;

TEST_F(MemoryTest, AsManyPointsAsAnIntCountsWithoutMemoryForThemNeverReachTheDevice) {
  if (!support::memoryIsOnlyOurs) GTEST_SKIP() << "memory is the sanitizer's";
  const auto expected = pressures({});
  Arguments claiming;  // it has the first point only
  claiming.points.dims[1] = 2147483647;
  const std::vector<mxArray> arguments = claiming.first(5);
  device.recordCalls();
  host::Outcome outcome;
  {
    const support::AddressSpaceLimit limit(1000000000);  // the real parts alone take 17 GB
    outcome = module.call(1, arguments);
  }
  EXPECT_EQ(outcome.error, "mxCreateNumericArray: out of memory");  // the host's own message
  for (const pistonfield::emulation::Call& call : device.calls())
    EXPECT_STRNE(call.function, "cudaMalloc");
  EXPECT_EQ(pressures({}), expected);
}

TEST_F(MemoryTest, WhereTheDeviceWorksInTheHostsMemoryACallTakesItsResultAlone) {
  if (!support::memoryIsOnlyOurs) GTEST_SKIP() << "memory is the sanitizer's";
  startAfresh(Memory::HOSTS);
  Arguments many;
  const std::size_t count = 5000000;
  many.points = host::matrix(3, count, std::vector<double>(3 * count, 1));
  const std::vector<mxArray> arguments = many.first(5);
  const support::OneCore alone;                      // each thread takes address space
  const support::AddressSpaceLimit limit(90000000);  // the result takes 80 MB of it
  EXPECT_EQ(module.call(1, arguments).error, std::nullopt);
}

}  // namespace
