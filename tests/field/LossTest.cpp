#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdlib>
#include <initializer_list>
#include <iostream>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "field/DoubleIntegral.h"
#include "field/Evaluation.h"
#include "field/Pistons.h"
#include "field/arrays.h"
#include "lanes/InstructionSet.h"
#include "support/AnyScene.h"
#include "support/WithoutDevice.h"

// Fields in lossy media, of which the wave number is complex, against the double integral.

using pistonfield::AffineGrid;
using pistonfield::AxesGrid;
using pistonfield::Evaluation;
using pistonfield::Field;
using pistonfield::FieldError;
using pistonfield::FieldOptions;
using pistonfield::FieldReport;
using pistonfield::InstructionSet;
using pistonfield::ListPoints;
using pistonfield::Position;
using pistonfield::Work;
using support::Chance;
using Piston = Field::Piston;
using Complex = std::complex<double>;
using Pressures = std::vector<Complex>;

namespace {

constexpr double pi = 3.14159265358979323846;

/// The largest difference; infinite if one is not a number.
double differenceOf(const Pressures& p, const Pressures& q) {
  double largest = 0;
  for (std::size_t n = 0; n < p.size(); ++n) {
    const double difference = std::abs(p[n] - q[n]);
    if (!(difference <= largest)) largest = std::isnan(difference) ? INFINITY : difference;
  }
  return largest;
}

/// A field, with its pressures by the double integral.
struct Scene {
  std::vector<Piston> pistons;
  Complex K;
  std::vector<Position> points;
  Pressures exact;

  void integrate() {
    const DoubleIntegral integral(pistons, K);
    for (const Position& p : points) exact.push_back(integral(p));
  }

  /// The largest error at the points over the tolerance times the peak.
  double errorFor(double tolerance, FieldReport& report) const {
    const Pressures p = Field(pistons, K).at(points, toTolerance(tolerance), &report);
    EXPECT_LE(report.bound, tolerance * peakOf(exact));
    return differenceOf(p, exact) / (tolerance * peakOf(exact));
  }
};

/// The parameter is the seed.
class RandomLossTest : public testing::TestWithParam<unsigned> {
 protected:
  /// What may be refused: how many scenes, up to which tolerance, and which tolerance is kept then.
  struct Refusals {
    int most;
    double below, kept;
  };

  /// Expects each scene to be within its tolerance or refused.
  template <class Draw>
  void expectWithin(int count, const Refusals& refusals, const Draw& draw) {
    double worst = 0;
    int refused = 0;
    for (int n = 0; n < count; ++n) {
      Scene scene = draw();
      if (scene.points.empty()) continue;
      scene.integrate();
      const double tolerance = chance.ofAnySize(1e-9, 3e-2);
      SCOPED_TRACE(describe(scene, n) + ", tolerance " + std::to_string(tolerance * 1e9) + "e-9");
      FieldReport report;
      double error = 0;
      try {
        error = scene.errorFor(tolerance, report);
      } catch (const FieldError& refusal) {
        ++refused;
        ASSERT_EQ(std::string(refusal.what()).substr(0, 28), "Double precision cannot keep");
        ASSERT_LT(tolerance, refusals.below) << refusal.what();
        error = scene.errorFor(refusals.kept, report);
      }
      EXPECT_LE(error, 1);
      worst = std::max(worst, error);
    }
    std::cout << "largest error " << worst << " of the tolerance, " << refused << " of " << count
              << " refused\n";
    EXPECT_LE(refused, refusals.most);
    EXPECT_GT(worst, 1e-3) << "more is computed than the tolerances need";
  }

  static std::string describe(const Scene& scene, int n) {
    const double lambda = 2 * pi / scene.K.real();
    return "field " + std::to_string(n) + ": " + std::to_string(scene.pistons.size()) +
           " pistons, the first of " + std::to_string(scene.pistons[0].width / lambda) + " by " +
           std::to_string(scene.pistons[0].height / lambda) + " wavelengths, attenuation " +
           std::to_string(-scene.K.imag() * lambda) + " nepers a wavelength";
  }

