#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <string>
#include <vector>

#include "field/ExactPressure.h"
#include "field/Pistons.h"
#include "field/field.h"

// Fields that a search for errors above the tolerance found. Each is within the tolerance or
// refused.

using pistonfield::AffineGrid;
using pistonfield::AxesGrid;
using pistonfield::Field;
using pistonfield::FieldError;
using pistonfield::FieldOptions;
using Piston = pistonfield::Field::Piston;
using pistonfield::Position;

namespace {

using Pressures = std::vector<std::complex<double>>;
constexpr double pi = 3.14159265358979323846;

std::vector<double> axis(double first, double step, int count) {
  std::vector<double> values;
  for (int n = 0; n < count; ++n) values.push_back(first + n * step);
  return values;
}

Piston turned(Piston p, double angle) {
  const double cosine = std::cos(angle), sine = std::sin(angle);
  p.axes = {{{cosine, sine, 0}, {-sine, cosine, 0}, {0, 0, 1}}};
  return p;
}

std::vector<Position> pointsOf(const AxesGrid& grid) {
  std::vector<Position> points;
  for (const double z : grid.z)
    for (const double y : grid.y)
      for (const double x : grid.x) points.push_back({x, y, z});
  return points;
}

bool isFinite(const Position& p) {
  return std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]);
}

/// Expects that the pressures at some hundred of the points are within the tolerance.
void expectWithin(const std::vector<Piston>& pistons, double k, const std::vector<Position>& points,
                  const Pressures& pressures, double tolerance) {
  double peak = 0, largest = 0;
  for (const std::complex<double>& p : pressures)
    if (std::abs(p) > peak) peak = std::abs(p);
  for (std::size_t n = 0; n < points.size(); n += 1 + points.size() / 100) {
    if (!isFinite(points[n])) continue;
    ASSERT_TRUE(std::isfinite(std::abs(pressures[n]))) << n;
    const std::complex<double> exact(exactPressure(pistons, k, points[n]));
    largest = std::max(largest, std::abs(pressures[n] - exact));
  }
  EXPECT_LE(largest, tolerance * peak);
}

/// The same for what `compute` returns, unless it refuses.
template <class Compute>
void expectWithinOrRefused(const std::vector<Piston>& pistons, double k,
                           const std::vector<Position>& points, double tolerance,
                           const Compute& compute) {
  FieldOptions options;
  options.tolerance = tolerance;
  Pressures pressures;
  try {
    pressures = compute(Field(pistons, k), options);
  } catch (const FieldError& error) {
    EXPECT_NE(std::string(error.what()).find("keep"), std::string::npos) << error.what();
    return;
  }
  expectWithin(pistons, k, points, pressures, tolerance);
}

void checkGrid(const std::vector<Piston>& pistons, const AxesGrid& grid, double tolerance,
               double k = 2 * pi) {
  expectWithinOrRefused(
      pistons, k, pointsOf(grid), tolerance,
      [&](const Field& field, const FieldOptions& options) { return field.on(grid, options); });
}

void checkList(const std::vector<Piston>& pistons, const std::vector<Position>& points,
               double tolerance, double k = 2 * pi) {
  expectWithinOrRefused(
      pistons, k, points, tolerance,
      [&](const Field& field, const FieldOptions& options) { return field.at(points, options); });
}

std::vector<double> times(double unit, std::vector<double> values) {
  for (double& value : values) value *= unit;
  return values;
}

}  // namespace

TEST(HardFieldsTest, TheFirstValueOfAnAxisMayBeNaNOrInfinite) {
  const std::vector<Piston> pistons = {piston(0.3, 2, {-0.5, 0.013, 0}),
                                       piston(0.3, 2, {-0.4, 0.013, 0})};
  for (const double value :
       {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()})
    for (auto one : {&AxesGrid::x, &AxesGrid::y, &AxesGrid::z}) {
      AxesGrid grid{axis(-2, 0.05, 81), axis(-1.7, 0.05, 21), axis(1, 0.05, 10)};
      (grid.*one)[0] = value;
      checkGrid(pistons, grid, 1e-4);
    }
}

TEST(HardFieldsTest, APointMayLieOnAWeakPiston) {
  for (const auto& [size, weight] : {std::pair(1e-3, 1e-20), {1e-6, 1e-14}, {1.0, 1e-40}})
    checkList({piston(1, 1, {5, 0, 0}), piston(size, size, {0, 0, 0}, weight)},
              {{0, 0, 0}, {5, 0, 1}}, 1e-2);
}

TEST(HardFieldsTest, BehindAPistonImagesOnAnEdgeAreNotThoseBesideIt) {
  checkGrid({piston(0.4, 1, {0.5, 0, 0})}, {{0, 0.3, 0.7, 1}, {0}, {-0.3}}, 1e-4);
}

TEST(HardFieldsTest, PistonsMayBeTurnedByAlmostNothing) {
  for (const double tolerance : {1e-7, 1e-8, 1e-9})
    checkGrid({turned(piston(3, 2), 2e-8)}, {axis(-20, 1. / 32, 1281), axis(10, 0.5, 32), {20}},
              tolerance);
}

TEST(HardFieldsTest, PistonsMayNearlyCancelEachOther) {
  const AxesGrid grid{axis(-4, 1. / 32, 257), axis(0.1, 0.25, 32), {3}};
  for (const double apart : {1e-5, 1e-6, 1e-7})
    for (const double tolerance : {1e-8, 1e-9, 1e-10, 1e-11})
      checkGrid({piston(0.5, 1), piston(0.5, 1, {apart, 0, 0}, -1)}, grid, tolerance);
}

