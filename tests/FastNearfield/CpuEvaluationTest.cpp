#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <iomanip>
#include <limits>
#include <random>
#include <vector>

#include "FastNearfield/RectangularPiston2.h"
#include "support/AnyScene.h"
#include "support/LiteralPressure.h"
#include "support/ReferenceField.h"

// One point, on the CPU.

using pistonfield::RectangularPistonCuda2;

namespace {

template <class T>
std::complex<double> evaluate(const RectangularPistonCuda2& piston, double x, double y, double z) {
  T out[2];
  testing::internal::CaptureStdout();
  piston.computeCPU<T, double>(out, {1, 1, 1, {1, 0, 0, x, 0, 1, 0, y, 0, 0, 1, z, 0, 0, 0, 1}});
  testing::internal::GetCapturedStdout();
  return {static_cast<double>(out[0]), static_cast<double>(out[1])};
}

TEST(CpuPressureTest, EveryReferencePointIsWithinTheBoundInBothPrecisions) {
  for (const support::ReferenceField& field : support::readReferenceFields("cpu100.txt")) {
    const RectangularPistonCuda2 piston(field.l, field.s, field.k);
    for (std::size_t i = 0; i < field.points.size(); ++i) {
      const auto [x, y, z] = field.points[i];
      EXPECT_LE(std::abs(evaluate<double>(piston, x, y, z) - field.pressure[i]),
                field.doubleTolerance(i))
          << "double, l = " << field.l << ", point " << i;
      EXPECT_LE(std::abs(evaluate<float>(piston, x, y, z) - field.pressure[i]), field.tolerance(i))
          << "float, l = " << field.l << ", point " << i;
    }
  }
}

/// The distance of a point from the nearest plane through an edge, relative to half the piston's
/// diagonal.
template <class T>
double fromEdges(const std::array<T, 3>& point, T a, T b) {
  const T across = std::abs(std::abs(point[0]) - a), along = std::abs(std::abs(point[1]) - b);
  return static_cast<double>(std::min(across, along) / std::hypot(a, b));
}

template <class T>
class CpuAccuracyTest : public testing::Test {
 protected:
  /// The largest promised rounding error, in units of u·(1 + kR).
  static double promised(double z, double fromEdges) {
    if (z >= 0) return 5;
    return fromEdges > 0.1 ? 12 : 3000;
  }
  static constexpr bool hasYardstick =
      std::numeric_limits<long double>::digits > std::numeric_limits<double>::digits;
};
using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(CpuAccuracyTest, Precisions);

TYPED_TEST(CpuAccuracyTest, AtAnyPointOfAnyPistonTheRoundingStaysWithinThePromise) {
  using T = TypeParam;
  if (!this->hasYardstick) GTEST_SKIP() << "long double has no more digits than double";
  const support::HalfRule<T> rule(100);
  const auto toPrecision = static_cast<double>(std::numeric_limits<T>::epsilon() /
                                               std::numeric_limits<float>::epsilon());
  std::mt19937 random(1);
  for (int n = 0; n < 500; ++n) {
    const support::SceneOf<T> scene = support::anyScene<T>(random, 10);
    const T a = scene.a, b = scene.b, k = scene.k;
    // Such a side lies wholly in the strip where one half of it is doubled.
    if (std::min(a, b) < T(1e-7)) continue;
    const RectangularPistonCuda2 piston(2.0 * b, 2.0 * a, k);
    for (const auto& point : scene.points) {
      const auto& [x, y, z] = point;
      const std::complex<double> actual = evaluate<T>(piston, x, y, z);
      if (std::abs(x) == a && std::abs(y) == b && std::isnan(actual.real())) continue;
      const std::complex<long double> exact =
          support::literalPressure<long double>(x, y, z, a, b, k, rule, 0);
      const double error = static_cast<double>(std::abs(std::complex<long double>(actual) - exact));
      const double units = error / (support::unitOfError(x, y, z, a, b, k) * toPrecision);
      EXPECT_LE(units, this->promised(z, fromEdges(point, a, b)))
          << std::setprecision(17) << x << ", " << y << ", " << z << ", a = " << a << ", b = " << b
          << ", k = " << k;
    }
  }
}

TEST(CpuPressureTest, UnluckyPointsStayWithinThePromise) {
  // The worst cases that a search has found in single precision: in front of the piston, behind it,
  // and behind it next to an edge.
  struct Unlucky {
    float a, b, k, x, y, z;
    double least, promised;
  };
  const support::HalfRule<float> rule(100);
  for (const Unlucky& p : {
           Unlucky{0.285066992f, 0.285066992f, -8.97126579f, 0, 0, 0, 3.2, 5},
           Unlucky{0.126971498f, 0.126971498f, -3.59364319f, 0, 0, -0.324147999f, 7, 12},
           Unlucky{0.148109868f, 0.148109868f, -0.190981254f, 0.148082241f, 0.148110956f,
                   -5.77841377f, 1500, 3000},
       }) {
    const RectangularPistonCuda2 piston(2.0 * p.b, 2.0 * p.a, p.k);
    const std::complex<double> actual = evaluate<float>(piston, p.x, p.y, p.z);
    const std::complex<double> exact =
        support::literalPressure(p.x, p.y, p.z, p.a, p.b, p.k, rule, 0);
    const double units =
        std::abs(actual - exact) / support::unitOfError(p.x, p.y, p.z, p.a, p.b, p.k);
    EXPECT_GT(units, p.least);
    EXPECT_LE(units, p.promised);
  }
}

TEST(CpuPressureTest, NextToAnEdgeTheRulesOwnErrorIsLarger) {
  // A piston of 5 × 7.5 wavelengths, at z = 0.
  const RectangularPistonCuda2 piston(7.5, 5, 2 * M_PI);
  const support::HalfRule<double> finer(1600);
  const auto error = [&](double distance) {
    double most = 0;
    for (const double x : {2.5 - distance, 2.5 + distance})
      most =
          std::max(most, std::abs(evaluate<double>(piston, x, 0.7, 0) -
                                  support::literalPressure(x, 0.7, 0, 2.5, 3.75, 2 * M_PI, finer)));
    return most;
  };
  EXPECT_LE(error(0.1), 2e-14);
  EXPECT_GT(error(0.01), 1e-8);
  EXPECT_LE(error(0.01), 3e-8);
  EXPECT_GT(error(1e-4), 1e-4);
  EXPECT_LE(error(1e-4), 3e-4);
}

TEST(CpuGridTest, TheSizesArePrintedAlsoOfAnEmptyGrid) {
  const RectangularPistonCuda2 piston(2, 1, 5);
  for (const auto& [sx, sy, sz, line] :
       {std::tuple{2u, 1u, 1u, "grid: 2 1 1\n"}, std::tuple{4u, 5u, 0u, "grid: 4 5 0\n"},
        std::tuple{0u, 5u, 6u, "grid: 0 5 6\n"}}) {
    std::vector<float> out(4, -7);
    testing::internal::CaptureStdout();
    piston.computeCPU<float, double>(
        out.data(), {sx, sy, sz, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}});
    EXPECT_EQ(testing::internal::GetCapturedStdout(), line);
    if (sx * sy * sz == 0) {
      EXPECT_EQ(out, std::vector<float>(4, -7));
    }
  }
}

}  // namespace
