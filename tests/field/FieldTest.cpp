#include "field/field.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "FastNearfield/IntegratorCuda.h"
#include "FastNearfield/RectangularPistonCuda.h"
#include "field/ExactPressure.h"
#include "field/Pistons.h"
#include "support/Bound.h"
#include "support/DeviceTest.h"
#include "support/ProcessMemory.h"

// What a program that includes <pistonfield/field.h> may rely on.

using pistonfield::AffineGrid;
using pistonfield::AxesGrid;
using pistonfield::Field;
using pistonfield::FieldError;
using pistonfield::FieldOptions;
using pistonfield::FieldReport;
using Piston = pistonfield::Field::Piston;
using pistonfield::Position;

namespace {

using Pressures = std::vector<std::complex<double>>;

constexpr double k = 6.28, nan = std::numeric_limits<double>::quiet_NaN(),
                 infinity = std::numeric_limits<double>::infinity();

FieldOptions ofOrder(int order) {
  FieldOptions options;
  options.order = order;
  return options;
}

/// Expects equal values to within `tolerance` times the peak.
void expectNear(const Pressures& actual, const Pressures& expected, double tolerance) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t n = 0; n < actual.size(); ++n)
    EXPECT_LE(std::abs(actual[n] - expected[n]), tolerance * peakOf(expected)) << "point " << n;
}

bool isNaN(std::complex<double> p) { return std::isnan(p.real()) && std::isnan(p.imag()); }

const std::vector<Position> somePoints = {
    {0, 0, 1}, {2.5, 3.5, 0.5}, {1, -2, 20}, {-4, 6, 3}, {0.5, 0.25, -2}};

// Points.

TEST(FieldTest, NoPointsGiveNoPressures) {
  const Field field({piston(5, 7)}, k);
  FieldReport report;
  report.nodes = 1;
  EXPECT_TRUE(field.at({}, {}, &report).empty());
  EXPECT_EQ(report.nodes, 0);
  EXPECT_TRUE(field.on(AxesGrid{{}, {1}, {1}}).empty());
  EXPECT_TRUE(field.on(AxesGrid{{1}, {1, 2}, {}}).empty());
  AffineGrid grid;
  grid.counts = {0, SIZE_MAX, SIZE_MAX};
  EXPECT_TRUE(field.on(grid).empty());
  EXPECT_THROW(field.at({}, toTolerance(0)), FieldError);
}

TEST(FieldTest, APointAloneHasThePressureThatItHasAmongOthers) {
  const Field field({piston(5, 7)}, k);
  const Pressures together = field.at(somePoints, toTolerance(1e-9));
  for (std::size_t n = 0; n < somePoints.size(); ++n)
    EXPECT_LE(std::abs(field.at({somePoints[n]})[0] - together[n]),
              1e-4 * std::abs(together[n]) + 2e-9);
}

TEST(FieldTest, APointThatIsNotFiniteGetsNaNAndTheOthersTheirPressures) {
  const Field field({piston(5, 7)}, k);
  for (const double bad : {nan, infinity, -infinity})
    for (std::size_t axis = 0; axis < 3; ++axis) {
      std::vector<Position> points = somePoints;
      points[2][axis] = bad;
      const Pressures actual = field.at(points);
      Pressures expected = field.at(somePoints);
      EXPECT_TRUE(isNaN(actual[2]));
      expected[2] = actual[2];
      for (std::size_t n = 0; n < points.size(); ++n)
        if (n != 2) {
          EXPECT_LE(std::abs(actual[n] - expected[n]), 2e-4 * peakOf(field.at(somePoints)));
        }
    }
}

TEST(FieldTest, WeakPistonsBesideStrongOnesDoNotSpoilAGrid) {
  AxesGrid grid{{}, {0.5}, {5, 6, 7}};
  for (int n = 0; n < 100; ++n) grid.x.push_back(0.1 * n);
  const Pressures expected = Field({piston(5, 7)}, k).on(grid);
  for (const double weak : {1e-3, 1e-10, 1e-16, 1e-22, 1e-300, 1e-320})
    expectNear(Field({piston(5, 7), piston(3, 7, {9, 0, 0}, weak)}, k).on(grid), expected,
               2e-4 + 2 * weak);
  // Also where the magnitude of a weight overflows.
  const double most = 1.7e308;
  const std::complex<double> p =
      Field({piston(5, 7, {0, 0, 0}, {most, most})}, k).at({{0, 0, 300}})[0];
  EXPECT_TRUE(std::isfinite(p.real()) && std::isfinite(p.imag()) && p != 0.0);
}

