#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/RectangularPiston2.h"
#include "core/Progress.h"
#include "core/ThrowingErrorHandler.h"
#include "core/cudahelper.h"
#include "support/Threads.h"

using pistonfield::CudaDeviceThread;
using pistonfield::CudaStorage;
using pistonfield::ErrorHandler;
using pistonfield::Grid3DR;
using pistonfield::RectangularPistonCuda2;

// Programs may compute on several threads at once, and every thread gets the same values as if it
// ran alone.

namespace {

const Grid3DR<double> grid(17, 1, 19, {0.5, 0, 0, -4, 0, 1, 0, 0, 0, 0, 0.5, 0.25, 0, 0, 0, 1});
const std::size_t values = std::size_t{2} * grid.nbPositions();
constexpr std::size_t count = 8;  // of threads
constexpr int rounds = 8;

/// What one thread computes, with its own piston and order.
struct Job {
  explicit Job(int number) : order(9 + 2 * number), piston(7.5, 5 + 0.25 * number, 6.28) {}

  std::vector<float> single() const {
    std::vector<float> out(values);
    piston.compute(out.data(), grid);
    return out;
  }

  /// In both precisions; on the device also in a storage.
  std::vector<double> all() const {
    std::unique_ptr<CudaDeviceThread> device;
    std::vector<double> out(values);
    if (piston.useGPU) {
      device = std::make_unique<CudaDeviceThread>();
      setCudaIntegratorParameters("RectangularPiston", order);
      CudaStorage storage(CudaStorage::DT_FLOAT, values);
      piston.compute(&storage, grid);
      storage.toHost();
      out.insert(out.end(), storage.getFloatData(), storage.getFloatData() + values);
    }
    piston.compute(out.data(), grid);
    const std::vector<float> floats = single();
    out.insert(out.end(), floats.begin(), floats.end());
    return out;
  }

  int order;
  RectangularPistonCuda2 piston;
};

class LibraryThreadsTest : public testing::Test {
 protected:
  void SetUp() override {
    ErrorHandler::setErrorHandler(new pistonfield::ThrowingErrorHandler);
    pistonfield::showProgress(false);
    for (std::size_t n = 0; n < count; ++n) jobs[n] = std::make_unique<Job>(static_cast<int>(n));
  }
  void TearDown() override {
    pistonfield::showProgress(true);
    ErrorHandler::setErrorHandler(nullptr);
  }

  std::unique_ptr<Job> jobs[count];
};

TEST_F(LibraryThreadsTest, AllWithOnePistonOnTheCPU) {
  Job job(0);
  job.piston.useGPU = false;
  const std::vector<double> alone = job.all();
  support::onThreads(count, [&](std::size_t /*n*/) { EXPECT_EQ(job.all(), alone); });
}

TEST_F(LibraryThreadsTest, EachWithAPistonOfItsOwnOnTheDeviceOrOnTheCPU) {
  std::vector<double> alone[count];
  for (std::size_t n = 0; n < count; ++n) {
    jobs[n]->piston.useGPU = n % 2 == 0;
    alone[n] = jobs[n]->all();
  }
  support::onThreads(count, [&](std::size_t n) {
    for (int round = 0; round < rounds; ++round)
      EXPECT_TRUE(jobs[n]->all() == alone[n]) << "thread " << n;
  });
}

/// Outside any scope, the device holds the rule that was loaded last, by any thread.
TEST_F(LibraryThreadsTest, WithoutScopesAThreadComputesWithItsOwnRuleOrGetsAnError) {
  std::vector<float> alone[count];
  for (std::size_t n = 0; n < count; ++n) {
    const CudaDeviceThread device;
    setCudaIntegratorParameters("RectangularPiston", jobs[n]->order);
    alone[n] = jobs[n]->single();
  }
  std::atomic<int> successes{0};
  support::onThreads(count, [&](std::size_t n) {
    for (int round = 0; round < rounds; ++round) {
      setCudaIntegratorParameters("RectangularPiston", jobs[n]->order);
      try {
        EXPECT_EQ(jobs[n]->single(), alone[n]) << "thread " << n;
        ++successes;
      } catch (const pistonfield::Error& error) {
        EXPECT_EQ(std::string(error.what()).find("No quadrature rule is loaded"), 0u);
      }
    }
  });
  EXPECT_GE(successes, 1);  // the thread that loaded the last rule
}

TEST_F(LibraryThreadsTest, AScopeThatFailsLetsTheNextThreadIn) {
  support::onThreads(count, [](std::size_t /*n*/) {
    EXPECT_THROW(
        {
          const CudaDeviceThread device;
          throw std::runtime_error("in a scope");
        },
        std::runtime_error);
  });
  const CudaDeviceThread device;
}

}  // namespace
