#include <algorithm>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "FastNearfield/Ways.h"
#include "parallel/Cores.h"
#include "support/FailingAllocation.h"
#include "support/OneCore.h"
#include "support/Threads.h"

using launchers::Values;
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

constexpr const char* outOfMemory = "std::bad_alloc";
constexpr const char* interrupted = "interrupted";

class EveryAllocationTest : public launchers::Test, public testing::WithParamInterface<Way> {
 protected:
  struct Ending {
    Values values;
    std::string error;
  };

  /// Runs the work with the nth allocation failing.
  static Ending endingOf(std::size_t nth, bool lasting) {
    Ending ending;
    try {
      ending.error = support::failureOf([&] {
                       const FailingAllocation failing(nth, lasting, [] { return true; });
                       ending.values = GetParam().call();
                     }).condition;
    } catch (const std::bad_alloc&) {
      ending.error = outOfMemory;
    } catch (const ways::Interruption&) {
      ending.error = interrupted;
    }
    return ending;
  }

  static bool isOfDeviceMemory(const std::string& error) {
    const std::string start = "Cuda error when calling cudaMalloc(", end = ": out of memory";
    return error.find(start) == 0 && error.size() > end.size() &&
           error.compare(error.size() - end.size(), end.size(), end) == 0;
  }

  /// The number of allocations that failed, one per run, until all succeeded, and the number of
  /// runs that completed without the failed allocation.
  struct Count {
    std::size_t failed = 0, survived = 0;
  };

  Count failEach(bool lasting) {
    const Memory memory = GetParam().inHostMemory ? Memory::HOSTS : Memory::SEPARATE;
    startAfresh(memory);
    endingOf(0, false);  // allocates what is allocated only once
    const Ending good = endingOf(0, false);
    startAfresh(memory);
    Count count;
    for (;; ++count.failed) {
      const std::ptrdiff_t threads = support::threadsOfThisProcess();
      const std::ptrdiff_t blocks = support::liveBlocks();
      {
        const Ending ending = endingOf(count.failed + 1, lasting);
        if (!support::anAllocationFailed()) {
          EXPECT_TRUE(ending.values == good.values);
          EXPECT_EQ(ending.error, good.error);
          return count;
        }
        if (ending.error == good.error) {
          EXPECT_TRUE(ending.values == good.values);
          ++count.survived;
        } else if (support::itReturnedNull() && !lasting) {
          EXPECT_TRUE(isOfDeviceMemory(ending.error)) << ending.error;
        } else {
          EXPECT_EQ(ending.error, outOfMemory);
        }
      }
      EXPECT_EQ(device.liveAllocations(), 0u);
      EXPECT_TRUE(support::hasThreads(threads));
      pistonfield::CudaInterface::init();
      EXPECT_TRUE(endingOf(0, false).values == good.values);
      startAfresh(memory);
      EXPECT_EQ(support::liveBlocks(), blocks);
      if (HasFailure()) {
        ADD_FAILURE() << "at allocation " << count.failed + 1;
        return count;
      }
    }
  }
};

TEST_P(EveryAllocationTest, FailsAsAnErrorAndLeavesNothing) {
  const Count once = failEach(false);
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
