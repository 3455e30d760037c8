#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>
#include <vector>

#include "FastNearfield/RectangularPiston2.h"
#include "support/ReferenceField.h"

// One edge integral, one point and a grid, on the CPU.

using pistonfield::Grid3DR;
using pistonfield::RectangularPistonCuda2;

namespace {

template <class T>
using Integral = RectangularPistonCuda2::FirstIntegral<T>;
template <class T>
using Integ = RectangularPistonCuda2::Integ<T>;

const Grid3DR<double>::Transform identity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

Grid3DR<double> onePoint(double x, double y, double z) {
  Grid3DR<double>::Transform transform = identity;
  transform[3] = x;
  transform[7] = y;
  transform[11] = z;
  return {1, 1, 1, transform};
}

template <class T>
std::vector<std::complex<double>> evaluate(const RectangularPistonCuda2& piston,
                                           const Grid3DR<double>& grid) {
  std::vector<T> out(std::size_t{2} * grid.nbPositions());
  testing::internal::CaptureStdout();
  piston.computeCPU<T, double>(out.data(), grid);
  testing::internal::GetCapturedStdout();
  std::vector<std::complex<double>> values;
  for (std::size_t i = 0; i < out.size(); i += 2) values.emplace_back(out[i], out[i + 1]);
  return values;
}

template <class T>
class EdgeIntegralTest : public testing::Test {
 protected:
  Integral<T> f(T s2) const { return {s2, k, z, {std::cos(k * z), -std::sin(k * z)}}; }
  std::complex<T> integral(T s2, T lo, T hi) const { return Integ<T>(&rule)(f(s2), lo, hi); }
  const T k = T(12.5), z = T(0.5);
  pistonfield::QuadratureRule<T> rule{100};
};

using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(EdgeIntegralTest, Precisions);

TYPED_TEST(EdgeIntegralTest, IsTheIntegral) {
  using T = TypeParam;
  // Against a fine midpoint sum in double precision.
  const double s2 = 0.25, lo = -0.5, hi = 1.25;
  std::complex<double> sum = 0;
  const int n = 200000;
  for (int i = 0; i < n; ++i) {
    const double sigma = lo + (hi - lo) * (i + 0.5) / n;
    const double t = sigma * sigma + s2;
    sum += (std::polar(1.0, -12.5 * std::sqrt(0.25 + t)) - std::polar(1.0, -6.25)) / t;
  }
  sum *= (hi - lo) / n;
  const std::complex<T> actual = this->integral(T(s2), T(lo), T(hi));
  const double u = std::numeric_limits<T>::epsilon() / 2;
  EXPECT_LE(std::abs(std::complex<double>(actual) - sum), 100 * u + 1e-9);
}

TYPED_TEST(EdgeIntegralTest, ANodeOnTheEdgeIsNotANumber) {
  using T = TypeParam;
  pistonfield::QuadratureRule<T> odd(3);
  const std::complex<T> p = Integ<T>(&odd)(this->f(0), T(-1), T(1));
  EXPECT_TRUE(std::isnan(p.real()));
  EXPECT_TRUE(std::isnan(p.imag()));
  // Behind the piston the numerator is not 0 there.
  Integral<T> behind = this->f(0);
  behind.z = -behind.z;
  behind.expKz = std::conj(behind.expKz);
  const std::complex<T> q = Integ<T>(&odd)(behind, T(-1), T(1));
  EXPECT_TRUE(std::isnan(q.real()));
  EXPECT_TRUE(std::isnan(q.imag()));
}

TYPED_TEST(EdgeIntegralTest, AnEmptyIntervalGivesZeroAndLeavesItsNodes) {
  using T = TypeParam;
  EXPECT_EQ(this->integral(T(0.25), T(0.5), T(0.5)), std::complex<T>(0, 0));
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(this->rule.mappedX[i], T(0.5));
    EXPECT_EQ(this->rule.mappedW[i], T(0));
  }
  // Reused: weights that the next call would otherwise write are taken as they are.
  this->rule.mappedW[0] = 1;
  EXPECT_NE(this->integral(T(0.25), T(0.5), T(0.5)), std::complex<T>(0, 0));
}

TYPED_TEST(EdgeIntegralTest, SwappedEndsNegateIt) {
  using T = TypeParam;
  const std::complex<T> forth = this->integral(T(0.25), T(-0.5), T(1.25));
  const std::complex<T> back = this->integral(T(0.25), T(1.25), T(-0.5));
  EXPECT_LE(std::abs(forth + back), 100 * std::numeric_limits<T>::epsilon());
  EXPECT_GT(std::abs(forth), T(1));
}