  /// The points that are not behind a piston by more than some nepers.
  static void leaveOutFarBehind(Scene& scene) {
    const auto isFarBehind = [&](const Position& p) {
      return std::any_of(scene.pistons.begin(), scene.pistons.end(), [&](const Piston& piston) {
        return inPiston(piston, p)[2] * scene.K.imag() > 20;
      });
    };
    scene.points.erase(std::remove_if(scene.points.begin(), scene.points.end(), isFarBehind),
                       scene.points.end());
  }

  bool happens(double probability) { return chance.between(0, 1) < probability; }

  /// One piston or several, in a unit from a micrometre to a kilometre; points around one of them
  /// up to 1000 wavelengths away, where waves have decayed by up to 30 nepers; and on them, above
  /// edges and on the axis.
  Scene anyScene() {
    Scene scene;
    const double lambda = chance.ofAnySize(1e-6, 1e3), k = 2 * pi / lambda;
    const bool isTurned = happens(0.4), isAlone = happens(0.5);
    const int count = isAlone ? 1 : static_cast<int>(chance.ofAnySize(2, 9));
    for (int m = 0; m < count; ++m) {
      Piston p = piston(lambda * chance.ofAnySize(0.02, isAlone ? 60 : 15),
                        lambda * chance.ofAnySize(0.02, isAlone ? 60 : 15));
      if (isTurned) p.axes = anyRotation(random);
      if (!isAlone) {
        p.centre = {lambda * chance.between(-15, 15), lambda * chance.between(-15, 15),
                    isTurned ? lambda * chance.between(-2, 2) : 0};
        p.weight = std::polar(chance.ofAnySize(0.1, 1), chance.between(0, 2 * pi));
      }
      scene.pistons.push_back(p);
    }
    const double reach = lambda * chance.ofAnySize(0.3, 1000),
                 nepers = happens(0.3) ? chance.ofAnySize(1e-4, 30) : chance.between(0, 30);
    scene.K = {k, -std::min(nepers / reach, chance.between(0.5, 1) * k)};
    const bool areAlike = happens(0.5);
    for (double left = chance.between(1, 9); left >= 1; --left) {
      const auto& p = scene.pistons[static_cast<std::size_t>(chance.between(0, count))];
      const Position own = anyPoint(p, areAlike ? reach : reach * chance.between(0, 1), lambda);
      Position point = p.centre;
      for (std::size_t n = 0; n < 3; ++n)
        for (std::size_t axis = 0; axis < 3; ++axis) point[n] += own[axis] * p.axes[axis][n];
      scene.points.push_back(point);
    }
    leaveOutFarBehind(scene);
    return scene;
  }

  Position anyPoint(const Piston& p, double distance, double lambda) {
    const double slope = std::acos(chance.between(0, 1)), turn = chance.between(0, 2 * pi);
    Position own = {distance * std::sin(slope) * std::cos(turn),
                    distance * std::sin(slope) * std::sin(turn), distance * std::cos(slope)};
    switch (static_cast<int>(chance.between(0, 20))) {
      case 0:
      case 1:
        own[2] = lambda * chance.ofAnySize(1e-9, 1);
        break;
      case 2:
        own[2] = 0;
        break;
      case 3:
        own[0] = p.width / 2 * (1 + chance.sign() * chance.ofAnySize(1e-9, 0.1));
        break;
      case 4:
        own = {p.width * chance.between(-0.5, 0.5), p.height * chance.between(-0.5, 0.5), distance};
        break;
      case 5:
        own = {0, 0, distance};
        break;
      default:
        break;
    }
    return own;
  }

