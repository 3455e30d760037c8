#include <cstddef>

#include "FastNearfield/Launchers.h"

// Every launcher gives what the one for lists gives, on any device.

using launchers::Origin;
using launchers::Values;

namespace {

class LaunchersAgreeTest : public support::DeviceTest {
 protected:
  void SetUp() override {
    DeviceTest::SetUp();
    if (!IsSkipped()) setCudaIntegratorParameters("RectangularPiston", 10);
  }

  static void expectNear(const Values& actual, const Values& expected, double tolerance) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i)
      EXPECT_LE(std::abs(actual[i] - expected[i]), tolerance) << i;
  }
};

TEST_F(LaunchersAgreeTest, InSinglePrecisionBitForBit) {
#if !defined(CUDART_VERSION)
  emulationTestControl().poisonFreshMemory();
#endif
  const Values placed = launchers::list(Origin::PLACED);
  EXPECT_EQ(launchers::grid(), placed);
  EXPECT_EQ(launchers::split(), placed);
  EXPECT_EQ(launchers::structured(), placed);
  EXPECT_EQ(launchers::twelveScalars(), placed);
  EXPECT_EQ(launchers::fromCentre(), launchers::list(Origin::CENTRE));
}

TEST_F(LaunchersAgreeTest, InDoublePrecisionAsFarAsItsRootsAllow) {
#if !defined(CUDART_VERSION)
  emulationTestControl().poisonFreshMemory();
#endif
  const Values placed = launchers::list(Origin::PLACED);
  const Values placed_d = launchers::grid_d();
  expectNear(placed_d, placed, 1e-5);
  EXPECT_EQ(launchers::split_d(), placed_d);
  EXPECT_EQ(launchers::twelveScalars_d(), placed_d);
  expectNear(launchers::fromCentre_d(), launchers::list(Origin::CENTRE), 1e-5);
}

}  // namespace