TYPED_TEST(EdgeIntegralTest, AnIntervalThatEndsOnTheOutermostNodesReusesThem) {
  using T = TypeParam;
  const std::complex<T> first = this->integral(T(0.25), T(-0.5), T(1.25));
  const T lo = this->rule.mappedX[0], hi = this->rule.mappedX[99];
  EXPECT_EQ(this->integral(T(0.25), lo, hi), first);
  pistonfield::QuadratureRule<T> fresh(100);
  EXPECT_NE(Integ<T>(&fresh)(this->f(T(0.25)), lo, hi), first);
  // Both ends must meet.
  this->integral(T(0.25), lo, std::nextafter(hi, T(2)));
  EXPECT_NE(this->rule.mappedX[0], lo);
}

TYPED_TEST(EdgeIntegralTest, WithoutNodesItIsZero) {
  using T = TypeParam;
  this->rule.order = 0;
  EXPECT_EQ(this->integral(T(0.25), T(0), T(1)), std::complex<T>(0, 0));
}

TEST(CpuPressureTest, EveryReferencePointIsWithinTheBoundInBothPrecisions) {
  for (const support::ReferenceField& field : support::readReferenceFields("cpu100.txt")) {
    const RectangularPistonCuda2 piston(field.l, field.s, field.k);
    for (std::size_t i = 0; i < field.points.size(); ++i) {
      const auto [x, y, z] = field.points[i];
      const Grid3DR<double> grid = onePoint(x, y, z);
      EXPECT_LE(std::abs(evaluate<double>(piston, grid)[0] - field.pressure[i]),
                field.doubleTolerance(i))
          << "double, l = " << field.l << ", point " << i;
      EXPECT_LE(std::abs(evaluate<float>(piston, grid)[0] - field.pressure[i]), field.tolerance(i))
          << "float, l = " << field.l << ", point " << i;
    }
  }
}

class CpuPointTest : public testing::Test {
 protected:
  /// The pressure at the offsets of a point from the edges, by the function for one point.
  std::complex<double> at(double x1, double x2, double y1, double y2) const {
    Integral<double> f{7, 3, 1, std::polar(1.0, -3.0)};
    return piston.doFastNearfield_Private<double>(f, x1, x2, y1, y2, 99, 99, {0, -0.5});
  }
  std::complex<double> I(double s2, double lo, double hi) const {
    return Integ<double>(&rule)({s2, 3, 1, std::polar(1.0, -3.0)}, lo, hi);
  }
  const RectangularPistonCuda2 piston{1, 1, 1};
  pistonfield::QuadratureRule<double> rule{100};
};

const std::complex<double> scale(0, -0.5);

TEST_F(CpuPointTest, OutsideInBothDirectionsTakesWholeIntervals) {
  const auto expected = scale * (1.0 * I(1, 2, 4) - 3.0 * I(9, 2, 4) +  //
                                 2.0 * I(4, 1, 3) - 4.0 * I(16, 1, 3));
  EXPECT_LE(std::abs(at(1, 3, 2, 4) - expected), 1e-15);
}

TEST_F(CpuPointTest, AboveThePistonBothPairsAreSplit) {
  const auto expected =
      scale * (-1.0 * (I(1, 0, 2) + I(1, -1, 0)) - 2.0 * (I(4, 0, 2) + I(4, -1, 0)) +
               -1.0 * (I(1, 0, 2) + I(1, -1, 0)) - 2.0 * (I(4, 0, 2) + I(4, -1, 0)));
  EXPECT_LE(std::abs(at(-1, 2, -1, 2) - expected), 1e-15);
}

TEST_F(CpuPointTest, OnTheLineX1TheSplitHasAnEmptyPiece) {
  const auto expected = scale * (-2.0 * I(4, 1, 3) + 1.0 * I(1, 0, 2) - 3.0 * I(9, 0, 2));
  EXPECT_LE(std::abs(at(0, 2, 1, 3) - expected), 1e-15);
}

TEST_F(CpuPointTest, OnTheLineX2TheIntervalIsWhole) {
  // s2 = 0 for the pair along y, whose coefficient is 0; the pair along x takes [−2, 0] whole.
  const auto expected = scale * (-2.0 * I(4, 1, 3) + 1.0 * I(1, -2, 0) - 3.0 * I(9, -2, 0));
  EXPECT_LE(std::abs(at(-2, 0, 1, 3) - expected), 1e-15);
}

TEST_F(CpuPointTest, ThreeCornersAreNotANumberAndTheFourthIsFinite) {
  EXPECT_TRUE(std::isnan(at(0, 1, 0, 1).real()));   // (s/2, l/2)
  EXPECT_TRUE(std::isnan(at(0, 1, -1, 0).real()));  // (s/2, −l/2)
  EXPECT_TRUE(std::isnan(at(-1, 0, 0, 1).real()));  // (−s/2, l/2)
  EXPECT_TRUE(std::isfinite(at(-1, 0, -1, 0).real()));
  const RectangularPistonCuda2 small(1, 1, 3);
  EXPECT_TRUE(std::isnan(evaluate<double>(small, onePoint(0.5, 0.5, 1))[0].real()));
  EXPECT_TRUE(std::isfinite(evaluate<double>(small, onePoint(-0.5, -0.5, 1))[0].real()));
}

