#include <cstddef>
#include <string>

#include "FastNearfield/Launchers.h"
#include "support/ReferenceField.h"

// Every launcher gives the same values as the launcher for lists, on any device and for any grid
// size.

using launchers::Origin;
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

  /// The values of the launcher for lists at the points of the grid.
  static Values list(Origin origin) { return launchers::list(GetParam(), origin); }

  /// Kernels with the same arithmetic give the same bits, unless the compiler for a GPU fuses
  /// multiplications and additions differently.
  static void expectSame(const Values& actual, Origin origin) {
#if defined(CUDART_VERSION)
    expectWithinBound(actual, origin);
#else
    EXPECT_EQ(actual, list(origin));
#endif
  }

  /// Both values are within the single-precision bound of the exact value.
  static void expectWithinBound(const Values& actual, Origin origin) {
    const Values expected = list(origin);
    support::ReferenceField field{launchers::a, launchers::b, launchers::k, {}, {}};
    const std::vector<float> p = launchers::gridPositions(GetParam(), origin);
    for (std::size_t i = 0; i < p.size(); i += 3)
      field.points.push_back({p[i], p[i + 1], p[i + 2]});

    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i)
      EXPECT_LE(std::abs(actual[i] - expected[i]), field.tolerance(i)) << i;
  }
};

TEST_P(LaunchersAgreeTest, InSinglePrecision) {
  EXPECT_EQ(launchers::doubles(GetParam()), list(Origin::PLACED));
  expectSame(launchers::grid(GetParam()), Origin::PLACED);
  expectSame(launchers::split(GetParam()), Origin::PLACED);
  expectSame(launchers::structured(GetParam()), Origin::PLACED);
  expectSame(launchers::twelveScalars(GetParam()), Origin::PLACED);
  expectSame(launchers::fromCentre(GetParam()), Origin::CENTRE);
}

TEST_P(LaunchersAgreeTest, InDoublePrecisionAsFarAsItsRootsAllow) {
  const Values placed_d = launchers::grid_d(GetParam());
  expectWithinBound(placed_d, Origin::PLACED);
  EXPECT_EQ(launchers::split_d(GetParam()), placed_d);
  EXPECT_EQ(launchers::twelveScalars_d(GetParam()), placed_d);
  expectWithinBound(launchers::fromCentre_d(GetParam()), Origin::CENTRE);
}

INSTANTIATE_TEST_SUITE_P(Sizes, LaunchersAgreeTest, testing::ValuesIn(test_grids::sizes),
                         [](const auto& size) {
                           const launchers::Size& s = size.param;
                           return std::to_string(s.sx) + "x" + std::to_string(s.sy) + "x" +
                                  std::to_string(s.sz);
                         });

}  // namespace