  /// A piston of up to 10,000 wavelengths or down to a millionth, at its edges, corners, axis and
  /// to its side, as far as 30 nepers.
  Scene anyHardScene() {
    Scene scene;
    double width = chance.ofAnySize(1e-6, 1e4), height = chance.ofAnySize(1e-6, 1e4);
    if (width > 300) height = std::clamp(height, 1e-3, 300.0);
    if (height > 300) width = std::clamp(width, 1e-3, 30.0);
    scene.pistons = {piston(width, height)};
    scene.K = {2 * pi, -2 * pi * chance.ofAnySize(0.03, 1)};
    const double a = width / 2, b = height / 2, reach = -30 / scene.K.imag();
    const bool areAlike = happens(0.5);
    const int first = static_cast<int>(chance.between(0, 8));
    for (double left = chance.between(1, 9); left >= 1; --left) {
      const auto height0 = [&] { return happens(0.4) ? 0 : chance.ofAnySize(1e-9, reach); };
      Position own = {chance.between(-a, a), chance.between(-b, b), 0};
      switch (areAlike ? first : static_cast<int>(chance.between(0, 8))) {
        case 0:
          break;  // on the piston
        case 1:
          own[2] = chance.ofAnySize(1e-12, 1);
          break;
        case 2:
          own[0] = a * (1 + chance.sign() * chance.ofAnySize(1e-12, 1e-2));
          own[2] = height0();
          break;
        case 3:
          own = {a, b, height0()};
          break;
        case 4:
          own = {0, 0, chance.ofAnySize(1e-3, reach)};
          break;
        case 5:
          own[0] = a + chance.between(0, reach);
          own[2] = height0();
          break;
        case 6:
          own = {a + chance.between(0, 0.6 * reach), b + chance.between(0, 0.6 * reach), height0()};
          break;
        default:
          own[2] = chance.between(0, reach);
          break;
      }
      scene.points.push_back(own);
    }
    return scene;
  }

