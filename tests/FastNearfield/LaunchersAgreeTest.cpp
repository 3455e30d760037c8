#include <cstddef>
#include <string>

#include "FastNearfield/Launchers.h"
#include "support/Bound.h"

// Every launcher gives the same values as the launcher for lists, on any device and for any grid
// size.

using launchers::Map;
using launchers::Values;

namespace {

class LaunchersAgreeTest : public support::DeviceTest,
                           public testing::WithParamInterface<launchers::Size> {
 protected:
  void SetUp() override {
    DeviceTest::SetUp();
    if (IsSkipped()) return;
    setCudaIntegratorParameters("RectangularPiston", 10);
#if !defined(CUDART_VERSION)
    emulationTestControl()->separateMemory();
    emulationTestControl()->poisonFreshMemory();
#endif
  }
#if !defined(CUDART_VERSION)
  void TearDown() override {
    emulationTestControl()->restore();
    DeviceTest::TearDown();
  }
#endif

  /// The list that a launcher's grid amounts to.
  static Values list(Map map) { return launchers::list(GetParam(), map); }

  /// Kernels of the same arithmetic give the same bits, unless the compiler of a GPU fuses one's
  /// multiplications and additions in another way.
  static void expectSame(const Values& actual, Map map) {
#if defined(CUDART_VERSION)
    expectWithinBound(actual, map);
#else
    EXPECT_EQ(actual, list(map));
#endif
  }

  /// Both within single precision's bound of the truth.
  static void expectWithinBound(const Values& actual, Map map) {
    const Values expected = list(map);
    const std::vector<float> p = launchers::gridPositions(GetParam(), map);
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i)
      EXPECT_LE(std::abs(actual[i] - expected[i]),
                support::tolerance(p[3 * i], p[3 * i + 1], p[3 * i + 2], launchers::b / 2,
                                   launchers::a / 2, launchers::k))
          << i;
  }
};

TEST_P(LaunchersAgreeTest, InSinglePrecision) {
  EXPECT_EQ(launchers::doubles(GetParam()), list(Map::AXES));
  expectSame(launchers::grid(GetParam()), Map::TRANSFORM);
  expectSame(launchers::split(GetParam()), Map::TRANSFORM);
  expectSame(launchers::structured(GetParam()), Map::AXES);
  expectSame(launchers::twelveScalars(GetParam()), Map::TRANSFORM);
  expectSame(launchers::fromCentre(GetParam()), Map::STEPS);
}

TEST_P(LaunchersAgreeTest, InDoublePrecisionAsFarAsItsRootsAllow) {
  const Values placed_d = launchers::grid_d(GetParam());
  expectWithinBound(placed_d, Map::TRANSFORM);
  EXPECT_EQ(launchers::split_d(GetParam()), placed_d);
  EXPECT_EQ(launchers::twelveScalars_d(GetParam()), placed_d);
  expectWithinBound(launchers::fromCentre_d(GetParam()), Map::STEPS);
}

INSTANTIATE_TEST_SUITE_P(Sizes, LaunchersAgreeTest, testing::ValuesIn(test_grids::sizes),
                         [](const auto& size) {
                           const launchers::Size& s = size.param;
                           return std::to_string(s.sx) + "x" + std::to_string(s.sy) + "x" +
                                  std::to_string(s.sz);
                         });

}  // namespace