TEST(HardFieldsTest, WeightsMayAddUpToNothing) {
  std::vector<Piston> pistons;
  for (const double weight : {1, -6, 15, -20, 15, -6, 1})
    pistons.push_back(piston(0.5, 1, {0, 0, 0}, weight));
  pistons.push_back(piston(0.5, 1, {0.25, 0, 0}, 1e-12));
  for (const double tolerance : {1e-5, 1e-6})
    checkGrid(pistons, {axis(-4, 1. / 16, 129), axis(0.1, 0.25, 32), {3}}, tolerance);
}

TEST(HardFieldsTest, NarrowPistonsHaveSteepFields) {
  checkList({piston(8.2729e-05, 53.3914)}, {{1.79905e-05, 26.6957, 0}}, 1e-12, 2 * pi / 0.692856);
  for (const double width : {0.0021818326039101869, 1e-4, 1e-6})
    checkList(
        {piston(width, 72.170375057099093)},
        {{-0.368 * width, 36.085159444912549, 0}, {-0.36800373 * width, 36.08515944491255, 0}},
        1.2e-12, 2 * pi / 1.619407028355702);
}

TEST(HardFieldsTest, PointsMayBeNextToTheEdgeOfATinyPiston) {
  for (const double tolerance : {1e-4, 1e-5, 1e-6})
    for (const double x : {5.0037e-10, 4.9963e-10})
      checkList({piston(1e-9, 1e-9)}, {{x, 1e-10, 0}}, tolerance);
  checkList({piston(1e-7, 1e-7)}, {{5.0037e-8, 1e-8, 0}}, 1e-6);
}

TEST(HardFieldsTest, ImagesAreNotTakenForEachOtherNextToTinyPistons) {
  const double side = 1e-9, little = 6 * 0x1p-53;
  checkGrid({piston(side, side)}, {{-1, -0.6 * side, 0.6 * side + little, 1}, {0}, {0.1 * side}},
            1e-8);
}

TEST(HardFieldsTest, RegularRowsMayBeFarFromTheOrigin) {
  std::vector<Piston> pistons;
  for (int n = 0; n < 60; ++n)
    pistons.push_back(piston(0.4, 2, {1e7 - 9 + n * 0.31, 0, 0}, std::polar(1.0, n * 0.7)));
  checkGrid(pistons, {axis(1e7 - 75, 0.34375, 401), axis(0.25, 0.25, 16), {10, 11}}, 1e-11);
}

TEST(HardFieldsTest, PointsOfAnAffineGridMayBeRounded) {
  // The positions that the grid means, without the rounding of products and sums.
  const auto check = [](const AffineGrid& grid, const Piston& at, double tolerance) {
    FieldOptions options;
    options.tolerance = tolerance;
    Pressures pressures;
    try {
      pressures = Field({at}, 2 * pi).on(grid, options);
    } catch (const FieldError&) {
      return;
    }
    double peak = 0, largest = 0;
    for (const auto& p : pressures) peak = std::max(peak, std::abs(p));
    Piston centred = at;
    centred.centre = {0, 0, 0};
    std::size_t n = 0;
    for (std::size_t j = 0; j < grid.counts[1]; ++j)
      for (std::size_t i = 0; i < grid.counts[0]; ++i, ++n) {
        Position apart{};
        for (std::size_t c = 0; c < 3; ++c)
          apart[c] = static_cast<double>(
              static_cast<long double>(grid.origin[c]) - static_cast<long double>(at.centre[c]) +
              static_cast<long double>(i) * static_cast<long double>(grid.steps[0][c]) +
              static_cast<long double>(j) * static_cast<long double>(grid.steps[1][c]));
        const std::complex<double> exact(exactPressure(centred, 2 * pi, apart));
        largest = std::max(largest, std::abs(pressures[n] - exact));
      }
    EXPECT_LE(largest, tolerance * peak);
  };
  AffineGrid grid;
  grid.origin = {1e6 + 0.1, 0.2, 0.7};
  grid.steps = {{{0.1, 0, 0}, {0, 0.13, 0}, {0, 0, 1}}};
  grid.counts = {7, 3, 1};
  check(grid, piston(1, 1, {1e6, 0, 0}), 1e-11);
  check(grid, piston(1e-3, 1, {1e6, 0, 0}), 1e-10);
  grid.origin = {0.1, 0.2, 0.7};
  grid.steps = {{{1e8 + 0.1, 0.01, 0}, {-1e8, 0.3, 0.1}, {0, 0, 1}}};
  grid.counts = {3, 3, 1};
  for (const double tolerance : {1e-8, 1e-10}) check(grid, piston(1, 1), tolerance);
}

TEST(HardFieldsTest, LengthsMayBeInAnyUnitThatDoublesCanHandle) {
  const auto check = [](double unit) {
    const AxesGrid grid{times(unit, axis(-2, 0.05, 81)), times(unit, axis(-1, 0.0625, 20)),
                        times(unit, {1, 2})};
    const double k = 2 * pi / unit;
    FieldOptions options;
    const std::vector<Piston> pistons = {
        piston(0.3 * unit, 0.5 * unit, {0, 0.1 * unit, 0}),
        piston(0.3 * unit, 0.5 * unit, {0.5 * unit, 0.1 * unit, 0}, 0.2)};
    const Pressures pressures = Field(pistons, k).on(grid, options);
    expectWithin(pistons, k, pointsOf(grid), pressures, options.tolerance);
  };
  for (const double unit : {1e-98, 1e-50, 1e50, 1e99}) check(unit);
  for (const double unit : {1e-101, 1e-170, 1e101, 1e160, 1e200})
    EXPECT_THROW(check(unit), FieldError) << unit;
}