  std::mt19937 random{GetParam()};
  Chance chance{random};
  const int times = std::getenv("PISTONFIELD_LONG") ? 20 : 1;
};

TEST_P(RandomLossTest, FieldsAreWithinTheTolerance) {
  expectWithin(125 * times, {2 + times, 5e-8, 1e-6}, [&] { return anyScene(); });
}

TEST_P(RandomLossTest, FieldsOfTinyAndWidePistonsNextToTheirEdgesAreWithinTheTolerance) {
  expectWithin(20 * times, {2 + times, 3e-6, 1e-2}, [&] { return anyHardScene(); });
}

/// Of a grid with long rows, some points.
TEST_P(RandomLossTest, RowsOfGridsAreWithinTheTolerance) {
  double worst = 0;
  int sampled = 0, refused = 0;
  const int count = 40 * times;
  for (int n = 0; n < count; ++n) {
    const double lambda = chance.ofAnySize(1e-6, 1e3), k = 2 * pi / lambda,
                 step = lambda * chance.ofAnySize(0.01, 0.5),
                 z = lambda * chance.ofAnySize(0.1, 100);
    Piston p = piston(lambda * chance.ofAnySize(0.1, 60), lambda * chance.ofAnySize(0.1, 60));
    const bool isInclined = happens(0.3);
    const double slope = isInclined ? chance.between(0, 1.5) : 0;
    p.axes = {
        {{std::cos(slope), 0, -std::sin(slope)}, {0, 1, 0}, {std::sin(slope), 0, std::cos(slope)}}};
    std::vector<Piston> pistons;
    const int copies = happens(0.5) ? 1 : static_cast<int>(chance.ofAnySize(2, 33));
    for (int m = 0; m < copies; ++m) {
      pistons.push_back(p);
      pistons[static_cast<std::size_t>(m)].centre[0] = (m - copies / 2) * step * 3;
      if (copies > 1)
        pistons[static_cast<std::size_t>(m)].weight = std::polar(1.0, chance.between(0, 2 * pi));
    }
    AffineGrid grid;
    grid.origin = {lambda * chance.between(isInclined ? 0 : -20, 20),
                   lambda * chance.between(-10, 10), z};
    grid.steps = {{{step, 0, 0}, {0, step, 0}, {0, 0, step}}};
    grid.counts = {1, 1, 1};
    const auto along = static_cast<std::size_t>(chance.between(0, 3));
    grid.counts[along] = static_cast<std::size_t>(chance.ofAnySize(50, 2000));
    grid.counts[(along + 1) % 3] = static_cast<std::size_t>(chance.ofAnySize(1, 20));
    // At the first points.
    const double decay = chance.between(0, 30) / (z + std::fabs(grid.origin[0]) + copies * step);
    const Complex K(k, -std::min(decay, k * chance.ofAnySize(1e-4, 1)));

    const double tolerance = chance.ofAnySize(1e-9, 1e-2);
    FieldReport report;
    Pressures pressures;
    const std::string refusal =
        errorOf([&] { pressures = Field(pistons, K).on(grid, toTolerance(tolerance), &report); });
    if (!refusal.empty()) {
      ++refused;
      EXPECT_LT(tolerance, 5e-8) << "grid " << n << ": " << refusal;
      continue;
    }
    const double peak = peakOf(pressures);
    sampled += report.nodes < 8.0 * static_cast<double>(pressures.size() * pistons.size());
    const DoubleIntegral exact(pistons, K);
    for (int m = 0; m < 8; ++m) {
      const auto point = static_cast<std::size_t>(
          m == 0 ? 0 : chance.between(0, static_cast<double>(pressures.size())));
      Position at = grid.origin;
      std::size_t rest = point;
      for (std::size_t axis = 0; axis < 3; ++axis) {
        at[axis] += static_cast<double>(rest % grid.counts[axis]) * step;
        rest /= grid.counts[axis];
      }
      const double error = std::abs(pressures[point] - exact(at)) / (tolerance * peak);
      EXPECT_LE(error, 1) << "grid " << n << ", point " << point << ", tolerance " << tolerance;
      worst = std::max(worst, error);
    }
  }
  std::cout << "largest error " << worst << " of the tolerance; " << sampled << " of " << count
            << " grids from few samples\n";
  EXPECT_GE(sampled, count / 20);
  EXPECT_LE(refused, times);
}

INSTANTIATE_TEST_SUITE_P(, RandomLossTest, testing::Range(1u, 9u),
                         testing::PrintToStringParamName());

class LossTest : public testing::Test {
 protected:
  /// 5 by 7 wavelengths.
  const Piston piston_ = piston(5, 7);
  static constexpr double k = 2 * pi;
  const Complex K{k, -0.3};
};

TEST_F(LossTest, BehindAPistonItsWaveContinuesAndGrows) {
  // In front of the piston, and how much of the plane around the projection it covers.
  const std::pair<Position, double> places[] = {
      {{0, 0, 3}, 1},      {{1, -2, 0.1}, 1},     {{2.4999, 3, 20}, 1}, {{2.5, 1, 2}, 0.5},
      {{1, -3.5, 8}, 0.5}, {{2.5, 3.5, 4}, 0.25}, {{2.6, 0, 2}, 0},     {{30, 9, 10}, 0}};
  for (const auto& [front, share] : places) {
    const Position behind = {front[0], front[1], -front[2]};
    const Field field({piston_}, K);
    for (const double tolerance : {1e-3, 1e-9}) {
      const Complex p = field.at({front}, toTolerance(tolerance))[0],
                    q = field.at({behind}, toTolerance(tolerance))[0];
      const Complex expected = p + share * 2.0 * std::sin(K * front[2]);
      EXPECT_LE(std::abs(q - expected), 2 * tolerance * std::max(std::abs(p), std::abs(q)))
          << front[0] << " " << front[1] << " " << front[2];
    }
  }
}

TEST_F(LossTest, FarBehindAPistonTheFieldIsRefused) {
  const Field field({piston_}, K);
  const std::string grows =
      "In a lossy medium waves grow behind a piston, and at some point by more than 60 nepers. "
      "Leave out points behind pistons.";
  for (const double nepers : {60.5, 89.0, 250.0, 699.0, 701.0, 1e5})
    for (const int order : {0, 20}) {
      FieldOptions options;
      options.order = order;
      // On a corner, too.
      for (const Position& behind :
           {Position{1, 1, nepers / K.imag()}, Position{2.5, 3.5, nepers / K.imag()}})
        EXPECT_EQ(errorOf([&] { field.at({{0, 0, 1}, behind}, options); }), grows) << nepers;
      EXPECT_EQ(errorOf([&] {
                  field.on(AxesGrid{{0, 1}, {0}, {nepers / K.imag(), 1}}, options);
                }),
                grows)
          << nepers;
    }
  const Position behind = {1, 1, 59.5 / K.imag()};
  const Complex p = field.at({behind})[0], exact = DoubleIntegral({piston_}, K)(behind);
  EXPECT_LE(std::abs(p - exact), 1e-4 * std::abs(exact));
  // Beside the piston nothing grows.
  EXPECT_EQ(errorOf([&] { field.at({{0, 0, 1}, {2.6, 0, 1000 / K.imag()}}); }), "");
}

/// Parts of a wide piston have edges on its face, at which rounding must not matter.
TEST_F(LossTest, BehindAWidePistonPointsBelongToIt) {
  Scene scene;
  scene.pistons = {piston(100, 60)};
  scene.K = {k, -0.3 * k};
  for (const double x : {0.0, 100.0 / 26, 300.0 / 26, 7.0})
    for (const double y : {0.0, 60.0 / 8, 3.0}) scene.points.push_back({x, y, -0.2});
  // So far to the side that parts would be needed if it were alone.
  scene.points.push_back({66, 0, 0.01});
  scene.integrate();
  FieldReport report;
  for (const double tolerance : {1e-4, 1e-9, 1e-12}) {
    double error = 0;
    if (errorOf([&] { error = scene.errorFor(tolerance, report); }).empty()) {
      EXPECT_LE(error, 1) << tolerance;
    } else {
      EXPECT_LT(tolerance, 1e-9);
    }
  }
}

TEST_F(LossTest, OfTheNegativeRealPartThePressureIsMinusTheConjugate) {
  const std::vector<Position> points = {{0, 0, 1}, {3, 2, 0.5}, {10, -4, 12}, {1, 1, -2}};
  const AxesGrid grid{{-2, 0.5, 3}, {0, 1}, {1, 4}};
  const Field positive({piston_}, K), negative({piston_}, -std::conj(K));
  for (const double tolerance : {1e-2, 1e-9}) {
    const Pressures p = positive.at(points, toTolerance(tolerance)),
                    q = negative.at(points, toTolerance(tolerance));
    for (std::size_t n = 0; n < p.size(); ++n) EXPECT_EQ(q[n], -std::conj(p[n])) << n;
    const Pressures onGrid = positive.on(grid, toTolerance(tolerance)),
                    mirrored = negative.on(grid, toTolerance(tolerance));
    for (std::size_t n = 0; n < onGrid.size(); ++n) EXPECT_EQ(mirrored[n], -std::conj(onGrid[n]));
  }
  // Of weights, the conjugates.
  const Pressures p = Field({piston(5, 7, {}, {1, 2})}, K).at(points),
                  q = Field({piston(5, 7, {}, {1, -2})}, -std::conj(K)).at(points);
  for (std::size_t n = 0; n < p.size(); ++n) EXPECT_EQ(q[n], -std::conj(p[n])) << n;
}

TEST_F(LossTest, WithoutAttenuationTheBitsAreThoseOfARealK) {
  const std::vector<Position> points = {{0, 0, 1}, {3, 2, 0.5}, {10, -4, 120}, {1, 1, -2}};
  const AxesGrid grid{{-2, 0.5, 3}, {0, 1}, {1, 4}};
  const AffineGrid rows{{-9, 0.3, 2}, {{{0.1, 0, 0}, {0, 0.2, 0}, {0, 0, 0.5}}}, {200, 3, 2}};
  FieldOptions order;
  order.order = 12;
  for (const double sign : {1, -1})
    for (const Complex number : {Complex(sign * k, 0.0), Complex(sign * k, -0.0)})
      for (const FieldOptions& options : {toTolerance(1e-2), toTolerance(1e-10), order}) {
        const Field expected({piston_}, sign * k), field({piston_}, number);
        EXPECT_EQ(field.at(points, options), expected.at(points, options));
        EXPECT_EQ(field.on(grid, options), expected.on(grid, options));
        EXPECT_EQ(field.on(rows, options), expected.on(rows, options));
      }
}

/// The least attenuation that is not 0 changes no pressure by more than the tolerance.
TEST_F(LossTest, TheFieldIsContinuousInTheAttenuation) {
  const std::vector<Position> points = {{0, 0, 1}, {3, 2, 0.5}, {10, -4, 12}, {1, 1, -2}};
  for (const double tolerance : {1e-3, 1e-10}) {
    const Pressures p = Field({piston_}, k).at(points, toTolerance(tolerance));
    for (const double alpha : {1e-16, 1e-40, 5e-324}) {
      const Pressures q = Field({piston_}, {k, -alpha}).at(points, toTolerance(tolerance));
      EXPECT_LE(differenceOf(p, q), 2 * tolerance * peakOf(p)) << alpha;
    }
  }
}

TEST_F(LossTest, GridsAreThePointsTheyConsistOf) {
  AxesGrid grid{{-7, -3.3, 0, 2.5, 3.3, 7}, {-3.5, 0, 3.5}, {0, 0.4, 9, 60}};
  std::vector<Position> points;
  for (const double z : grid.z)
    for (const double y : grid.y)
      for (const double x : grid.x) points.push_back({x, y, z});
  for (const double tolerance : {1e-2, 1e-5, 1e-9}) {
    const Pressures p = Field({piston_}, K).on(grid, toTolerance(tolerance)),
                    q = Field({piston_}, K).at(points, toTolerance(tolerance));
    EXPECT_LE(differenceOf(p, q), 2 * tolerance * peakOf(q)) << tolerance;
  }
}

TEST_F(LossTest, MirrorImagesAreEqual) {
  const AxesGrid grid{{-4, -1.5, 0, 1.5, 4}, {-3, -1, 1, 3}, {0.5, 2, 30}};
  const Pressures p = Field({piston_}, K).on(grid);
  const auto at = [&](std::size_t i, std::size_t j, std::size_t m) {
    return p[i + 5 * (j + 4 * m)];
  };
  for (std::size_t m = 0; m < 3; ++m)
    for (std::size_t j = 0; j < 4; ++j)
      for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(at(i, j, m), at(4 - i, j, m));
        EXPECT_EQ(at(i, j, m), at(i, 3 - j, m));
      }
}

