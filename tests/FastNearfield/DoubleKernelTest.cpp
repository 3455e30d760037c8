#include <algorithm>
#include <cmath>
#include <complex>
#include <vector>

#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/LaunchShape.h"
#include "FastNearfield/Launchers.h"
#include "FastNearfield/RectangularPistonKernels.h"
#include "FastNearfield/point/PointPressure.h"
#include "FastNearfield/point/SingleRootIntegrand.h"
#include "core/CudaCompatibility.h"
#include "support/DeviceArrays.h"
#include "support/DeviceTest.h"
#include "support/LiteralPressure.h"

using launchers::joined;
using launchers::Values;
using launchers::widened;
using pistonfield::blockShape;
using pistonfield::Complexd;
using pistonfield::launch;
using pistonfield::regularGridShape;
using support::GuardedArray;
using support::Uploaded;

namespace {

// Half-width, half-height and wave number, none of which a float represents exactly.
constexpr double a = 0.7, b = 0.45, k = 12.3;

#if defined(CUDART_VERSION)
constexpr double deviceTolerance = 1e-5;  // for the device's own roots, sines and cosines
#else
constexpr double deviceTolerance = 0;
#endif

using HalfRule = support::HalfRule<double>;

std::complex<double> pressure(double x, double y, double z, const HalfRule& rule) {
  const Complexd p =
      pistonfield::pointPressure<pistonfield::SingleRootIntegrand>(x, y, z, a, b, k, rule.view());
  return {p.re, p.im};
}

struct InSinglePrecision {
  static double magnitude(double x) { return std::abs(static_cast<float>(x)); }
  static double root(double x) { return std::sqrt(static_cast<float>(x)); }
  static std::complex<double> turn(double theta) {
    const auto argument = static_cast<float>(theta);
    return {std::cos(argument), std::sin(argument)};
  }
};

/// The formula as written, with magnitudes, roots, sines and cosines in single precision.
std::complex<double> literal(double x, double y, double z, const HalfRule& rule) {
  return support::literalPressure<double, InSinglePrecision>(x, y, z, a, b, k, rule, 1e-7);
}

TEST(DoublePressureTest, OnlyRootsSinesCosinesAndMagnitudesAreInSinglePrecision) {
  for (const int n : {1, 9, 10, 32}) {
    const HalfRule rule(n);
    for (const double x : {0.0, 0.3, -0.6123456789, 1.1})
      for (const double y : {0.0, 0.2, -0.4123456789, 0.9})
        for (const double z : {-1.3, 0.0, 0.1, 2.7})
          EXPECT_LE(std::abs(pressure(x, y, z, rule) - literal(x, y, z, rule)), 1e-12)
              << "order " << n << " at " << x << ", " << y << ", " << z;
  }
}

TEST(DoublePressureTest, TheThresholdOfTheAxisIsThatOfDoubles) {
  // The float nearest to 1e-7 is above the double nearest to 1e-7.
  const double above = 1e-7F;
  ASSERT_GT(above, 1e-7);
  const HalfRule rule(10);
  EXPECT_LE(std::abs(pressure(0.3, above, 1, rule) - literal(0.3, above, 1, rule)), 1e-12);
}

class DoubleKernelTest : public support::DeviceTest {
 protected:
  void SetUp() override {
    DeviceTest::SetUp();
    if (!IsSkipped()) setCudaIntegratorParameters("RectangularPiston", 10);
  }
};

TEST_F(DoubleKernelTest, GridsHaveTheirPoints) {
  const HalfRule rule(10);
  const std::vector<double> t = {0.1,  0.23, -0.5, 0.06, -0.27, 0.12, 0.5, 0.51,
                                 0.49, 0.25, 0.13, 1.01, 9,     9,    9,   9};
  const Uploaded<double> transform(t);
  for (const test_grids::Size& size : test_grids::sizes) {
    const auto [sx, sy, sz] = size;
    const dim3 grid = regularGridShape(sx, sy, sz);

    GuardedArray<Complexd> inMemory(size.points()), steps(size.points());
    EXPECT_EQ(launch(calculate_grid, grid, blockShape, inMemory.device(), sx, sy, sz,
                     transform.get(), a, b, k),
              cudaSuccess);
    EXPECT_EQ(
        launch(calculate, grid, blockShape, steps.device(), sx, sy, sz, t[0], t[1], t[7], a, b, k),
        cudaSuccess);
    const Values mapped = widened(inMemory.read()), fromCentre = widened(steps.read());

    // The one kernel that no launcher calls. LaunchersAgreeTest has the others.
    GuardedArray<double> re12(size.points()), im12(size.points());
    EXPECT_EQ(
        launch(calculate_grid, grid, blockShape, re12.device(), im12.device(), sx, sy, sz, t[0],
               t[1], t[2], t[3], t[4], t[5], t[6], t[7], t[8], t[9], t[10], t[11], a, b, k),
        cudaSuccess);
    EXPECT_EQ(joined(re12.read(), im12.read()), mapped);

    std::size_t n = 0;
    for (int l = 0; l < sz; ++l)
      for (int j = 0; j < sy; ++j)
        for (int i = 0; i < sx; ++i, ++n) {
          ASSERT_LE(std::abs(mapped[n] - pressure(t[0] * i + t[1] * j + t[2] * l + t[3],
                                                  t[4] * i + t[5] * j + t[6] * l + t[7],
                                                  t[8] * i + t[9] * j + t[10] * l + t[11], rule)),
                    deviceTolerance)
              << n;
          ASSERT_LE(std::abs(fromCentre[n] - pressure(i * t[0], j * t[1], l * t[7], rule)),
                    deviceTolerance)
              << n;
        }
  }
}

}  // namespace
