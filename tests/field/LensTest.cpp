#include "field/lens.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstddef>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "field/Pistons.h"
#include "field/arrays.h"

// The strips of a lens against the lens itself: the integral over the face with a continuous phase.

using pistonfield::Field;
using pistonfield::lensed;
using pistonfield::LensStrip;
using pistonfield::lensStrips;
using pistonfield::lensStripsOf;
using pistonfield::Position;
using Pistons = std::vector<Field::Piston>;

namespace {

constexpr double pi = 3.14159265358979323846, nan = std::numeric_limits<double>::quiet_NaN(),
                 infinity = std::numeric_limits<double>::infinity();

/// The pressure of a piston with a lens, w·K/2π ∬ exp(ikL(y))·exp(−iKR)/R dS, by Gauss's rule with
/// six nodes on cells of at most a quarter of a wavelength. The wavelength is 1.
class LensIntegral {
 public:
  LensIntegral(const Field::Piston& piston, double focus, std::complex<double> K)
      : piston_(piston), K_(K) {
    x_ = nodes(piston.width);
    y_ = nodes(piston.height);
    for (Node& node : y_) {
      const double path = std::sqrt(focus * focus + node.at * node.at) - std::fabs(focus);
      node.weight *= std::polar(1.0, (focus < 0 ? -1 : 1) * K.real() * path);
    }
  }

  std::complex<double> operator()(const Position& point) const {
    const Position p = inPiston(piston_, point);
    std::complex<double> sum = 0;
    for (const Node& x : x_)
      for (const Node& y : y_) {
        const double dx = p[0] - x.at, dy = p[1] - y.at,
                     R = std::sqrt(dx * dx + dy * dy + p[2] * p[2]);
        sum += x.weight * y.weight * std::polar(std::exp(K_.imag() * R) / R, -K_.real() * R);
      }
    return piston_.weight * K_ / (2 * pi) * sum;
  }

 private:
  struct Node {
    double at;
    std::complex<double> weight;
  };

  static std::vector<Node> nodes(double side) {
    constexpr std::array<double, 3> at = {0.2386191860831969, 0.6612093864662645,
                                          0.9324695142031521},
                                    weight = {0.4679139345726910, 0.3607615730481386,
                                              0.1713244923791704};
    const int cells = static_cast<int>(std::ceil(4 * side)) + 1;
    const double half = side / cells / 2;
    std::vector<Node> result;
    for (int cell = 0; cell < cells; ++cell)
      for (std::size_t n = 0; n < 3; ++n)
        for (const double sign : {-1.0, 1.0})
          result.push_back({-side / 2 + half * (2 * cell + 1 + sign * at[n]), half * weight[n]});
    return result;
  }