TEST_F(LossTest, AGivenOrderIsThatOfEveryIntegral) {
  const std::vector<Position> points = {{0, 0, 1}, {3, 2, 0.5}, {10, -4, 12}, {1, 1, 30}};
  const DoubleIntegral exact({piston_}, K);
  double last = 1;
  for (const int order : {2, 8, 40, 200}) {
    FieldOptions options;
    options.order = order;
    FieldReport report;
    const Pressures p = Field({piston_}, K).at(points, options, &report);
    EXPECT_EQ(report.leastOrder, order);
    EXPECT_EQ(report.mostOrder, order);
    EXPECT_TRUE(std::isnan(report.bound));
    double error = 0;
    for (std::size_t n = 0; n < points.size(); ++n)
      error = std::max(error, std::abs(p[n] - exact(points[n])));
    EXPECT_LE(error, order == 2 ? 1 : order == 8 ? 0.1 : 3e-6) << order;
    if (order <= 40) {
      EXPECT_LT(error, last) << order;
    }
    last = error;
  }
}

TEST_F(LossTest, DeepInTheMediumNothingArrives) {
  const Field field({piston_}, K);
  FieldOptions order;
  order.order = 20;
  for (const double nepers : {100.0, 650.0, 700.0, 750.0, 1e5, 1e8}) {
    const Position deep = {1, 2, -nepers / K.imag()};
    const Position aside = {-nepers / K.imag(), 2, 0.5};
    // Next to points with larger pressures they are within the tolerance, though they do not count.
    for (const double tolerance : {1e-2, 1e-6, 1e-12}) {
      const Pressures p = field.at({{0, 0, 1}, deep, aside}, toTolerance(tolerance));
      EXPECT_LE(std::abs(p[1]), 1e-40) << nepers;
      EXPECT_LE(std::abs(p[2]), tolerance * std::abs(p[0])) << nepers;
    }
    EXPECT_LE(std::abs(field.at({deep}, order)[0]), 1e-40);
    // Alone, they have too little pressure for a tolerance.
    for (const Position& alone : {deep, aside})
      EXPECT_EQ(errorOf([&] {
                  field.at({alone});
                }).find("Double precision cannot keep any tolerance at these points"),
                0U)
          << nepers;
  }
}

