#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/RectangularPiston2.h"
#include "core/Progress.h"
#include "core/ThrowingErrorHandler.h"
#include "core/cudahelper.h"

using pistonfield::CudaDeviceThread;
using pistonfield::CudaStorage;
using pistonfield::ErrorHandler;
using pistonfield::Grid3DR;
using pistonfield::RectangularPistonCuda2;

// Programs may compute on several threads at once, and every thread gets the same values as if it
// ran alone.

namespace {

const Grid3DR<double> grid(17, 1, 19, {0.5, 0, 0, -4, 0, 1, 0, 0, 0, 0, 0.5, 0.25, 0, 0, 0, 1});
constexpr int rounds = 8;

/// What one thread computes, with its own piston and order.
struct Job {
  explicit Job(int number) : order(9 + 2 * number), piston(7.5, 5 + 0.25 * number, 6.28) {}

  template <class T>
  std::vector<T> field() const {
    std::vector<T> out(std::size_t{2} * grid.nbPositions());
    piston.compute(out.data(), grid);
    return out;
  }

  std::vector<float> storedField() const {
    CudaStorage storage(CudaStorage::DT_FLOAT, std::size_t{2} * grid.nbPositions());
    piston.compute(&storage, grid);
    storage.toHost();
    return {storage.getFloatData(), storage.getFloatData() + storage.getSize()};
  }

  int order;
  RectangularPistonCuda2 piston;
};

struct Fields {
  std::vector<float> single, stored;
  std::vector<double> dual;
  bool operator==(const Fields& other) const {
    return single == other.single && stored == other.stored && dual == other.dual;
  }
};

Fields onTheCPU(const Job& job) { return {job.field<float>(), {}, job.field<double>()}; }

Fields onTheDevice(const Job& job) {
  const CudaDeviceThread device;
  setCudaIntegratorParameters("RectangularPiston", job.order);
  return {job.field<float>(), job.storedField(), job.field<double>()};
}

/// The parameter is the number of threads that compute at once.
class LibraryThreadsTest : public testing::TestWithParam<std::size_t> {
 protected:
  void SetUp() override {
    ErrorHandler::setErrorHandler(new pistonfield::ThrowingErrorHandler);
    pistonfield::showProgress(false);
  }
  void TearDown() override {
    pistonfield::showProgress(true);
    ErrorHandler::setErrorHandler(nullptr);
  }

  /// Calls work(n) on thread n of `count`.
  template <class Work>
  static void onThreads(std::size_t count, Work work) {
    std::vector<std::thread> threads(count);
    for (std::size_t n = 0; n < count; ++n)
      threads[n] = std::thread([=] { EXPECT_NO_THROW(work(n)); });
    for (std::thread& thread : threads) thread.join();
  }

  using Jobs = std::vector<std::unique_ptr<Job>>;

  /// Thread n checks `rounds` times that evaluate(job n) returns the same as on a single thread.
  template <class Evaluate>
  static void expectAsAlone(const Jobs& jobs, Evaluate evaluate) {
    std::vector<Fields> alone(jobs.size());
    for (std::size_t n = 0; n < jobs.size(); ++n) alone[n] = evaluate(*jobs[n]);
    onThreads(jobs.size(), [&](std::size_t n) {
      for (int round = 0; round < rounds; ++round)
        EXPECT_TRUE(evaluate(*jobs[n]) == alone[n]) << "thread " << n;
    });
  }

  static Jobs jobs() {
    Jobs all(GetParam());
    for (std::size_t n = 0; n < all.size(); ++n)
      all[n] = std::make_unique<Job>(static_cast<int>(n));
    return all;
  }
};

TEST_P(LibraryThreadsTest, EachWithADeviceScopeOfItsOwn) { expectAsAlone(jobs(), onTheDevice); }

TEST_P(LibraryThreadsTest, EachWithAPistonOfItsOwnOnTheCPU) {
  const auto all = jobs();
  for (const auto& job : all) job->piston.useGPU = false;
  expectAsAlone(all, onTheCPU);
}

TEST_P(LibraryThreadsTest, AllWithOnePistonOnTheCPU) {
  Job job(0);
  job.piston.useGPU = false;
  const Fields alone = onTheCPU(job);
  onThreads(GetParam(), [&](std::size_t /*n*/) { EXPECT_TRUE(onTheCPU(job) == alone); });
}

TEST_P(LibraryThreadsTest, SomeOnTheDeviceAndSomeOnTheCPU) {
  const auto all = jobs();
  for (std::size_t n = 0; n < all.size(); n += 2) all[n]->piston.useGPU = false;
  expectAsAlone(
      all, [](const Job& job) { return job.piston.useGPU ? onTheDevice(job) : onTheCPU(job); });
}

/// Outside any scope, the device holds the rule that was loaded last, by any thread.
TEST_P(LibraryThreadsTest, WithoutScopesAThreadComputesWithItsOwnRuleOrGetsAnError) {
  const auto all = jobs();
  std::vector<std::vector<float>> alone(all.size());
  for (std::size_t n = 0; n < all.size(); ++n) alone[n] = onTheDevice(*all[n]).single;
  std::atomic<int> successes{0};
  onThreads(all.size(), [&](std::size_t n) {
    for (int round = 0; round < rounds; ++round) {
      setCudaIntegratorParameters("RectangularPiston", all[n]->order);
      try {
        EXPECT_EQ(all[n]->field<float>(), alone[n]) << "thread " << n;
        ++successes;
      } catch (const pistonfield::Error& error) {
        EXPECT_EQ(std::string(error.what()).find("No quadrature rule is loaded"), 0u);
      }
    }
  });
  EXPECT_GE(successes, 1);  // the thread that loaded the last rule
}

TEST_P(LibraryThreadsTest, AScopeThatFailsLetsTheNextThreadIn) {
  onThreads(GetParam(), [&](std::size_t /*n*/) {
    EXPECT_THROW(
        {
          const CudaDeviceThread device;
          throw std::runtime_error("in a scope");
        },
        std::runtime_error);
  });
  const CudaDeviceThread device;
}

INSTANTIATE_TEST_SUITE_P(, LibraryThreadsTest, testing::Values(2, 8),
                         testing::PrintToStringParamName());

}  // namespace
