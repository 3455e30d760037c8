#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <random>
#include <vector>

#include "field/field.h"
#include "lanes/InstructionSet.h"
#include "support/AnyScene.h"

// Random regular grids, whose rows are sampled and interpolated and whose mirror images are copied,
// against the same points in lists, which are evaluated one by one.

using pistonfield::AffineGrid;
using pistonfield::AxesGrid;
using pistonfield::Field;
using pistonfield::FieldError;
using pistonfield::FieldOptions;
using pistonfield::FieldReport;
using Piston = pistonfield::Field::Piston;
using pistonfield::InstructionSet;
using pistonfield::Position;
using support::Chance;

namespace {

/// Pistons in or near the plane z = 0, some of them equal, and a grid in front of them. Lengths are
/// in wavelengths.
class RandomGrid {
 public:
  explicit RandomGrid(std::mt19937& random) : chance_(random) {
    const double step[] = {chance_.ofAnySize(0.02, 1), chance_.ofAnySize(0.02, 1)};
    const std::size_t counts[] = {count(), count()};
    drawPistons(step);
    drawGrid(step, counts);
  }

  /// The affine grid has the points of the other, turned about the axis y with the pistons.
  const std::vector<Piston>& pistons() const { return pistons_; }
  const AxesGrid& grid() const { return grid_; }
  AffineGrid turned(double angle) const {
    const Position x = about(angle, {1, 0, 0}), z = about(angle, {0, 0, 1});
    AffineGrid affine;
    const auto along = [](const std::vector<double>& axis) {
      return axis.size() < 2 ? 0
                             : (axis.back() - axis.front()) / static_cast<double>(axis.size() - 1);
    };
    affine.origin = about(angle, {grid_.x[0], grid_.y[0], grid_.z[0]});
    for (std::size_t n = 0; n < 3; ++n) {
      affine.steps[0][n] = along(grid_.x) * x[n];
      affine.steps[1][n] = n == 1 ? along(grid_.y) : 0;
      affine.steps[2][n] = along(grid_.z) * z[n];
    }
    affine.counts = {grid_.x.size(), grid_.y.size(), grid_.z.size()};
    return affine;
  }
  std::vector<Piston> turnedPistons(double angle) const {
    std::vector<Piston> turned = pistons_;
    for (Piston& piston : turned) {
      piston.centre = about(angle, piston.centre);
      for (Position& axis : piston.axes) axis = about(angle, axis);
    }
    return turned;
  }

  Position point(std::size_t n) const {
    const std::size_t nx = grid_.x.size(), ny = grid_.y.size();
    return {grid_.x[n % nx], grid_.y[n / nx % ny], grid_.z[n / nx / ny]};
  }
  std::size_t points() const { return grid_.x.size() * grid_.y.size() * grid_.z.size(); }

 private:
  bool happens(double probability) { return chance_.between(0, 1) < probability; }
  std::size_t count() {
    return happens(0.3) ? 1 : static_cast<std::size_t>(chance_.ofAnySize(2, 300));
  }

  static Position about(double angle, const Position& p) {
    return {std::cos(angle) * p[0] + std::sin(angle) * p[2], p[1],
            -std::sin(angle) * p[0] + std::cos(angle) * p[2]};
  }

  void drawPistons(const double* step) {
    const double width = chance_.ofAnySize(0.1, 20), height = chance_.ofAnySize(0.1, 20);
    const bool equal = happens(0.7), onSteps = happens(0.4), weighted = happens(0.5);
    const bool tilted = happens(0.3);
    const int columns = happens(0.3) ? 1 : static_cast<int>(chance_.ofAnySize(2, 40));
    const int rows = happens(0.7) ? 1 : static_cast<int>(chance_.ofAnySize(2, 5));
    const double pitch = onSteps ? 2 * step[0] : chance_.ofAnySize(0.1, 2) * width;
    for (int row = 0; row < rows; ++row)
      for (int column = 0; column < columns; ++column) {
        Piston piston{width, height};
        if (!equal) piston.width *= chance_.between(0.5, 1);
        piston.centre = {(column - 0.5 * (columns - 1)) * pitch,
                         (row - 0.5 * (rows - 1)) * 1.1 * height, 0};
        if (tilted) {
          const double angle = 0.02 * (column - 0.5 * (columns - 1));
          piston.axes = {about(angle, {1, 0, 0}), {0, 1, 0}, about(angle, {0, 0, 1})};
        }
        if (weighted)
          piston.weight = std::polar(chance_.between(0.2, 1), chance_.between(0, 2 * M_PI));
        pistons_.push_back(piston);
      }
  }

  void drawGrid(const double* step, const std::size_t* counts) {
    const auto axis = [&](std::size_t n, double by) {
      const double last = 0.5 * static_cast<double>(n - 1);
      const double aside = happens(0.3) ? chance_.between(-30, 30) : 0;
      std::vector<double> values;
      for (std::size_t i = 0; i < n; ++i)
        values.push_back(aside + (static_cast<double>(i) - last) * by);
      return values;
    };
    grid_.x = axis(counts[0], step[0]);
    grid_.y = axis(counts[1], step[1]);
    const std::size_t planes =
        std::clamp<std::size_t>(20000 / counts[0] / counts[1], 1, happens(0.5) ? 3 : 100);
    const double nearest = chance_.ofAnySize(0.01, 100), apart = chance_.ofAnySize(0.02, 3);
    for (std::size_t m = 0; m < planes; ++m)
      grid_.z.push_back(nearest + static_cast<double>(m) * apart);
  }