/// To the side of a wide piston, the integrals along its edges leave rounding errors that are
/// larger than the pressures.
TEST_F(LossTest, RoundingErrorsAreNoPeak) {
  const std::vector<Position> points = {{-69.8, -8.1, 20.3}, {-71.2, 4.1, 16},  {25.9, -24.8, 63.7},
                                        {-71.3, -13.1, 9.9}, {-53.3, 43.4, 25}, {22.5, 26, 49.7}};
  const Field field({piston(45, 41)}, {k, -4.8});
  for (const double tolerance : {0.5, 1e-2, 1e-3, 1e-6, 1e-12})
    EXPECT_EQ(errorOf([&] {
                field.at(points, toTolerance(tolerance));
              }).find("Double precision cannot keep any tolerance at these points"),
              0U)
        << tolerance;
}

TEST_F(LossTest, AGridDownToAThousandNepersIsWithinTheTolerance) {
  const Complex lossy(k, -0.1 * k);
  const double depth = 1000 / (0.1 * k);
  const DoubleIntegral exact({piston_}, lossy);
  for (const bool isDense : {false, true}) {
    AffineGrid grid;
    grid.origin = {-2, 0.5, 0};
    grid.counts = {5, 1, isDense ? std::size_t{4000} : std::size_t{100}};
    grid.steps = {{{1, 0, 0}, {0, 1, 0}, {0, 0, depth / static_cast<double>(grid.counts[2] - 1)}}};
    for (const double tolerance : {1e-2, 1e-5, 1e-9}) {
      const Pressures p = Field({piston_}, lossy).on(grid, toTolerance(tolerance));
      const double peak = peakOf(p);
      for (std::size_t n = 0; n < p.size(); n += n < 200 ? 7 : p.size() / 50) {
        const Position at = {-2 + static_cast<double>(n % 5), 0.5,
                             static_cast<double>(n / 5) * grid.steps[2][2]};
        EXPECT_LE(std::abs(p[n] - exact(at)), tolerance * peak) << n;
      }
    }
  }
}