TEST(FieldTest, TheOrderOfAListDoesNotMatter) {
  std::vector<Piston> pistons;
  pistons.reserve(20);
  for (int m = 0; m < 20; ++m)
    pistons.push_back(piston(0.5 + 0.1 * m, 7, {2.0 * m - 20, 0, 0}, std::polar(1.0, 0.3 * m)));
  std::vector<Position> points;
  for (int n = 0; n < 500; ++n) {  // coprime steps: all over the range, in no order
    points.push_back({-30.0 + n * 37 % 61, -9.0 + n * 17 % 19, 1.0 + n * 29 % 83});
    if (n % 50 == 7) points.back()[static_cast<std::size_t>(n) % 3] = nan;
  }
  const Field field(pistons, k);
  FieldReport report;
  const Pressures actual = field.at(points, {}, &report);
  for (std::size_t n = 0; n < points.size(); ++n) {
    SCOPED_TRACE(n);
    EXPECT_EQ(isNaN(actual[n]), n % 50 == 7);
    if (n % 50 == 7) continue;
    const std::complex<double> alone = field.at({points[n]}, toTolerance(1e-8))[0];
    EXPECT_LE(std::abs(actual[n] - alone), report.bound + 1e-8 * std::abs(alone));
  }
}

TEST(FieldTest, PointsThatAreAllNotFiniteGetNaN) {
  const Field field({piston(5, 7)}, k);
  EXPECT_TRUE(isNaN(field.at({{nan, 0, 1}}).at(0)));
  EXPECT_TRUE(isNaN(Field({piston(5, 7)}, 0).at({{infinity, 0, 1}, {0, 0, 1}}).at(0)));
  EXPECT_TRUE(isNaN(field.on(AxesGrid{{0}, {0, 1}, {infinity}}).at(1)));
}

TEST(FieldTest, APointThatIsNotFiniteDoesNotMakeATolerancePossibleOrImpossible) {
  const Field field({piston(1, 1)}, k);
  for (const double z : {1e3, 1e4, 1e5}) {
    const auto refuses = [&](const std::vector<Position>& points) {
      return !errorOf([&] { field.at(points, toTolerance(1e-9)); }).empty();
    };
    EXPECT_EQ(refuses({{0, 0, z}, {nan, 0, z}}), refuses({{0, 0, z}})) << z;
  }
}

// Pistons and k.

TEST(FieldTest, WeightsMultiplyAndPistonsAdd) {
  const std::complex<double> u(0.5, -2), v(-1, 0.25);
  const Position there = {3, -1, 0.5};
  const Pressures one = Field({piston(5, 7)}, k).at(somePoints, toTolerance(1e-9));
  const Pressures other = Field({piston(2, 1, there)}, k).at(somePoints, toTolerance(1e-9));
  Pressures sum;
  for (std::size_t n = 0; n < one.size(); ++n) sum.push_back(u * one[n] + v * other[n]);
  expectNear(Field({piston(5, 7, {0, 0, 0}, u), piston(2, 1, there, v)}, k).at(somePoints), sum,
             1.001e-4);
}

