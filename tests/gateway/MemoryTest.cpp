#include <algorithm>
#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "gateway/EmulatedGatewayTest.h"
#include "gateway/Messages.h"
#include "support/OneCore.h"
#include "support/ProcessMemory.h"

// Calls with more points than memory allows.

namespace {

constexpr const char* notEnough = "There is not enough memory for this many points.";
constexpr const char* noResult = "mxCreateNumericArray: out of memory";  // the host's own message

class MemoryTest : public EmulatedGatewayTest {
 protected:
  /// Whether a call has allocated device memory since recording began.
  bool deviceWasAsked() const {
    const std::vector<pistonfield::emulation::Call> calls = device.calls();
    return std::any_of(calls.begin(), calls.end(), [](const pistonfield::emulation::Call& call) {
      return std::string(call.function) == "cudaMalloc";
    });
  }

  /// Arguments with an array of points that claims a large size but holds only the first point.
  static Arguments claiming(std::size_t points) {
    Arguments arguments;
    arguments.points.dims = {3, points};
    return arguments;
  }
};

TEST_F(MemoryTest, MorePointsThanAnIntCountsNeverReachTheDevice) {
  const auto expected = pressures({});
  for (const std::size_t points : {std::size_t{1} << 31, (std::size_t{1} << 32) + 1,
                                   (std::size_t{1} << 33) - 1, std::size_t{1} << 60}) {
    device.recordCalls();
    const host::Outcome outcome = call(claiming(points));
    EXPECT_EQ(outcome.error, messages::tooManyPoints);
    EXPECT_TRUE(outcome.results.empty());
    EXPECT_FALSE(deviceWasAsked());
    EXPECT_EQ(pressures({}), expected);
  }
}

TEST_F(MemoryTest, AsManyPointsAsAnIntCountsWithoutMemoryForThemNeverReachTheDevice) {
  if (!support::memoryIsOnlyOurs) GTEST_SKIP() << "memory is the sanitizer's";
  const auto expected = pressures({});
  const std::vector<mxArray> arguments = claiming(2147483647).first(5);
  device.recordCalls();
  host::Outcome outcome;
  {
    const support::AddressSpaceLimit limit(1000000000);  // the real parts alone take 17 GB
    outcome = module.call(1, arguments);
  }
  EXPECT_EQ(outcome.error, noResult);
  EXPECT_FALSE(deviceWasAsked());
  EXPECT_EQ(pressures({}), expected);
}

TEST_F(MemoryTest, WhereverMemoryEndsIsAnErrorAndTheNextCallIsRight) {
  if (!support::memoryIsOnlyOurs) GTEST_SKIP() << "memory is the sanitizer's";
  const auto expected = pressures({});
  Arguments many;
  // So many points that the allocator returns the memory of their arrays to the system.
  const std::size_t count = 5000000;
  many.points = host::matrix(3, count, std::vector<double>(3 * count, 1));
  const std::vector<mxArray> arguments = many.first(5);
  const std::string onTheDevice[] = {
      "(Cuda error when calling cudaMalloc((void**)&d_arrayr, datasize*2): out of memory).",
      "(Cuda error when calling cudaMalloc((void**)&d_pos, nbPositions*3*sizeof(float)): out of "
      "memory)."};
  std::set<std::string> seen;
  // Each thread takes address space, for which the allocator reserves more at a moment of its own.
  const support::OneCore alone;
  ASSERT_EQ(module.call(1, arguments).error, std::nullopt);
  const std::size_t resident = support::residentMemory();

  // In megabytes, the result takes 80, the points in single precision 60 and their pressures 40,
  // and on the device the points take 60 and the pressures 40. The limit grows in steps of half the
  // smallest, so that each of these allocations fails at some step.
  for (std::size_t megabytes = 20; megabytes < 300; megabytes += 20) {
    device.recordCalls();
    host::Outcome outcome;
    {
      const support::AddressSpaceLimit limit(megabytes * 1000000);
      outcome = module.call(1, arguments);
    }
    if (!outcome.error) break;  // memory that earlier tests have freed was sufficient
    std::string error = *outcome.error;
    for (const std::string& text : onTheDevice)
      if (error.find(text) != std::string::npos) error = text;
    if (error == noResult) error = notEnough;
    seen.insert(error);
    EXPECT_EQ(deviceWasAsked(), error != notEnough) << megabytes;
    EXPECT_EQ(device.liveAllocations(), 0u) << megabytes;
    EXPECT_EQ(pressures({}), expected) << megabytes;
  }
  EXPECT_EQ(seen, (std::set<std::string>{notEnough, onTheDevice[0], onTheDevice[1]}));
  // This is less than one leaked array per call would take, and more than the allocator keeps in
  // its heap.
  EXPECT_LE(support::residentMemory(), resident + 100000000);
  const support::AddressSpaceLimit enough(700000000);
  EXPECT_EQ(module.call(1, arguments).error, std::nullopt);
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
