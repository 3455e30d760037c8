#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "field/Evaluation.h"
#include "field/ExactPressure.h"
#include "field/Pistons.h"
#include "support/AnyScene.h"
#include "support/WithoutDevice.h"

// Random fields against an evaluation in extended precision: the tolerance is kept, or refused
// where double precision cannot keep it. All fields, and all kinds of points, are drawn anew in the
// same sequence in each run.

using pistonfield::AffineGrid;
using pistonfield::AxesGrid;
using pistonfield::Evaluation;
using pistonfield::Field;
using pistonfield::FieldError;
using pistonfield::FieldOptions;
using pistonfield::FieldReport;
using pistonfield::ListPoints;
using Piston = pistonfield::Field::Piston;
using pistonfield::Position;
using pistonfield::Used;
using pistonfield::Work;
using support::Chance;

namespace {

constexpr double tolerances[] = {1e-2, 1e-4, 1e-6, 1e-9};

/// Where a point lies in the axes of a piston: the kinds of its `coordinate` along x and along y,
/// and of its `height`. Lengths are in wavelengths.
using Kind = std::array<int, 3>;

const Kind kinds[] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0},  // on the face, an edge, a corner
                      {0, 2, 1}, {2, 2, 1},             // next to an edge, to a corner
                      {1, 0, 2}, {1, 1, 2}, {1, 3, 0},  // above them, in line with an edge
                      {4, 4, 2}, {5, 5, 2}, {5, 5, 3}, {1, 0, 3},  // on the axis, around, behind
                      {0, 0, 4}};                                  // far, in any direction

/// Along a side that reaches from −half to half.
double coordinate(Chance& c, int kind, double half) {
  switch (kind) {
    case 0:
      return c.between(-half, half);
    case 1:
      return c.sign() * half;
    case 2:
      return half + c.sign() * c.ofAnySize(1e-12, 0.1);
    case 3:
      return half * c.ofAnySize(1, 100);
    case 4:
      return 0;
    default:
      return c.between(-3 * half, 3 * half);
  }
}

double height(Chance& c, int kind) {
  switch (kind) {
    case 0:
      return 0;
    case 1:
      return c.ofAnySize(1e-12, 1);
    case 2:
      return c.ofAnySize(1e-4, 100);
    default:
      return -c.ofAnySize(1e-3, 100);
  }
}

Position anyPosition(Chance& c, const Kind& kind, double a, double b) {
  if (kind[2] != 4)
    return {coordinate(c, kind[0], a), coordinate(c, kind[1], b), height(c, kind[2])};
  const double R = c.ofAnySize(100, 1e5), slope = c.between(0, M_PI / 2),
               turn = c.between(0, 2 * M_PI);
  return {R * std::sin(slope) * std::cos(turn), R * std::sin(slope) * std::sin(turn),
          R * std::cos(slope)};
}

/// The reverse of inPiston.
Position fromPiston(const Piston& piston, const Position& own) {
  Position p = piston.centre;
  for (std::size_t n = 0; n < 3; ++n)
    for (std::size_t axis = 0; axis < 3; ++axis) p[n] += own[axis] * piston.axes[axis][n];
  return p;
}

/// Whether the point lies behind an edge, but for rounding: the pressure jumps there.
bool isAtJump(const Piston& piston, const Position& p) {
  const Position own = inPiston(piston, p);
  const double rounding =
      1e-14 * (std::sqrt(dot(p, p)) + std::sqrt(dot(piston.centre, piston.centre)));
  const double x = std::fabs(own[0]) - piston.width / 2, y = std::fabs(own[1]) - piston.height / 2;
  return own[2] < 0 && std::max(x, y) <= rounding && std::max(x, y) >= -rounding;
}

/// A field of 1 to 64 pistons, in a unit from a micrometre to a kilometre for wavelengths around a
/// millimetre.
class RandomField {
 public:
  explicit RandomField(std::mt19937& random) : random_(random), chance_(random) {
    lambda_ = chance_.ofAnySize(1e-6, 1e3);
    k_ = 2 * M_PI / lambda_;
    drawPistons();
    drawPoints();
    for (const Position& point : points_) exact_.push_back(exactPressure(pistons_, k_, point));
    for (const auto& p : exact_) peak_ = std::max(peak_, static_cast<double>(std::abs(p)));
  }