TEST(FieldTest, ATurnedAndMovedPistonTakesItsFieldWithIt) {
  Piston moved = piston(5, 7, {1, 2, 3});
  moved.axes = {{{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}};
  std::vector<Position> points;
  points.reserve(somePoints.size());
  for (const Position& p : somePoints) points.push_back({1 + p[2], 2 + p[0], 3 + p[1]});
  expectNear(Field({moved}, k).at(points), Field({piston(5, 7)}, k).at(somePoints), 2e-4);
}

TEST(FieldTest, WhatCannotRadiateGivesZero) {
  const Pressures zeros(somePoints.size());
  EXPECT_EQ(Field({}, k).at(somePoints), zeros);
  EXPECT_EQ(Field({piston(0, 7)}, k).at(somePoints), zeros);
  EXPECT_EQ(Field({piston(5, 0)}, k).at(somePoints), zeros);
  EXPECT_EQ(Field({piston(5, 7, {0, 0, 0}, 0)}, k).at(somePoints), zeros);
  EXPECT_EQ(Field({piston(5, 7)}, 0).at(somePoints), zeros);
  expectNear(Field({piston(5, 7), piston(0, 7, {1, 2, 3})}, k).at(somePoints),
             Field({piston(5, 7)}, k).at(somePoints), 2e-4);
}

TEST(FieldTest, PressuresThatAllCancelHaveNoPeakAndAreRefused) {
  const Field field({piston(5, 7, {3, 0, 0}), piston(5, 7, {-3, 0, 0}, -1)}, k);
  const std::string error = errorOf([&] { field.at({{0, 0, 1}, {0, 2, 20}}); });
  EXPECT_NE(error.find("pistons that cancel each other"), std::string::npos) << error;
  const Pressures p = field.at({{0, 0, 1}, {0, 2, 20}, {3, 0, 1}});
  EXPECT_LE(std::max(std::abs(p[0]), std::abs(p[1])), 1e-4 * std::abs(p[2]));
}

TEST(FieldTest, ForNegativeKThePressureIsMinusTheConjugate) {
  Pressures expected = Field({piston(5, 7), piston(2, 1, {3, 0, 0}, {0.5, 2})}, k).at(somePoints);
  for (auto& p : expected) p = -std::conj(p);
  EXPECT_EQ(Field({piston(5, 7), piston(2, 1, {3, 0, 0}, {0.5, -2})}, -k).at(somePoints), expected);
}

TEST(FieldTest, TheUnitOfLengthDoesNotMatter) {
  const Pressures expected = Field({piston(5, 7)}, k).at(somePoints, toTolerance(1e-9));
  for (const double unit : {0x1p-40, 0x1p-20, 0x1p20, 0x1p40}) {
    std::vector<Position> points;
    points.reserve(somePoints.size());
    for (const Position& p : somePoints) points.push_back({p[0] * unit, p[1] * unit, p[2] * unit});
    expectNear(Field({piston(5 * unit, 7 * unit)}, k / unit).at(points, toTolerance(1e-9)),
               expected, 2e-9);
  }
}

TEST(FieldTest, ATolerancesPriceIsItsDigits) {
  for (const double side : {0.1, 0.3, 0.5, 0.7, 1.0, 1.3, 2.0, 5.0, 10.0})
    for (const double z : {0.0, 0.1, 1.0}) {
      const Field field({piston(side, side)}, k);
      FieldReport report;
      field.at({{0, 0, z}}, toTolerance(1e-4), &report);
      const double nodes = report.nodes;
      for (const double tolerance : {1e-6, 1e-8, 1e-9, 1e-10, 1e-11, 1e-12}) {
        field.at({{0, 0, z}}, toTolerance(tolerance), &report);
        EXPECT_LE(report.nodes, 10 * nodes)
            << "side " << side << ", z " << z << ", tolerance " << tolerance;
      }
    }
}

/// Expects that each call of a piston at these points keeps each of the tolerances.
void expectKept(const Piston& one, const std::vector<Position>& points,
                const std::vector<double>& tolerances) {
  const std::vector<Piston> pistons = {one};
  for (const double tolerance : tolerances) {
    const Pressures p = Field(pistons, k).at(points, toTolerance(tolerance));
    for (std::size_t n = 0; n < points.size(); ++n)
      EXPECT_LE(std::abs(std::complex<long double>(p[n]) - exactPressure(pistons, k, points[n])),
                tolerance * peakOf(p))
          << tolerance << " at point " << n << " of " << points.size();
  }
}

TEST(FieldTest, TolerancesDownToTheLeastAreKeptNextToThePiston) {
  expectKept(piston(5, 7),
             {{2.5, 3.5, 0},
              {2.5, 3.5, 1},
              {2.5, 3.5, -1},
              {2.5, 1, 0},
              {2.5, 1, -2},
              {2.5 + 1e-12, 1, 0},
              {2.5 - 1e-9, 1, 1e-6},
              {0, 0, 0},
              {2.5, 0, 1e-3},
              {2.5, 20, 0},
              {-3, 5, 0},
              {0, 0, 30}},
             {1e-2, 1e-4, 1e-6, 1e-9, 1e-12});
}

TEST(FieldTest, APointNextToAnEdgeDoesNotSpoilTheOthersOfItsCall) {
  for (const double distance : {1e-12, 1e-9, 1e-6, 1e-3})
    expectKept(piston(0.25, 0.21), {{-0.4, 0.43, 0.01}, {0.125, 0.105 + distance, 0}},
               {1e-4, 1e-6, 1e-7, 1e-8, 1e-9, 1e-10});
}

TEST(FieldTest, NoPressureIsFartherOffThanItsToleranceHoweverFarThePointIs) {
  for (const double R : {1e4, 1e6, 1e8, 1e10, 1e12, 1e15, 1e20, 1e30, 1e100, 1e200})
    for (const Position& direction : {Position{0, 0, 1}, {0.6, 0, 0.8}, {0.36, 0.48, 0.8}})
      for (const double tolerance : {1e-2, 1e-4, 1e-6, 1e-9, 1e-12}) {
        const Position point = {R * direction[0], R * direction[1], R * direction[2]};
        const std::vector<Piston> pistons = {piston(5, 7)};
        Pressures p;
        if (!errorOf([&] { p = Field(pistons, k).at({point}, toTolerance(tolerance)); }).empty())
          continue;
        // Beyond this distance, extended precision does not hold the phase either.
        EXPECT_LE(R, 1e16) << "not refused: tolerance " << tolerance;
        if (R > 1e12) continue;
        const auto exact = exactPressure(pistons, k, point);
        EXPECT_LE(std::abs(std::complex<long double>(p[0]) - exact), tolerance * std::abs(exact))
            << tolerance << " at distance " << R << ", " << direction[0];
      }
}

TEST(FieldTest, SmallPistonsAreComputedToTheirToleranceOrRefused) {
  for (const double side : {1e-2, 1e-3, 1e-4, 1e-6, 1e-8, 1e-10, 1e-15, 1e-25})
    for (const long double R : {1.0, 1e3, 1e5, 1e7})
      for (const double tolerance : {1e-2, 1e-4, 1e-9}) {
        const Position point = {static_cast<double>(0.375 * R), static_cast<double>(0.5 * R),
                                static_cast<double>(std::sqrt(0.609375L) * R)};
        Pressures p;
        if (!errorOf([&] {
               p = Field({piston(side, side)}, k).at({point}, toTolerance(tolerance));
             }).empty())
          continue;
        // Of a point source, which the piston is to some (k·side)²/24, and with the error of R in
        // double precision.
        const auto expected = std::polar(
            k * static_cast<long double>(side) * side / (2 * std::acos(-1.0L) * R), -k * R);
        EXPECT_LE(std::abs(std::complex<long double>(p[0]) - expected),
                  (tolerance + 3 * side * side + 3e-16L * k * R) * std::abs(expected))
            << "side " << side << ", distance " << R << ", tolerance " << tolerance;
      }
}

TEST(FieldTest, LengthsThatOverflowInWavelengthsAreRefused) {
  EXPECT_NE(errorOf([] { Field({piston(1e308, 7)}, k).at(somePoints); }), "");
  EXPECT_NE(errorOf([] { Field({piston(5, 7, {1e308, 0, 0})}, k).at({{-1e308, 0, 1}}); }), "");
  EXPECT_NE(errorOf([] { Field({piston(5, 7)}, 1e300).at(somePoints); }), "");
}

// Errors.

TEST(FieldTest, InvalidPistonsAreNamedWithWhatIsWrong) {
  const std::string sides = "Piston 1: width and height must be finite and at least 0.",
                    centre = "Piston 1: its centre must be finite.",
                    axes = "Piston 1: its axes must be unit vectors at right angles, right-handed.",
                    weight = "Piston 1: its weight must be finite.";
  const auto error = [](auto change) {
    Piston changed = piston(5, 7);
    change(changed);
    return errorOf([&] { Field({piston(1, 1), changed}, k); });
  };
  for (const double bad : {nan, infinity, -infinity}) {
    EXPECT_EQ(error([&](Piston& p) { p.width = bad; }), sides);
    EXPECT_EQ(error([&](Piston& p) { p.height = bad; }), sides);
    EXPECT_EQ(error([&](Piston& p) { p.weight = bad; }), weight);
    EXPECT_EQ(error([&](Piston& p) { p.weight = {1, bad}; }), weight);
    for (std::size_t n = 0; n < 3; ++n) {
      EXPECT_EQ(error([&](Piston& p) { p.centre[n] = bad; }), centre);
      for (std::size_t axis = 0; axis < 3; ++axis)
        EXPECT_EQ(error([&](Piston& p) { p.axes[axis][n] = bad; }), axes);
    }
  }
  EXPECT_EQ(error([&](Piston& p) { p.width = -1e-300; }), sides);
  EXPECT_EQ(error([&](Piston& p) { p.height = -1; }), sides);
  EXPECT_EQ(error([&](Piston& p) { p.axes = {{{1, 0, 0}, {0, 1, 0}, {0, 0, -1}}}; }), axes);
  EXPECT_EQ(error([&](Piston& p) { p.axes = {{{0, 1, 0}, {1, 0, 0}, {0, 0, 1}}}; }), axes);
  EXPECT_EQ(error([&](Piston& p) { p.axes = {{{1, 0, 0}, {0, 0, 0}, {0, 0, 1}}}; }), axes);
  EXPECT_EQ(error([&](Piston& p) { p.axes = {{{1, 0, 0}, {0.6, 0.8, 0}, {0, 0, 1}}}; }), axes);
  EXPECT_EQ(error([&](Piston& p) { p.axes = {{{1, 0, 0}, {0, 1, 0}, {0, 0.6, 0.8}}}; }), axes);
  EXPECT_EQ(error([&](Piston& p) { p.axes[0][0] = 1 + 2e-6; }), axes);
  EXPECT_EQ(error([&](Piston& p) { p.axes[0][0] = 1 + 2e-7; }), "");
  EXPECT_EQ(error([](Piston& p) { p.axes = {{{0, 0.6, 0.8}, {1, 0, 0}, {0, 0.8, -0.6}}}; }), "");
}

TEST(FieldTest, KMustBeFinite) {
  for (const double bad : {nan, infinity, -infinity})
    for (const std::complex<double> number : {std::complex<double>(bad), {1, bad}})
      EXPECT_EQ(errorOf([&] { Field({piston(5, 7)}, number); }), "k must be a finite number.");
}

TEST(FieldTest, OptionsOutOfTheirRangesAreRefused) {
  const Field field({piston(5, 7)}, k);
  const auto error = [&](const FieldOptions& options) {
    return errorOf([&] { field.at(somePoints, options); });
  };
  for (const double bad : {0.0, -1e-4, 0.99e-12, 1.0, 2.0, infinity, nan})
    EXPECT_EQ(error(toTolerance(bad)), "The tolerance must be from 1e-12 to below 1.") << bad;
  for (const int bad : {-1, 513, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
    EXPECT_EQ(error(ofOrder(bad)), "The order must be from 1 to 512, or 0 for a tolerance.") << bad;
  for (const double good : {1e-12, 0.999}) EXPECT_EQ(error(toTolerance(good)), "") << good;
  for (const int good : {1, 512}) EXPECT_EQ(error(ofOrder(good)), "") << good;
  FieldOptions options = ofOrder(10);
  options.tolerance = nan;
  EXPECT_EQ(error(options), "");
}

TEST(FieldTest, GridsOfMorePointsThanAnArrayCanHoldAreRefused) {
  const Field field({piston(5, 7)}, k);
  const std::string text = "The grid has more points than an array can hold. Divide it.";
  AffineGrid grid;
  using Counts = std::array<std::size_t, 3>;
  constexpr std::size_t one = 1;
  for (const Counts& counts :
       {Counts{SIZE_MAX, SIZE_MAX, SIZE_MAX}, Counts{SIZE_MAX, 1, 1}, Counts{1, one << 60, 1},
        Counts{one << 32, one << 32, 1}, Counts{one << 20, one << 20, one << 20}}) {
    grid.counts = counts;
    EXPECT_EQ(errorOf([&] { field.on(grid); }), text)
        << counts[0] << " x " << counts[1] << " x " << counts[2];
  }
  const std::vector<double> axis(one << 20);
  EXPECT_EQ(errorOf([&] { field.on(AxesGrid{axis, axis, axis}); }), text);
}

TEST(FieldTest, AGridOfMorePointsThanTheMemoryHoldsIsRefusedWithAFieldError) {
  if (!support::memoryIsOnlyOurs) GTEST_SKIP() << "memory is the sanitizer's";
  AffineGrid grid;
  grid.counts = {1 << 20, 1 << 20, 1 << 12};
  EXPECT_THROW(Field({piston(5, 7)}, k).on(grid), FieldError);
}

TEST(FieldTest, WhatARefusalRecommendsIsPossible) {
  const Field field({piston(5, 7)}, k);
  for (double R = 1e4; R < 1e9; R *= 1.5) {
    const std::vector<Position> points = {{R, 0.7, R}};
    const std::string text = errorOf([&] { field.at(points, toTolerance(1e-12)); });
    const std::string before =
        "Double precision cannot keep the tolerance at these points. Ask for at least ";
    ASSERT_EQ(text.find(before), 0u) << text << " " << R;
    const double possible = std::stod(text.substr(before.size()));
    EXPECT_EQ(errorOf([&] { field.at(points, toTolerance(possible)); }), "") << R;
  }
}

TEST(FieldTest, ARefusalRecommendsNothingThatIsNoTolerance) {
  const Field field({piston(5, 7)}, k);
  for (const double R : {1e12, 1e14, 1e16, 1e20, 1e60}) {
    const std::string text = errorOf([&] { field.at({{R, 0.7, R}}); });
    EXPECT_NE(text, "") << R;
    const std::size_t at = text.find("at least ");
    if (at != std::string::npos) {
      EXPECT_LT(std::stod(text.substr(at + 9)), 1) << text;
    }
  }
}

// What a call reports.

TEST(FieldTest, TheReportContainsWhatWasUsed) {
  const Field field({piston(5, 7)}, k);
  FieldReport report;
  const double peak = peakOf(field.at(somePoints, {}, &report));
  EXPECT_TRUE(report.single);
  EXPECT_GE(report.leastOrder, 1);
  EXPECT_LE(report.leastOrder, report.mostOrder);
  EXPECT_LE(report.mostOrder, 64);
  EXPECT_GE(report.nodes, 4.0 * report.leastOrder * static_cast<double>(somePoints.size()));
  EXPECT_LE(report.bound, 1e-4 * peak);
  EXPECT_GE(report.bound, 0.8e-4 * peak);
  const double nodes = report.nodes;

  field.at(somePoints, toTolerance(1e-9), &report);
  EXPECT_TRUE(report.precise);
  EXPECT_GT(report.nodes, nodes);
  EXPECT_LE(report.bound, 1e-9 * peak);

  field.at(somePoints, ofOrder(7), &report);
  EXPECT_EQ(report.leastOrder, 7);
  EXPECT_EQ(report.mostOrder, 7);
  EXPECT_TRUE(report.single);
  EXPECT_FALSE(report.precise);
  EXPECT_TRUE(std::isnan(report.bound));

  Field({}, k).at(somePoints, {}, &report);
  EXPECT_EQ(report.leastOrder, 0);
  EXPECT_EQ(report.mostOrder, 0);
  EXPECT_FALSE(report.single || report.precise);
  EXPECT_EQ(report.nodes, 0);
}

TEST(FieldTest, OnePointNearThePistonMakesATolerancePossibleForManyThatAreFar) {
  const Field field({piston(5, 7)}, k);
  const double R = 1e5;
  EXPECT_NE(errorOf([&] { field.at({{R, 0.7, R}}, toTolerance(1e-10)); }), "");
  for (const std::size_t near : {0u, 1u, 777u, 4999u}) {
    std::vector<Position> points(5000, {R, 0.7, R});
    points[near] = {0, 0, 1};
    EXPECT_EQ(errorOf([&] { field.at(points, toTolerance(1e-10)); }), "") << "near point " << near;
  }
}

// Progress.

TEST(FieldTest, ProgressRunsFromZeroToOneOnTheCallingThread) {
  const Field field({piston(0.5, 0.5)}, k);
  AffineGrid grid;
  grid.counts = {1000, 700, 1};
  FieldOptions options = toTolerance(1e-2);
  std::vector<double> fractions;
  const auto caller = std::this_thread::get_id();
  options.progress = [&](double fraction) {
    EXPECT_EQ(std::this_thread::get_id(), caller);
    fractions.push_back(fraction);
  };
  field.on(grid, options);
  ASSERT_GE(fractions.size(), 3u);
  EXPECT_EQ(fractions.front(), 0);
  EXPECT_EQ(fractions.back(), 1);
  EXPECT_TRUE(std::is_sorted(fractions.begin(), fractions.end()));
  for (std::size_t n = 1; n < fractions.size(); ++n)
    EXPECT_LE(fractions[n] - fractions[n - 1], 0.5);

  fractions.clear();
  field.at(somePoints, options);
  EXPECT_EQ(fractions.front(), 0);
  EXPECT_EQ(fractions.back(), 1);
}

TEST(FieldTest, ProgressOfAGridThatIsSampledInVainDoesNotFall) {
  std::vector<Piston> row;
  for (int n = 0; n < 64; ++n) row.push_back(piston(0.27, 5, {(n - 31.5) * 0.3, 0, 0}));
  AxesGrid grid;
  for (int n = 0; n < 400; ++n) {
    grid.x.push_back(-50 + n * (100.0 / 399));
    grid.z.push_back(1 + n * (99.0 / 399));
  }
  grid.y = {0};
  for (const double tolerance : {1e-4, 1e-8, 1e-9, 1e-10, 1e-11}) {
    FieldOptions options = toTolerance(tolerance);
    double before = 0;
    options.progress = [&](double fraction) {
      EXPECT_GE(fraction, before) << "for the tolerance " << tolerance;
      before = fraction;
    };
    Field(row, k / 0.3).on(grid, options);
    EXPECT_EQ(before, 1) << "for the tolerance " << tolerance;
  }
}

TEST(FieldTest, WhatProgressThrowsEndsTheCallAndTheNextCallWorks) {
  const Field field({piston(5, 7)}, k);
  const Pressures expected = field.at(somePoints);
  for (const double last : {0.0, 1.0}) {
    FieldOptions options;
    options.progress = [&](double fraction) {
      if (fraction >= last) throw std::logic_error("enough");
    };
    try {
      field.at(somePoints, options);
      ADD_FAILURE() << "did not throw";
    } catch (const std::logic_error& error) {
      EXPECT_STREQ(error.what(), "enough");
    }
    EXPECT_EQ(field.at(somePoints), expected);
  }
}

TEST(FieldTest, CallsPrintNothing) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  Field({piston(5, 7)}, k).at(somePoints);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// The launchers of single precision compute the same.

class FieldOnDeviceTest : public support::DeviceTest {
 protected:
  void SetUp() override {
    DeviceTest::SetUp();
    if (IsSkipped()) return;
    for (const float z : {0.0f, 0.125f, 1.0f, 7.5f, 40.0f, -0.5f, -3.0f})
      for (const float y : {0.0f, 1.25f, -3.5f, 8.0f})
        for (const float x : {0.0f, 2.5f, -1.5f, 6.0f, 30.0f}) points.push_back({x, y, z});
  }

  Pressures onTheDevice(int order) const {
    setCudaIntegratorParameters("RectangularPiston", order);
    std::vector<float> positions;
    for (const Position& p : points)
      for (const double coordinate : p) positions.push_back(static_cast<float>(coordinate));
    std::vector<pistonfield::Complex> out(points.size());
    RectangularPiston_func_unstructured(out.data(), static_cast<int>(out.size()), positions.data(),
                                        height, width, wavenumber);
    Pressures pressures;
    for (const auto& p : out) pressures.emplace_back(p.re, p.im);
    return pressures;
  }

  /// Expects pressures that differ by the rounding errors of two evaluations.
  void expectNearIn(const Pressures& actual, const Pressures& expected) const {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t n = 0; n < points.size(); ++n) {
      const auto [x, y, z] = points[n];
      EXPECT_LE(std::abs(actual[n] - expected[n]),
                2 * support::tolerance(x, y, z, width / 2, height / 2, wavenumber))
          << x << ", " << y << ", " << z;
    }
  }

  static constexpr float width = 5, height = 7, wavenumber = 6.25f;
  const Field field{{piston(width, height)}, wavenumber};
  std::vector<Position> points;
};

// Behind a piston the launchers integrate other, steeper functions.

TEST_F(FieldOnDeviceTest, AGivenOrderGivesTheResultsOfThatOrder) {
  points.erase(
      std::remove_if(points.begin(), points.end(), [](const Position& p) { return p[2] < 0; }),
      points.end());
  for (const int order : {1, 2, 3, 10, 17, 64, 100, 512}) {
    SCOPED_TRACE(order);
    expectNearIn(field.at(points, ofOrder(order)), onTheDevice(order));
  }
}

TEST_F(FieldOnDeviceTest, HighOrdersAndATightToleranceGiveTheSameAlsoBehindThePiston) {
  expectNearIn(field.at(points, ofOrder(64)), onTheDevice(64));
  expectNearIn(field.at(points, toTolerance(1e-9)), onTheDevice(64));
}

}  // namespace
