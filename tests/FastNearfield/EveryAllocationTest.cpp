#include <new>
#include <string>
#include <vector>

#include "FastNearfield/Ways.h"
#include "parallel/Cores.h"
#include "support/EveryAllocation.h"
#include "support/OneCore.h"

using launchers::Values;
using support::AllocationCount;
using support::AllocationEnding;
using support::FailingAllocation;
using ways::Way;

// Makes every allocation of host memory fail, one at a time, in all uses of the C++ interface. This
// includes the tests' own arrays, whose failures look the same to a caller.

namespace {

Values evaluatedOnCPU() {
  pistonfield::RectangularPistonCuda2 piston(2, 4, 5);
  piston.useGPU = false;
  std::vector<float> numbers(std::size_t{2} * ways::grid.nbPositions());
  piston.compute(numbers.data(), ways::grid);
  return ways::paired(numbers);
}

Values resorted() {
  std::vector<float> numbers{1, 2, 3, -1, -2, -3};
  resort(numbers.data(), 3);
  return ways::paired(numbers);
}

/// Enough work for the emulation device to start threads.
Values longWork() {
  setCudaIntegratorParameters("RectangularPiston", 50);
  const std::size_t count = 10000;
  std::vector<float> positions(3 * count, 1);
  std::vector<pistonfield::Complex> data(count);
  RectangularPiston_func_unstructured(data.data(), static_cast<int>(count), positions.data(), 2, 4,
                                      5);
  return launchers::widened(data);
}

std::vector<Way> allWays() {
  std::vector<Way> all = ways::all();
  all.push_back({"longWork", longWork, {}});
  all.push_back({"evaluatedOnCPU", evaluatedOnCPU, {}});
  all.push_back({"resorted", resorted, {}});
  return all;
}

class EveryAllocationTest : public launchers::Test, public testing::WithParamInterface<Way> {
 protected:
  static AllocationEnding endingOf(std::size_t nth, bool lasting) {
    AllocationEnding ending;
    try {
      ending.error = support::failureOf([&] {
                       const FailingAllocation failing(nth, lasting, [] { return true; });
                       ending.values = GetParam().call();
                     }).condition;
    } catch (const std::bad_alloc& error) {
      ending.error = error.what();
    }
    return ending;
  }

  AllocationCount failEach(bool lasting) {
    const auto afresh = [this] {
      startAfresh(GetParam().inHostMemory ? Memory::HOSTS : Memory::SEPARATE);
    };
    return support::failEachAllocation(
        device,
        {endingOf, afresh, [] { pistonfield::CudaInterface::init(); },
         [](const std::string& error) { return error == "std::bad_alloc"; }},
        lasting);
  }
};

TEST_P(EveryAllocationTest, FailsAsAnErrorAndLeavesNothing) {
  const AllocationCount once = failEach(false);
  EXPECT_GT(once.failed, 0u);
  const bool wantsThreads = GetParam().call == longWork && pistonfield::parallel::cores() > 1;
  EXPECT_TRUE(once.survived > 0 || !wantsThreads) << "no thread was wanted";
  EXPECT_GT(failEach(true).failed, 0u);
}

TEST_P(EveryAllocationTest, IsMissedUnlessItIsForAThread) {
  const support::OneCore alone;
  EXPECT_EQ(failEach(false).survived, 0u);
}

INSTANTIATE_TEST_SUITE_P(All, EveryAllocationTest, testing::ValuesIn(allWays()),
                         [](const auto& way) { return way.param.name; });

}  // namespace