  std::vector<std::complex<double>> evaluate(const FieldOptions& options,
                                             FieldReport& report) const {
    const Field field(pistons_, k_);
    if (const auto* axes = std::get_if<AxesGrid>(&grid_)) return field.on(*axes, options, &report);
    if (const auto* affine = std::get_if<AffineGrid>(&grid_))
      return field.on(*affine, options, &report);
    return field.at(points_, options, &report);
  }

  /// What the sum of the pistons' pressures at the points uses, and its largest error over the
  /// tolerance, each of them evaluated alone.
  std::pair<Used, double> sumOnDevice(double tolerance) const {
    Evaluation evaluation(pistons_, k_, tolerance, 0);
    std::vector<std::complex<double>> p(points_.size());
    Work work({}, 1);
    evaluation.runOnDevice(ListPoints(points_.data(), points_.size()), p.data(), work);
    double worst = 0;
    for (std::size_t n = 0; n < p.size(); ++n)
      worst = std::max(worst,
                       static_cast<double>(std::abs(std::complex<long double>(p[n]) - exact_[n])));
    return {evaluation.used(), worst / tolerance};
  }

  /// What the CPU's evaluation uses.
  Used sumOnCpu(double tolerance) const {
    Evaluation evaluation(pistons_, k_, tolerance, 0);
    std::vector<std::complex<double>> p(points_.size());
    Work work({}, 1);
    evaluation.run(ListPoints(points_.data(), points_.size()), p.data(), work);
    return evaluation.used();
  }

  const std::vector<std::complex<long double>>& exact() const { return exact_; }
  double peak() const { return peak_; }

  /// How much the pressure at a point changes if the distances from the pistons change by 2⁻⁵³, at
  /// least: the sum of the pistons' 2⁻⁵³·(1 + (k + s)·R), R being the distance of the farthest
  /// corner, or twice the sum of what the position on an affine grid is computed from. s is the
  /// integral of k/2πR along the edges, by which a displacement changes the pressure of a narrow
  /// piston.
  double rounding() const {
    double most = 0;
    for (const Position& point : points_) {
      double sum = 0;
      for (const Piston& piston : pistons_) {
        const Position own = inPiston(piston, point);
        const double R = std::hypot(std::fabs(own[0]) + piston.width / 2,
                                    std::fabs(own[1]) + piston.height / 2, own[2]);
        sum += std::abs(piston.weight) * (own[2] < 0 ? 3 : 1) *
               (1 + (k_ + steepness(piston, own)) * std::max(R, 2 * terms()));
      }
      most = std::max(most, sum);
    }
    return most * 0x1p-53;
  }

  std::string describe(std::size_t point) const {
    std::ostringstream text;
    text.precision(17);
    text << points_.size() << (grid_.index() ? " points of a grid" : " points") << ", this one at "
         << points_[point][0] / lambda_ << ", " << points_[point][1] / lambda_ << ", "
         << points_[point][2] / lambda_ << "; " << pistons_.size() << " pistons, the first of "
         << pistons_[0].width / lambda_ << " by " << pistons_[0].height / lambda_
         << " wavelengths, lambda " << lambda_;
    return text.str();
  }

 private:
  /// The integral of k/2πR along the edges.
  double steepness(const Piston& piston, const Position& own) const {
    const std::array sides = {piston.width, piston.height};
    double sum = 0;
    for (const std::size_t across : {std::size_t{0}, std::size_t{1}})
      for (const double sign : {-1, 1}) {
        const double length = sides[1 - across],
                     d = std::hypot(own[across] + sign * sides[across] / 2, own[2],
                                    1e-15 * lambda_);
        sum += std::asinh((own[1 - across] + length / 2) / d) -
               std::asinh((own[1 - across] - length / 2) / d);
      }
    return sum / lambda_;
  }

  /// The largest sum of magnitudes of what a position on an affine grid is computed from.
  double terms() const {
    const auto* grid = std::get_if<AffineGrid>(&grid_);
    double sum = 0;
    for (std::size_t component = 0; grid && component < 3; ++component) {
      sum += std::fabs(grid->origin[component]);
      for (std::size_t axis = 0; axis < 3; ++axis)
        sum +=
            static_cast<double>(grid->counts[axis] - 1) * std::fabs(grid->steps[axis][component]);
    }
    return sum;
  }

  bool happens(double probability) { return chance_.between(0, 1) < probability; }