/// Products of rules for parts of the piston, since the integrals along its edges cancel.
TEST_F(LossTest, ToTheSideOfAWidePistonThePressureHasAllItsDigits) {
  for (const double distance : {20.0, 60.0, 90.0}) {
    Scene scene;
    scene.pistons = {piston(60, 45)};
    scene.K = {k, -0.3};
    scene.points = {{30 + distance, 3, 0.1}};
    scene.integrate();
    FieldReport report;
    for (const double tolerance : {1e-2, 1e-4, 1e-7})
      EXPECT_LE(scene.errorFor(tolerance, report), 1) << distance;
  }
}

TEST_F(LossTest, EveryInstructionSetAndTheGpuThreadsCodeKeepTheTolerance) {
  std::mt19937 random(5);
  Chance chance(random);
  std::vector<Piston> pistons;
  for (int n = 0; n < 3; ++n) {
    pistons.push_back(piston(chance.between(0.5, 9), chance.between(0.5, 9),
                             {chance.between(-9, 9), chance.between(-9, 9), 0},
                             std::polar(1.0, chance.between(0, 6))));
    const double slope = 0.05 * n;
    pistons.back().axes = {
        {{1, 0, 0}, {0, std::cos(slope), std::sin(slope)}, {0, -std::sin(slope), std::cos(slope)}}};
  }
  std::vector<Position> points;
  for (int n = 0; n < 100; ++n)
    points.push_back({chance.between(-40, 40), chance.between(-40, 40),
                      n % 7 == 0 ? -chance.between(0, 3) : chance.ofAnySize(1e-3, 60)});
  const DoubleIntegral integral(pistons, K);
  Pressures exact;
  for (const Position& p : points) exact.push_back(integral(p));
  for (const double tolerance : {1e-2, 1e-5, 1e-9}) {
    const double error = tolerance * peakOf(exact);
    for (const InstructionSet set :
         {InstructionSet::OLDEST, InstructionSet::AVX2, InstructionSet::AVX512}) {
      const InstructionSet before = pistonfield::limitInstructionSet(set);
      const Pressures p = Field(pistons, K).at(points, toTolerance(tolerance));
      pistonfield::limitInstructionSet(before);
      EXPECT_LE(differenceOf(p, exact), error) << static_cast<int>(set);
    }
    int devices = 0;
    if (cudaGetDeviceCount(&devices) != cudaSuccess || devices == 0) continue;
    Evaluation evaluation(pistons, K, error, 0);
    Pressures p(points.size());
    Work work({}, 1);
    evaluation.runOnDevice(ListPoints(points.data(), points.size()), p.data(), work);
    EXPECT_LE(evaluation.used().excess, 1);
    EXPECT_LE(differenceOf(p, exact), error);
  }
}

