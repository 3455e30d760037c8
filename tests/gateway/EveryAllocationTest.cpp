#include <optional>
#include <string>
#include <vector>

#include "gateway/EmulatedGatewayTest.h"
#include "parallel/Cores.h"
#include "support/FailingAllocation.h"
#include "support/OneCore.h"
#include "support/Threads.h"

using support::FailingAllocation;

// Makes every allocation of memory in a call of the module fail, including those of the host for
// the results.

namespace {

const std::string tooManyPoints = "There is not enough memory for this many points.";
const std::string noResult = "mxCreateNumericArray: out of memory";  // the host's own message
const std::string noText = "mxArrayToString: out of memory";         // the host's own message

class GatewayEveryAllocationTest : public InEitherMemory {
 protected:
  GatewayEveryAllocationTest() { arguments.points = pointsForThreads(); }

  host::Outcome failing(std::size_t nth, bool lasting) {
    const FailingAllocation allocation(nth, lasting, host::insideModule);
    return module.call(1, inputs);
  }

  static bool isOfDeviceMemory(const std::string& error) {
    return error.find("ERROR: assertion failure in ") == 0 &&
           error.find("condition failed: (Cuda error when calling cudaMalloc(") !=
               std::string::npos &&
           error.find("): out of memory).\n\n") != std::string::npos;
  }

  static void expectSame(const host::Outcome& outcome, const host::Outcome& good) {
    EXPECT_EQ(outcome.error.value_or(""), good.error.value_or(""));
    ASSERT_EQ(outcome.results.size(), good.results.size());
    for (std::size_t i = 0; i < good.results.size(); ++i) {
      EXPECT_TRUE(outcome.results[i].re == good.results[i].re);
      EXPECT_TRUE(outcome.results[i].im == good.results[i].im);
    }
  }

  /// The number of allocations that failed, one per call, until all succeeded, and the number of
  /// calls that completed without the failed allocation.
  struct Count {
    std::size_t failed = 0, survived = 0;
  };

  /// `breakDevice` sets up the device's faults before every call.
  Count failEach(bool lasting, void (*breakDevice)(pistonfield::emulation::TestControl&)) {
    breakDevice(device);
    failing(0, false);  // allocates what is allocated only once
    startAfresh(GetParam());
    breakDevice(device);
    const host::Outcome good = failing(0, false);
    startAfresh(GetParam());
    Count count;
    for (;; ++count.failed) {
      const std::ptrdiff_t threads = support::threadsOfThisProcess();
      const std::ptrdiff_t blocks = support::liveBlocks();
      {
        breakDevice(device);
        const host::Outcome outcome = failing(count.failed + 1, lasting);
        const std::string error = outcome.error.value_or("");
        EXPECT_LE(outcome.errorsRaised, 1);
        if (!support::anAllocationFailed()) {
          expectSame(outcome, good);
          return count;
        }
        if (outcome.error == good.error) {
          expectSame(outcome, good);
          ++count.survived;
        } else if (support::itReturnedNull() && !lasting) {
          EXPECT_TRUE(isOfDeviceMemory(error)) << error;
        } else {
          EXPECT_TRUE(error == tooManyPoints || error == noResult || error == noText) << error;
        }
      }
      EXPECT_EQ(device.liveAllocations(), 0u);
      EXPECT_TRUE(support::hasThreads(threads));
      startAfresh(GetParam());
      breakDevice(device);
      expectSame(failing(0, false), good);
      startAfresh(GetParam());
      EXPECT_EQ(support::liveBlocks(), blocks);
      if (HasFailure()) {
        ADD_FAILURE() << "at allocation " << count.failed + 1;
        return count;
      }
    }
  }

  static void leaveAlone(pistonfield::emulation::TestControl&) {}

  Arguments arguments;
  std::vector<mxArray> inputs;
};

TEST_P(GatewayEveryAllocationTest, FailsAsOneErrorUnlessAThreadCanBeDoneWithout) {
  arguments.nabscissas = host::scalar(50);  // enough work for the device to start threads
  inputs = arguments.first(7);
  const Count once = failEach(false, leaveAlone);
  EXPECT_GT(once.failed, 10u);
  EXPECT_TRUE(once.survived > 0 || pistonfield::parallel::cores() == 1) << "no thread was wanted";
}

TEST_P(GatewayEveryAllocationTest, FailsAsOneErrorInACallWithAnOrder) {
  inputs = arguments.first(7);
  EXPECT_GT(failEach(true, leaveAlone).failed, 10u);
  const support::OneCore alone;
  const Count once = failEach(false, leaveAlone);
  EXPECT_GT(once.failed, 10u);
  EXPECT_EQ(once.survived, 0u);
}

TEST_P(GatewayEveryAllocationTest, FailsAsOneErrorInACallWithATable) {
  arguments.nabscissas = host::matrix(4, 2, {0.861136, 0.347855, 0.339981, 0.652145, 0, 0, 0, 0});
  inputs = arguments.first(7);
  for (const bool lasting : {false, true}) EXPECT_GT(failEach(lasting, leaveAlone).failed, 10u);
}

TEST_P(GatewayEveryAllocationTest, FailsAsOneErrorWhileAnotherIsReported) {
  arguments.l = host::text("");  // not a number
  inputs = arguments.first(7);
  for (const bool lasting : {false, true}) EXPECT_GT(failEach(lasting, leaveAlone).failed, 0u);
}

TEST_P(GatewayEveryAllocationTest, LeavesNoPieceOfAReport) {
  inputs = arguments.first(7);
  const auto failCopy = [](pistonfield::emulation::TestControl& control) {
    control.failCall("cudaMemcpyToSymbol", 2, cudaErrorUnknown, false);
  };
  const auto failRelease = [](pistonfield::emulation::TestControl& control) {
    control.failCall("cudaDeviceReset", 1, cudaErrorUnknown, false);
  };
  for (const bool lasting : {false, true}) {
    EXPECT_GT(failEach(lasting, failCopy).failed, 0u);
    EXPECT_GT(failEach(lasting, failRelease).failed, 0u);
  }
}

INSTANTIATE_IN_EITHER_MEMORY(GatewayEveryAllocationTest);

}  // namespace