TEST_F(CpuPointTest, InTheMiddleTheHalvesAreEqual) {
  const auto expected = scale * (-1.0 * 2.0 * I(1, 0, 2) - 1.0 * 2.0 * I(1, 0, 2) +
                                 -2.0 * 2.0 * I(4, 0, 1) - 2.0 * 2.0 * I(4, 0, 1));
  EXPECT_LE(std::abs(at(-1, 1, -2, 2) - expected), 1e-14);
}

TEST_F(CpuPointTest, NearlyEqualEndsDoubleHalfAnIntervalAlongYAndTheWholeAlongX) {
  const double d = 0.5e-7;
  const auto along_y = scale * (2.0 * 1.0 * I(1, 0, 2 + d) - 2.0 * 3.0 * I(9, 0, 2 + d) +
                                2.0 * I(4, 1, 3) - (2 + d) * I((2 + d) * (2 + d), 1, 3));
  EXPECT_LE(std::abs(at(1, 3, 2, 2 + d) - along_y), 1e-15);
  const auto along_x = scale * (2.0 * I(4, 1, 3) - (2 + d) * I((2 + d) * (2 + d), 1, 3) +
                                2.0 * 1.0 * I(1, 2, 2 + d) - 2.0 * 3.0 * I(9, 2, 2 + d));
  EXPECT_LE(std::abs(at(2, 2 + d, 1, 3) - along_x), 1e-15);
  // 1e-7 itself is not nearly equal.
  const double e = 1.0000001e-7;
  const auto apart = scale * (1.0 * I(1, 2, 2 + e) - 3.0 * I(9, 2, 2 + e) + 2.0 * I(4, 1, 3) -
                              (2 + e) * I((2 + e) * (2 + e), 1, 3));
  EXPECT_LE(std::abs(at(1, 3, 2, 2 + e) - apart), 1e-15);
}

TEST(CpuGridTest, TheOriginOfTheIdentityIsTheMiddleOfThePiston) {
  const RectangularPistonCuda2 piston(2, 1, 5);
  const Grid3DR<double> grid(1, 1, 1, identity);
  Integral<double> f{0, 5, 0, {1, 0}};
  const std::complex<double> expected =
      piston.doFastNearfield_Private<double>(f, -0.5, 0.5, -1, 1, 5, 0, {0, -0.15915494309189535});
  EXPECT_EQ(evaluate<double>(piston, grid)[0], expected);
}

TEST(CpuGridTest, AHomogeneousScaleOfTwoHalvesTheCoordinates) {
  const RectangularPistonCuda2 piston(2, 1, 5);
  Grid3DR<double>::Transform doubled = identity;
  doubled[3] = 1;
  doubled[11] = 2;
  doubled[15] = 2;
  EXPECT_EQ(evaluate<double>(piston, {1, 1, 1, doubled}),
            evaluate<double>(piston, onePoint(0.5, 0, 1)));
}

TEST(CpuGridTest, PointsComeFirstAxisFastest) {
  const RectangularPistonCuda2 piston(2, 1, 5);
  Grid3DR<double>::Transform transform = identity;
  transform[3] = -0.75;
  transform[11] = 0.5;
  const std::vector<std::complex<double>> all = evaluate<double>(piston, {3, 2, 2, transform});
  ASSERT_EQ(all.size(), 12u);
  std::size_t n = 0;
  for (int l = 0; l < 2; ++l)
    for (int j = 0; j < 2; ++j)
      for (int i = 0; i < 3; ++i)
        EXPECT_EQ(all[n++], evaluate<double>(piston, onePoint(i - 0.75, j, l + 0.5))[0]);
}

TEST(CpuGridTest, TheSizesArePrintedAlsoOfAnEmptyGrid) {
  const RectangularPistonCuda2 piston(2, 1, 5);
  for (const auto& [sx, sy, sz, line] :
       {std::tuple{2u, 1u, 1u, "grid: 2 1 1\n"}, std::tuple{4u, 5u, 0u, "grid: 4 5 0\n"},
        std::tuple{0u, 5u, 6u, "grid: 0 5 6\n"}}) {
    std::vector<float> out(4, -7);
    testing::internal::CaptureStdout();
    piston.computeCPU<float, double>(out.data(), {sx, sy, sz, identity});
    EXPECT_EQ(testing::internal::GetCapturedStdout(), line);
    if (sx * sy * sz == 0) {
      EXPECT_EQ(out, std::vector<float>(4, -7));
    }
  }
}

}  // namespace