  void drawPistons() {
    const bool turned = happens(0.4), equal = happens(0.5), alone = happens(0.5);
    const int count = alone ? 1 : static_cast<int>(chance_.ofAnySize(2, 65));
    const auto side = [&] { return chance_.ofAnySize(0.1, 100) * lambda_; };
    const double width = side(), height = side();
    for (int n = 0; n < count; ++n) {
      Piston piston;
      piston.width = equal ? width : side();
      piston.height = equal ? height : side();
      const auto place = [&](double range) { return chance_.between(-range, range) * lambda_; };
      if (!alone) piston.centre = {place(20), place(20), turned ? place(5) : 0};
      if (turned) piston.axes = anyRotation(random_);
      if (!alone)
        piston.weight = std::polar(chance_.ofAnySize(0.1, 1), chance_.between(0, 2 * M_PI));
      pistons_.push_back(piston);
    }
  }

  Position drawPoint(const Kind& kind) {
    const auto& piston = pistons_[static_cast<std::size_t>(
        chance_.between(0, static_cast<double>(pistons_.size())))];
    Position own =
        anyPosition(chance_, kind, piston.width / 2 / lambda_, piston.height / 2 / lambda_);
    // The halves of the sides exactly, where the point is to lie above them.
    for (double& coordinate : own) coordinate *= lambda_;
    if (std::fabs(std::fabs(own[0]) / piston.width - 0.5) < 1e-15)
      own[0] = std::copysign(piston.width / 2, own[0]);
    if (std::fabs(std::fabs(own[1]) / piston.height - 0.5) < 1e-15)
      own[1] = std::copysign(piston.height / 2, own[1]);
    return fromPiston(piston, own);
  }

  /// Whether rounding decides on which side of a jump a point lies. For a piston in the origin it
  /// does not.
  bool isAmbiguous(const Position& p) const {
    if (pistons_.size() == 1 && pistons_[0].axes == Piston().axes) return false;
    return std::any_of(pistons_.begin(), pistons_.end(),
                       [&](const Piston& piston) { return isAtJump(piston, p); });
  }

  const Kind& anyKind() {
    return kinds[static_cast<std::size_t>(chance_.between(0, std::size(kinds)))];
  }

  /// Points of one kind or of all: a call's peak is that of its nearest points.
  void drawPoints() {
    const double list = chance_.between(0, 1);
    if (list < 0.15) return drawAxesGrid();
    if (list < 0.3) return drawAffineGrid();
    const bool alike = happens(0.4);
    const Kind& first = anyKind();
    const std::size_t count = std::clamp<std::size_t>(128 / pistons_.size(), 4, 40);
    while (points_.size() < count) {
      const Position point = drawPoint(alike ? first : anyKind());
      points_.push_back(isAmbiguous(point) ? drawPoint(kinds[0]) : point);
    }
  }

  void drawAxesGrid() {
    AxesGrid grid;
    do {
      grid = {};
      points_.clear();
      for (int n = 0; n < 2; ++n) {
        const Position p = drawPoint(anyKind()), q = drawPoint(anyKind());
        grid.x.insert(grid.x.end(), {p[0], q[0]});
        grid.y.push_back(p[1]);
        grid.z.push_back(p[2]);
      }
      for (const double z : grid.z)
        for (const double y : grid.y)
          for (const double x : grid.x) points_.push_back({x, y, z});
    } while (anyIsAmbiguous());
    grid_ = grid;
  }

  void drawAffineGrid() {
    AffineGrid grid;
    do {
      points_.clear();
      grid.origin = drawPoint(anyKind());
      grid.counts = {3, 1, 4};
      for (Position& step : grid.steps) {
        step = drawPoint(anyKind());
        for (std::size_t n = 0; n < 3; ++n) step[n] = (step[n] - grid.origin[n]) / 4;
      }
      for (double m = 0; m < 4; ++m)
        for (double i = 0; i < 3; ++i) {
          Position p = grid.origin;
          for (std::size_t n = 0; n < 3; ++n) p[n] += i * grid.steps[0][n] + m * grid.steps[2][n];
          points_.push_back(p);
        }
    } while (anyIsAmbiguous());
    grid_ = grid;
  }

  bool anyIsAmbiguous() const {
    return std::any_of(points_.begin(), points_.end(),
                       [&](const Position& p) { return isAmbiguous(p); });
  }

  std::mt19937& random_;
  Chance chance_;
  double lambda_ = 0, k_ = 0, peak_ = 0;
  std::vector<Piston> pistons_;
  std::vector<Position> points_;  // also those of a grid
  std::variant<std::monostate, AxesGrid, AffineGrid> grid_;
  std::vector<std::complex<long double>> exact_;
};