  Chance chance_;
  std::vector<Piston> pistons_;
  AxesGrid grid_;
};

/// The largest error at some of the points, relative to the tolerance times the peak.
double worstOf(const RandomGrid& scene, const std::vector<std::complex<double>>& p,
               const FieldReport& report, std::mt19937& random, double tolerance) {
  constexpr double k = 2 * M_PI;
  double peak = 0;
  for (const std::complex<double>& value : p) peak = std::max(peak, std::abs(value));
  std::vector<std::size_t> indices = {0, p.size() - 1};
  std::vector<Position> positions = {scene.point(0), scene.point(p.size() - 1)};
  for (int n = 0; n < 100; ++n) {
    indices.push_back(random() % p.size());
    positions.push_back(scene.point(indices.back()));
  }
  // One of the points has the peak.
  const auto loudest = std::max_element(
      p.begin(), p.end(), [](const auto& a, const auto& b) { return std::norm(a) < std::norm(b); });
  indices.push_back(static_cast<std::size_t>(loudest - p.begin()));
  positions.push_back(scene.point(indices.back()));
  FieldOptions exact;
  exact.tolerance = tolerance / 20;
  const auto expected = Field(scene.pistons(), k).at(positions, exact);
  double worst = 0;
  for (std::size_t n = 0; n < indices.size(); ++n)
    worst = std::max(worst, std::abs(p[indices[n]] - expected[n]));
  EXPECT_LE(report.bound, tolerance * peak * (1 + tolerance));
  EXPECT_LE(worst, report.bound + exact.tolerance * peak);
  return worst / (tolerance * peak);
}

/// The parameter is the newest instruction set that is used.
class RegularGridsTest : public testing::TestWithParam<InstructionSet> {
 protected:
  void SetUp() override {
    if (!pistonfield::has(GetParam())) GTEST_SKIP() << "this machine does not have the set";
    before_ = pistonfield::limitInstructionSet(GetParam());
  }
  void TearDown() override {
    if (!IsSkipped()) pistonfield::limitInstructionSet(before_);
  }

 private:
  InstructionSet before_ = InstructionSet::OLDEST;
};

TEST_P(RegularGridsTest, GridsHaveThePressuresOfTheirPointsWithinTheTolerance) {
  constexpr double k = 2 * M_PI;
  std::mt19937 random(5);
  const int count = std::getenv("PISTONFIELD_LONG") ? 1000 : 40;
  for (const double tolerance : {1e-2, 1e-4, 1e-6, 1e-8}) {
    double worst = 0;
    int refused = 0;
    for (int n = 0; n < count; ++n) {
      SCOPED_TRACE("tolerance " + std::to_string(tolerance) + ", grid " + std::to_string(n));
      const RandomGrid scene(random);
      FieldOptions options;
      options.tolerance = tolerance;
      FieldReport report;
      std::vector<std::complex<double>> p;
      const double angle = 0.3 * n;
      try {
        p = n % 4 == 0
                ? Field(scene.turnedPistons(angle), k).on(scene.turned(angle), options, &report)
                : Field(scene.pistons(), k).on(scene.grid(), options, &report);
        ASSERT_EQ(p.size(), scene.points());
        worst = std::max(worst, worstOf(scene, p, report, random, tolerance));
      } catch (const FieldError&) {  // pistons cancel each other almost
        ++refused;
      }
    }
    std::cout << "tolerance " << tolerance << ": largest error " << worst << " of it, " << refused
              << " of " << count << " grids refused\n";
    EXPECT_LE(refused, tolerance < 1e-6 ? count / 25 : 0);
    EXPECT_GT(worst, 1e-4);
  }
}

TEST_P(RegularGridsTest, ARowIsSampledLessDenselyThanItsPoints) {
  AxesGrid grid;
  for (int n = 0; n < 400; ++n) grid.x.push_back(0.01 + n * 0.05);
  grid.y = {0.3};
  for (int n = 0; n < 40; ++n) grid.z.push_back(5 + n * 0.5);
  const Field field({{5, 7.5}}, 2 * M_PI);
  FieldReport inRows, oneByOne;
  field.on(grid, {}, &inRows);
  std::vector<Position> points;
  for (const double z : grid.z)
    for (const double x : grid.x) points.push_back({x, 0.3, z});
  field.at(points, {}, &oneByOne);
  EXPECT_LT(inRows.nodes, oneByOne.nodes / 3);
  std::swap(grid.x, grid.y);
  FieldReport inColumns;
  Field({{7.5, 5}}, 2 * M_PI).on(grid, {}, &inColumns);
  EXPECT_LT(inColumns.nodes, oneByOne.nodes / 3);
}

INSTANTIATE_TEST_SUITE_P(Sets, RegularGridsTest,
                         testing::Values(InstructionSet::OLDEST, InstructionSet::AVX2,
                                         InstructionSet::AVX512),
                         [](const auto& test) {
                           return test.param == InstructionSet::OLDEST ? "Oldest"
                                  : test.param == InstructionSet::AVX2 ? "Avx2"
                                                                       : "Avx512";
                         });

}  // namespace
