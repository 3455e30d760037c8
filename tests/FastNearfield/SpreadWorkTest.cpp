#include <sys/resource.h>

#include <cstddef>
#include <vector>

#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/RectangularPistonCuda.h"
#include "parallel/Cores.h"
#include "support/DeviceTest.h"
#include "support/SameBits.h"

// Work that is long enough is spread over the cores; which of them computes a point is nobody's
// business.

using pistonfield::Complex;

namespace {

double seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

double computed(int who) {
  rusage usage{};
  getrusage(who, &usage);
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// The time that other threads than this one have computed.
double othersTime() { return computed(RUSAGE_SELF) - computed(RUSAGE_THREAD); }

class SpreadWorkTest : public support::DeviceTest {
 protected:
  void SetUp() override {
    DeviceTest::SetUp();
    setCudaIntegratorParameters("RectangularPiston", 64);
    for (int i = 0; i < count; ++i) {
      const auto n = static_cast<float>(i);
      positions.insert(positions.end(), {1e-5f * n, 2.0f - 2e-5f * n, 0.5f + 1e-5f * n});
    }
  }

  std::vector<Complex> pressures(int first, int points) {
    std::vector<Complex> values(static_cast<std::size_t>(points));
    RectangularPiston_func_unstructured(values.data(), points,
                                        positions.data() + 3 * static_cast<std::ptrdiff_t>(first),
                                        2, 1.5f, 6);
    return values;
  }

  static constexpr int count = 200000;
  std::vector<float> positions;
};

TEST_F(SpreadWorkTest, ManyPointsGiveWhatFewGive) {
  const double before = othersTime();
  const std::vector<Complex> together = pressures(0, count);
  if (parallel::cores() > 1) {
    EXPECT_GT(othersTime() - before, 0.001);
  }

  constexpr int few = 2000;  // which one thread computes
  for (int first = 0; first < count; first += few) {
    const std::vector<Complex> alone = pressures(first, few);
    const auto begin = together.begin() + first;
    ASSERT_TRUE(support::sameBits(alone, {begin, begin + few})) << first;
  }
}

}  // namespace
