#include <string>
#include <vector>

#include "gateway/EmulatedGatewayTest.h"
#include "parallel/Cores.h"
#include "support/EveryAllocation.h"
#include "support/OneCore.h"

using support::AllocationCount;
using support::AllocationEnding;
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

  AllocationEnding endingOf(std::size_t nth, bool lasting) {
    const FailingAllocation allocation(nth, lasting, host::insideModule);
    const host::Outcome outcome = module.call(1, inputs);
    EXPECT_LE(outcome.errorsRaised, 1);
    AllocationEnding ending{{}, outcome.error.value_or("")};
    for (const mxArray& result : outcome.results)
      for (std::size_t i = 0; i < result.re.size(); ++i)
        ending.values.emplace_back(result.re[i], result.im[i]);
    return ending;
  }

  /// Before every call `breakDevice` sees to its faults.
  AllocationCount failEach(bool lasting,
                           void (*breakDevice)(pistonfield::emulation::TestControl&)) {
    const auto afresh = [=] {
      startAfresh(GetParam());
      breakDevice(device);
    };
    return support::failEachAllocation(
        device,
        {[this](std::size_t nth, bool toTheEnd) { return endingOf(nth, toTheEnd); }, afresh, afresh,
         [](const std::string& error) {
           return error == tooManyPoints || error == noResult || error == noText;
         }},
        lasting);
  }

  static void leaveAlone(pistonfield::emulation::TestControl&) {}

  Arguments arguments;
  std::vector<mxArray> inputs;
};

TEST_P(GatewayEveryAllocationTest, FailsAsOneErrorUnlessAThreadCanBeDoneWithout) {
  arguments.nabscissas = host::scalar(50);  // enough work for the device to start threads
  inputs = arguments.first(7);
  const AllocationCount once = failEach(false, leaveAlone);
  EXPECT_GT(once.failed, 10u);
  EXPECT_TRUE(once.survived > 0 || pistonfield::parallel::cores() == 1) << "no thread was wanted";
}

TEST_P(GatewayEveryAllocationTest, FailsAsOneErrorInACallWithAnOrder) {
  inputs = arguments.first(7);
  EXPECT_GT(failEach(true, leaveAlone).failed, 10u);
  const support::OneCore alone;
  const AllocationCount once = failEach(false, leaveAlone);
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
