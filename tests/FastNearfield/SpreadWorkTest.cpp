#include <cstddef>
#include <vector>

#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/RectangularPistonCuda.h"
#include "support/DeviceTest.h"
#include "support/SameBits.h"

// The result at a point does not depend on the core that computes it. EveryAllocationTest checks
// that long work starts threads, by making their start fail.

using pistonfield::Complex;

namespace {

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
  const std::vector<Complex> together = pressures(0, count);
  constexpr int few = 2000;  // few enough for a single thread
  for (int first = 0; first < count; first += few) {
    const std::vector<Complex> alone = pressures(first, few);
    const auto begin = together.begin() + first;
    ASSERT_TRUE(support::sameBits(alone, {begin, begin + few})) << first;
  }
}

}  // namespace