bool hasDevice() {
  int count = 0;
  return cudaGetDeviceCount(&count) == cudaSuccess && count > 0;
}

/// The parameter is the seed.
class RandomFieldsTest : public testing::TestWithParam<unsigned> {
 protected:
  struct Measured {
    double worst = 0;
    int refused = 0;
  };

  /// Returns the worst error over the tolerance times the peak, or nothing if the field was
  /// refused.
  static std::optional<double> worstOf(const RandomField& field, double tolerance,
                                       std::string& refusal) {
    FieldOptions options;
    options.tolerance = tolerance;
    FieldReport report;
    std::vector<std::complex<double>> p;
    try {
      p = field.evaluate(options, report);
    } catch (const FieldError& error) {
      refusal = error.what();
      return {};
    }
    EXPECT_EQ(p.size(), field.exact().size());
    EXPECT_LE(report.bound, tolerance * field.peak());
    double worst = 0;
    for (std::size_t n = 0; n < p.size(); ++n) {
      const auto error =
          static_cast<double>(std::abs(std::complex<long double>(p[n]) - field.exact()[n]));
      EXPECT_LE(error, report.bound) << "tolerance " << tolerance << ": " << field.describe(n);
      worst = std::max(worst, error / (tolerance * field.peak()));
    }
    return worst;
  }
};

TEST_P(RandomFieldsTest, TheToleranceIsKeptOrRefusedWhereDoublePrecisionCannotKeepIt) {
  const bool all = std::getenv("PISTONFIELD_LONG");
  const int count = all ? 250 : 5;
  std::mt19937 random(GetParam());
  Measured measured[std::size(tolerances)];
  for (int n = 0; n < count; ++n) {
    const RandomField field(random);
    for (std::size_t t = 0; t < std::size(tolerances); ++t) {
      SCOPED_TRACE("field " + std::to_string(n));
      std::string refusal;
      if (const auto worst = worstOf(field, tolerances[t], refusal)) {
        measured[t].worst = std::max(measured[t].worst, *worst);
        continue;
      }
      ++measured[t].refused;
      EXPECT_LT(tolerances[t] * field.peak(), 4 * field.rounding())
          << refusal << " " << field.describe(0);
      EXPECT_LT(tolerances[t], 1e-6) << refusal << " " << field.describe(0);
    }
  }
  double worst = 0;
  for (std::size_t t = 0; t < std::size(tolerances); ++t) {
    std::cout << "tolerance " << tolerances[t] << ": largest error " << measured[t].worst
              << " of it, " << measured[t].refused << " of " << count << " fields refused\n";
    worst = std::max(worst, measured[t].worst);
  }
  if (all) {
    EXPECT_GT(worst, 0.05) << "more is computed than the tolerance needs";
  }
}

/// With the bounds of a single point instead of a pack's.
TEST_P(RandomFieldsTest, TheKernelKeepsTheToleranceWhereTheCpuKeepsIt) {
  if (!hasDevice()) return support::skipWithoutDevice();
  const int count = std::getenv("PISTONFIELD_LONG") ? 250 : 5;
  std::mt19937 random(GetParam());
  double worst[std::size(tolerances)] = {};
  bool single = false, precise = false;
  for (int n = 0; n < count; ++n) {
    const RandomField field(random);
    for (std::size_t t = 0; t < std::size(tolerances); ++t) {
      const double tolerance = tolerances[t] * field.peak();
      const auto [used, error] = field.sumOnDevice(tolerance);
      const Used onCpu = field.sumOnCpu(tolerance);
      single |= used.single;
      precise |= used.precise;
      EXPECT_LE(used.excess, 1.05 * std::max(onCpu.excess, 1.0)) << field.describe(0);
      EXPECT_LE(used.nodes, 2 * onCpu.nodes) << field.describe(0);
      if (used.excess > 1) continue;
      EXPECT_LE(error, 1) << "field " << n << ", tolerance " << tolerances[t] << ": "
                          << field.describe(0);
      worst[t] = std::max(worst[t], error);
    }
  }
  EXPECT_TRUE(single && precise);
  for (std::size_t t = 0; t < std::size(tolerances); ++t)
    std::cout << "tolerance " << tolerances[t] << ": largest error " << worst[t] << " of it\n";
}

INSTANTIATE_TEST_SUITE_P(, RandomFieldsTest, testing::Range(1u, 9u),
                         testing::PrintToStringParamName());

}  // namespace