  Field::Piston piston_;
  std::complex<double> K_;
  std::vector<Node> x_, y_;
};

/// From one wavelength in front of a piston at the origin to beyond the focus, across half the
/// elevation. The wavelength is 1.
std::vector<Position> pointsBefore(const Field::Piston& piston, double focus) {
  std::vector<Position> points;
  const double far = 3 * std::fabs(focus) + 3, top = piston.height / 2;
  for (const double z :
       {1.0, 1.5, 2.0, 3.0, std::pow(far, 0.4), std::pow(far, 0.55), std::pow(far, 0.7),
        std::pow(far, 0.8), std::pow(far, 0.9), std::max(1.0, std::fabs(focus)), far})
    for (const double part : {0.0, 0.15, 0.3, 0.45, 0.6, 0.7, 0.8, 0.9, 1.0, 1.1})
      points.push_back({0, part * (top + 0.4 * z), z});
  points.push_back({piston.width / 2, 0, 1});
  points.push_back({piston.width / 2 + 1, top + 1, 0});  // beside the piston
  points.push_back({0, top + 1, 0});
  return points;
}

/// The largest difference of the pressures of strips from those of the lens, as a part of the
/// largest pressure.
double errorOfStrips(const Pistons& strips, const LensIntegral& lens, std::complex<double> K,
                     const std::vector<Position>& points, double accuracy) {
  const auto p = Field(strips, K).at(points, toTolerance(accuracy));
  double error = 0, peak = 0;
  for (std::size_t n = 0; n < points.size(); ++n) {
    const std::complex<double> exact = lens(points[n]);
    error = std::max(error, std::abs(p[n] - exact));
    peak = std::max(peak, std::abs(exact));
  }
  return error / peak;
}

double between(std::mt19937& random, double least, double most) {
  return least * std::pow(most / least, std::uniform_real_distribution<double>(0, 1)(random));
}

TEST(LensTest, StripsKeepTheToleranceForAnyPistonFocusAndTolerance) {
  std::mt19937 random(5);
  double worst = 0;
  for (int n = 0; n < 120; ++n) {
    const Field::Piston element =
        piston(between(random, 0.02, 4), between(random, 0.2, 25), {0, 0, 0}, {0.6, -0.8});
    const double focus = (n % 4 == 3 ? -1 : 1) * element.height * between(random, 0.1, 1000),
                 tolerance = between(random, 3e-4, 0.5),
                 attenuation = n % 3 == 2 ? between(random, 1e-3, 0.3) : 0;
    const std::complex<double> K(n % 5 == 4 ? -2 * pi : 2 * pi, -attenuation);
    const double error =
        errorOfStrips(lensed({element}, focus, K, tolerance), LensIntegral(element, focus, K), K,
                      pointsBefore(element, focus), tolerance / 50) /
        tolerance;
    EXPECT_LT(error, 1) << element.width << ' ' << element.height << ' ' << focus << ' '
                        << tolerance << ' ' << K;
    worst = std::max(worst, error);
  }
  EXPECT_GT(worst, 0.6);  // there are not many more strips than needed
}

TEST(LensTest, TheErrorFallsWithTheSquareOfTheNumberOfStrips) {
  const Field::Piston element = piston(0.9, 16);
  const LensIntegral lens(element, 80, 2 * pi);
  std::vector<double> errors;
  for (const std::size_t count : {50u, 100u, 200u}) {
    Pistons strips;
    for (LensStrip& strip : lensStripsOf(element, 80, count)) {
      strip.piston.weight *= std::polar(1.0, 2 * pi * strip.path);
      strips.push_back(strip.piston);
    }
    errors.push_back(errorOfStrips(strips, lens, 2 * pi, pointsBefore(element, 80), 1e-7));
  }
  EXPECT_NEAR(errors[0] / errors[1], 4, 0.8);
  EXPECT_NEAR(errors[1] / errors[2], 4, 0.4);
}

TEST(LensTest, NextToTheFaceTheErrorIsAtMostTenTimesTheTolerance) {
  std::mt19937 random(3);
  double worst = 0;
  for (int n = 0; n < 40; ++n) {
    const Field::Piston element = piston(between(random, 0.02, 4), between(random, 0.2, 25));
    const double focus = (n % 4 == 3 ? -1 : 1) * element.height * between(random, 0.1, 1000),
                 tolerance = between(random, 3e-3, 0.5);
    std::vector<Position> points = {{0, 0, std::max(1.0, std::fabs(focus))}, {0, 0, 1}};
    for (const double z : {0.0, 0.01, 0.1, 0.3, 0.6})
      for (int part = 0; part <= 100; ++part)
        points.push_back({0, element.height * 0.0052 * part, z});
    // The reference is a lens of many more strips, whose error is a thousandth.
    const auto p = Field(lensed({element}, focus, 2 * pi, tolerance), 2 * pi).at(points),
               exact = Field(lensed({element}, focus, 2 * pi, tolerance / 1000), 2 * pi).at(points);
    double error = 0;
    for (std::size_t m = 0; m < points.size(); ++m)
      error = std::max(error, std::abs(p[m] - exact[m]));
    error /= tolerance * peakOf(exact);
    EXPECT_LT(error, 10) << element.width << ' ' << element.height << ' ' << focus << ' '
                         << tolerance;
    worst = std::max(worst, error);
  }
  EXPECT_GT(worst, 3);  // the steps between the strips are seen
}

TEST(LensTest, AFocusedArrayKeepsTheTolerance) {
  const Pistons array = focused(pistonfield::linearArray(24, 0.9, 0.8, 16), {5, 0, 60}, 2 * pi);
  const std::vector<Position> points = {{5, 0, 60}, {0, 0, 1},  {3, 7.9, 1},  {4, 1, 40},
                                        {9, 4, 30}, {5, 3, 60}, {2, 0.5, 80}, {-12, 8, 2}};
  const auto p = Field(lensed(array, 50, 2 * pi, 5e-3), 2 * pi).at(points, toTolerance(1e-5));
  std::vector<std::complex<double>> exact(points.size());
  for (const Field::Piston& element : array) {
    const LensIntegral lens(element, 50, 2 * pi);
    for (std::size_t n = 0; n < points.size(); ++n) exact[n] += lens(points[n]);
  }
  for (std::size_t n = 0; n < points.size(); ++n)
    EXPECT_LT(std::abs(p[n] - exact[n]), 5e-3 * peakOf(exact));
  EXPECT_EQ(std::abs(exact[0]), peakOf(exact));
}

TEST(LensTest, TheFocusIsWhereItShouldBe) {
  std::vector<Position> axis;
  for (int n = 0; n <= 200; ++n) axis.push_back({0, 0, 20 + 0.3 * n});
  const auto loudest = [&](double focus) {
    const auto p = Field(lensed({piston(0.5, 40)}, focus, 2 * pi), 2 * pi).at(axis);
    const auto top = std::max_element(
        p.begin(), p.end(), [](auto one, auto other) { return std::abs(one) < std::abs(other); });
    return axis[static_cast<std::size_t>(top - p.begin())][2];
  };
  EXPECT_NEAR(loudest(50), 49, 1.5);  // slightly nearer, as of any small aperture
  EXPECT_NEAR(loudest(40), 39.5, 1);
}

TEST(LensTest, ALensHasThePhasesOfAFocusOnTheAxisOfTheElement) {
  const Field::Piston element = piston(3, 20);
  Pistons bare;
  for (const LensStrip& strip : lensStripsOf(element, 15, lensStrips(20, 15, 2 * pi)))
    bare.push_back(strip.piston);
  const Pistons expected = focused(bare, {0, 0, 15}, 2 * pi),
                strips = lensed({element}, 15, 2 * pi);
  ASSERT_EQ(strips.size(), expected.size());
  for (std::size_t n = 0; n < strips.size(); ++n)
    EXPECT_LT(std::abs(strips[n].weight - expected[n].weight), 1e-12);
}

TEST(LensTest, WavesOfATurnedElementArriveTogetherOrSeemToComeFromOnePoint) {
  std::mt19937 random(2);
  for (const double focus : {15.0, -15.0}) {
    Field::Piston element = piston(3, 20, {1, -2, 4}, {0, 2});
    element.axes = anyRotation(random);
    Position source = element.centre;
    for (std::size_t n = 0; n < 3; ++n) source[n] += focus * element.axes[2][n];
    for (const Field::Piston& strip : lensed({element}, focus, 7)) {
      const double distance = std::hypot(source[0] - strip.centre[0], source[1] - strip.centre[1],
                                         source[2] - strip.centre[2]) -
                              15;
      const double path = focus > 0 ? distance : -distance;
      EXPECT_LT(std::abs(strip.weight * std::polar(1.0, -7 * path) - element.weight), 1e-12);
    }
  }
}

TEST(LensTest, StripsCoverThePistonFromItsLowerToItsUpperEdge) {
  Field::Piston element = piston(3, 20, {1, -2, 4}, {3, 4});
  std::mt19937 random(1);
  element.axes = anyRotation(random);
  for (const std::size_t count : {1u, 2u, 7u, 1000u}) {
    const std::vector<LensStrip> strips = lensStripsOf(element, 30, count);
    ASSERT_EQ(strips.size(), count);
    double edge = -10;
    for (const auto& [strip, path] : strips) {
      const Position own = inPiston(element, strip.centre);
      EXPECT_NEAR(own[0], 0, 1e-13);
      EXPECT_NEAR(own[1] - strip.height / 2, edge, 1e-12);
      EXPECT_NEAR(own[2], 0, 1e-13);
      EXPECT_NEAR(path, std::sqrt(900 + own[1] * own[1]) - 30, 1e-13);
      EXPECT_EQ(strip.width, 3);
      EXPECT_EQ(strip.axes, element.axes);
      EXPECT_EQ(strip.weight, element.weight);
      edge = own[1] + strip.height / 2;
    }
    EXPECT_NEAR(edge, 10, 1e-12);
  }
}

TEST(LensTest, StripsOfSeveralPistonsFollowEachOther) {
  const Field::Piston one = piston(1, 8, {0, 0, 0}, 2), other = piston(1, 3, {5, 0, 0});
  const Pistons both = lensed({one, other}, 10, {5, -0.5}), first = lensed({one}, 10, 5),
                second = lensed({other}, 10, 5);
  ASSERT_EQ(both.size(), first.size() + second.size());
  EXPECT_GT(first.size(), second.size());
  for (std::size_t n = 0; n < both.size(); ++n) {
    const Field::Piston& alone = n < first.size() ? first[n] : second[n - first.size()];
    EXPECT_EQ(both[n].weight, alone.weight);
    EXPECT_EQ(both[n].centre, alone.centre);
    EXPECT_EQ(both[n].height, alone.height);
  }
  EXPECT_TRUE(lensed({}, 10, 5).empty());
}

TEST(LensTest, PathsKeepTheirDigitsForADistantFocus) {
  for (const auto& [strip, path] : lensStripsOf(piston(1, 2), 1e12, 4))
    EXPECT_NEAR(path / (strip.centre[1] * strip.centre[1] / 2e12), 1, 1e-14);
  for (const auto& [strip, path] : lensStripsOf(piston(1, 1e200), 1e-200, 2))
    EXPECT_NEAR(path / 2.5e199, 1, 1e-14);
}

TEST(LensTest, TheNumberOfStripsIsThatOfItsFormula) {
  EXPECT_EQ(lensStrips(16, 80, 2 * pi, 1e-3), 170U);  // second order
  EXPECT_EQ(lensStrips(16, 800, 2 * pi, 1e-2), 32U);  // half wavelengths
  EXPECT_EQ(lensStrips(16, 8e3, 2 * pi, 1e-2), 6U);   // no velocity is off by more
  EXPECT_EQ(lensStrips(16, -8e3, -2 * pi, 1e-2), 6U);
  EXPECT_EQ(lensStrips(16, 80, {2 * pi, -1}), 170U);
  EXPECT_EQ(lensStrips(16, 1e9, 2 * pi), 1U);
  EXPECT_EQ(lensStrips(0, 80, 2 * pi), 1U);
  EXPECT_EQ(lensStrips(16, 80, 0), 1U);
  EXPECT_EQ(lensStrips(1e-300, 80, 1e-99), 1U);
  for (const double unit : {1e-3, 1e3})
    EXPECT_EQ(lensStrips(16 * unit, 80 * unit, 2 * pi / unit), 170U);
}

TEST(LensTest, ErrorsNameTheArgument) {
  using Strings = std::vector<std::string>;
  const auto count = [](double height, double focus, std::complex<double> k, double tolerance) {
    return errorOf([=] { lensStrips(height, focus, k, tolerance); });
  };
  const auto lens = [](const Pistons& pistons, double focus, std::complex<double> k,
                       double tolerance) {
    return errorOf([=] { lensed(pistons, focus, k, tolerance); });
  };
  const std::string height = "height must be a finite real number, at least 0.",
                    focus = "focus must be a finite real number that is not 0.",
                    tolerance = "The tolerance must be from 1e-12 to below 1.",
                    many =
                        "tolerance must be larger, or the pistons fewer or smaller: the lens would "
                        "need more than 1e6 strips.";
  EXPECT_EQ((Strings{count(-1, 1, 1, 0.1), count(nan, 1, 1, 0.1), count(infinity, 1, 1, 0.1)}),
            (Strings{height, height, height}));
  EXPECT_EQ((Strings{count(1, 0, 1, 0.1), count(1, nan, 1, 0.1), lens({}, infinity, 1, 0.1),
                     errorOf([] { lensStripsOf(piston(1, 1), 0, 1); })}),
            (Strings{focus, focus, focus, focus}));
  EXPECT_EQ((Strings{count(1, 1, nan, 0.1), lens({}, 1, infinity, 0.1)}),
            (Strings{"k must be a finite number.", "k must be a finite number."}));
  EXPECT_EQ((Strings{count(1, 1, 1, 0), count(1, 1, 1, 1), lens({}, 1, 1, nan)}),
            (Strings{tolerance, tolerance, tolerance}));
  EXPECT_EQ((Strings{count(1e5, 1e5, 7, 1e-12), count(1e300, 1, 1e99, 0.1),
                     lens(Pistons(20'000, piston(1, 16)), 80, 2 * pi, 1e-3)}),
            (Strings{many, many, many}));
  EXPECT_EQ(lens({piston(1, 1), piston(1, -1)}, 1, 1, 0.1),
            "Piston 1: width and height must be finite and at least 0.");
  for (const std::size_t bad : {std::size_t{0}, std::size_t{1'000'001}})
    EXPECT_EQ(errorOf([&] { lensStripsOf(piston(1, 1), 1, bad); }),
              "count must be an integer from 1 to 1e6.");
}

}  // namespace
