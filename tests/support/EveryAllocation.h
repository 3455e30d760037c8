#pragma once

#include <gtest/gtest.h>

#include <complex>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "emulation/TestControl.h"
#include "support/FailingAllocation.h"
#include "support/Threads.h"

// Makes every allocation of the host's memory fail that some work makes, one after the other.

namespace support {

/// What a piece of work left behind.
struct AllocationEnding {
  std::vector<std::complex<double>> values;
  std::string error;
  bool operator==(const AllocationEnding& other) const {
    return values == other.values && error == other.error;
  }
};

struct AllocatingWork {
  /// With the nth allocation failing, and with `lasting` all after it; 0 for none.
  std::function<AllocationEnding(std::size_t nth, bool lasting)> run;

  /// Forgets all that a run has left, and makes the device such that it can succeed.
  std::function<void()> startAfresh;

  /// What a good run needs after one that failed, if it follows without a fresh start.
  std::function<void()> goOn;

  /// Whether an error is what the lack of the host's memory is reported as.
  std::function<bool(const std::string&)> isOutOfMemory;
};

struct AllocationCount {
  std::size_t failed = 0;    // one after the other, until all succeeded
  std::size_t survived = 0;  // of which the system went on without the one that failed
};

/// Runs work again and again, each time with a later allocation failing, and expects an error that
/// tells of it, or a good run's ending; no memory left, and no thread; and a good run's ending from
/// the next one.
inline AllocationCount failEachAllocation(pistonfield::emulation::TestControl& device,
                                          const AllocatingWork& work, bool lasting) {
  work.startAfresh();
  work.run(0, false);  // what is only made once
  work.startAfresh();
  const AllocationEnding good = work.run(0, false);
  work.startAfresh();
  AllocationCount count;
  for (;; ++count.failed) {
    const std::ptrdiff_t threads = threadsOfThisProcess();
    const std::ptrdiff_t blocks = liveBlocks();
    {
      const AllocationEnding ending = work.run(count.failed + 1, lasting);
      if (!anAllocationFailed()) {
        EXPECT_TRUE(ending == good) << ending.error;
        return count;
      }
      const std::string& error = ending.error;
      if (ending == good) {
        ++count.survived;
      } else if (itReturnedNull() && !lasting) {
        EXPECT_NE(error.find("Cuda error when calling cudaMalloc("), std::string::npos) << error;
        EXPECT_NE(error.find("): out of memory"), std::string::npos) << error;
      } else {
        EXPECT_TRUE(work.isOutOfMemory(error)) << error;
      }
    }
    EXPECT_EQ(device.liveAllocations(), 0u);
    EXPECT_TRUE(hasThreads(threads));
    work.goOn();
    EXPECT_TRUE(work.run(0, false) == good);
    work.startAfresh();
    EXPECT_EQ(liveBlocks(), blocks);
    if (::testing::Test::HasFailure()) {
      ADD_FAILURE() << "at allocation " << count.failed + 1;
      return count;
    }
  }
}

}  // namespace support
