#include <cuda_runtime.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "gateway/GatewayTest.h"
#include "support/ProcessMemory.h"

#if !defined(CUDART_VERSION)
#include "emulation/TestControl.h"
#endif

// A host that makes many calls, often with mistakes, must not use more memory at the end than at
// the beginning.

namespace {

/// What a call of good arguments is changed by, and how the message begins that it then ends with.
struct Mistake {
  void (*make)(Arguments&);
  std::string error;
};

const std::string report = "ERROR: assertion failure in ";

const std::vector<Mistake> mistakes = {
    {[](Arguments& a) { a.points = host::text("abc"); }, "Input must be real"},
    {[](Arguments& a) { a.points = host::matrix(3, 0, {}); }, "The given grid must have"},
    {[](Arguments& a) { a.l = host::ofClass("cell", 1, 1); }, "l (argument 3)"},
    {[](Arguments& a) { a.mode = host::text("gpu"); }, "Input 5 must either be"},
    {[](Arguments& a) { a.nabscissas = host::scalar(513); }, report},
    {[](Arguments& a) { a.nabscissas = host::matrix(513, 2, std::vector<double>(1026)); }, report}};

#if defined(CUDART_VERSION)

long takenOnTheDevice() {
  std::size_t free = 0, total = 0;
  EXPECT_EQ(cudaMemGetInfo(&free, &total), cudaSuccess);
  return static_cast<long>(total - free);
}

/// There is no way to make a GPU fail.
const std::vector<const char*> faults;

// The driver and other processes take and return memory as they like. What can be asked is that
// good calls do not, of which each would leave an array: 40 kB or more.
constexpr long mostLeft = 500 * 40'000 / 2;

#else

/// It is the host's, and EveryCallTest counts it.
long takenOnTheDevice() { return 0; }

/// Functions of the runtime that fail.
const std::vector<const char*> faults = {"cudaMalloc", "cudaMemcpy", "cudaFree", "cudaDeviceReset"};

constexpr long mostLeft = 4 << 20;

#endif

class ManyCallsTest : public GatewayTest {
 protected:
  ManyCallsTest() {
    std::vector<double> points;
    for (int n = 0; n < 5000; ++n) points.insert(points.end(), {n * 1e-6, n * 2e-6, 0.01});
    good.points = host::matrix(3, 5000, points);
  }

  /// Good ones and mistakes in turns.
  void makeCalls(int count) {
    for (int n = 0; n < count; n += 2) {
      const host::Outcome outcome = call(good);
      ASSERT_EQ(outcome.error, std::nullopt);
      if (expected_.empty()) expected_ = outcome.results[0].re;
      EXPECT_EQ(outcome.results[0].re, expected_);
      makeMistake(static_cast<std::size_t>(n / 2) % (mistakes.size() + faults.size()));
    }
  }

  Arguments good;

 private:
  void makeMistake(std::size_t which) {
    Arguments wrong = good;
    std::string start = report;
    if (which < mistakes.size()) {
      mistakes[which].make(wrong);
      start = mistakes[which].error;
    }
#if !defined(CUDART_VERSION)
    auto& device =
        *reinterpret_cast<decltype(&emulationTestControl)>(module.symbol("emulationTestControl"))();
    device.separateMemory();
    if (which >= mistakes.size())
      device.failCall(faults[which - mistakes.size()], 1, cudaErrorUnknown, false);
#endif
    const std::string error = call(wrong).error.value_or("no error");
    EXPECT_EQ(error.find(start), 0u) << which << ": " << error;
#if !defined(CUDART_VERSION)
    device.restore();
#endif
  }

  std::vector<double> expected_;
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