TEST_F(LossTest, AttenuationsOutOfTheirRangeAreRefused) {
  const auto errorFor = [&](Complex number) { return errorOf([&] { Field({piston_}, number); }); };
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(errorFor({1, 1e-9}),
            "k has a positive imaginary part: waves would grow. With the attenuation alpha, pass "
            "k - i*alpha.");
  EXPECT_EQ(errorFor({-1, 1e-9}), errorFor({1, 1e-9}));
  EXPECT_EQ(errorFor({1, -1.0001}),
            "The attenuation must be at most the real part of k: 8.7 dB in 1/6 of a wavelength. "
            "Give both in one unit.");
  EXPECT_EQ(errorFor({0, -1}), errorFor({1, -1.0001}));
  EXPECT_EQ(errorFor({1, nan}), "k must be a finite number.");
  EXPECT_EQ(errorFor({nan, -1}), "k must be a finite number.");
  EXPECT_EQ(errorFor({1, -1}), "");
  EXPECT_EQ(errorFor({-1, -1}), "");
  EXPECT_EQ(Field({piston_}, {0, -0.0}).at({{0, 0, 1}}), Pressures{0});
}

TEST_F(LossTest, AimingTakesTheRealPartOfK) {
  const std::vector<Piston> pistons = {piston(1, 1, {1, 0, 0}), piston(1, 1, {-2, 0.5, 0})};
  const auto weightsOf = [](const std::vector<Piston>& array) {
    Pressures weights;
    for (const Piston& p : array) weights.push_back(p.weight);
    return weights;
  };
  using pistonfield::focused;
  using pistonfield::steered;
  EXPECT_EQ(weightsOf(focused(pistons, {1, 2, 30}, K)), weightsOf(focused(pistons, {1, 2, 30}, k)));
  EXPECT_EQ(weightsOf(steered(pistons, {1, 2, 30}, K)), weightsOf(steered(pistons, {1, 2, 30}, k)));
}

}  // namespace
