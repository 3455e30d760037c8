#include "field/beam.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <functional>
#include <limits>
#include <random>
#include <vector>

using pistonfield::Beam;
using pistonfield::beam;
using pistonfield::beams;
using pistonfield::FieldError;

namespace {

using Line = std::vector<double>;
using Pressures = std::vector<std::complex<double>>;

constexpr double pi = 3.14159265358979323846, notANumber = std::numeric_limits<double>::quiet_NaN(),
                 infinity = std::numeric_limits<double>::infinity();
const double half = 20 * std::log10(2);

/// A magnitude with its peak 1 at 0, and half its width at a level.
struct Shape {
  std::function<double(double)> value;
  std::function<double(double)> halfWidth;
};

double sinc(double x) { return x == 0 ? 1 : std::sin(pi * x) / (pi * x); }

double halfWidthOfSinc(double level) {
  double inside = 0, outside = 1;
  for (int n = 0; n < 60; ++n) {
    const double middle = (inside + outside) / 2;
    (sinc(middle) > level ? inside : outside) = middle;
  }
  return inside;
}

const Shape gaussian = {[](double x) { return std::exp(-x * x); },
                        [](double level) { return std::sqrt(-std::log(level)); }};
const Shape lorentzian = {[](double x) { return 1 / (1 + x * x); },
                          [](double level) { return std::sqrt(1 / level - 1); }};
const Shape lineSource = {sinc, halfWidthOfSinc};  // its far field

/// The beam of a shape, `steps` of x in its width, of which one sample is `shift` steps from the
/// peak at 7.
Beam sampled(const Shape& shape, double steps, double shift, double drop) {
  const double width = 2 * shape.halfWidth(std::pow(10, -drop / 20));
  Line x;
  Pressures p;
  for (int n = -50; n <= 50; ++n) {
    const double offset = (n + shift) * width / steps;
    x.push_back(7 + offset);
    p.push_back(3 * shape.value(offset) * std::polar(1.0, 0.1 * n));
  }
  return beam(x, p, drop);
}

double worstWidth(const Shape& shape, double steps, double drop) {
  const double width = 2 * shape.halfWidth(std::pow(10, -drop / 20));
  double worst = 0;
  for (int n = 0; n <= 100; ++n)
    worst =
        std::max(worst, std::fabs(sampled(shape, steps, n / 100. - 0.5, drop).width / width - 1));
  return worst;
}

Pressures pressuresOf(const Line& magnitudes) { return {magnitudes.begin(), magnitudes.end()}; }

}  // namespace

TEST(BeamTest, WidthsConvergeWithTheSquareOfTheStep) {
  for (const Shape& shape : {gaussian, lorentzian, lineSource})
    for (const double drop : {3., 6., 12.}) {
      EXPECT_LT(worstWidth(shape, 20, drop), 4e-3);
      EXPECT_LT(worstWidth(shape, 80, drop), worstWidth(shape, 20, drop) / 10);
    }
}

TEST(BeamTest, WidthsAreAsAccurateAsStated) {
  for (const Shape& shape : {gaussian, lineSource}) {
    EXPECT_LE(worstWidth(shape, 3, 6), 0.03);
    EXPECT_LE(worstWidth(shape, 6, 6), 0.008);
    EXPECT_LE(worstWidth(shape, 12, 6), 0.002);
  }
}

TEST(BeamTest, PeaksAreInterpolated) {
  for (const Shape& shape : {gaussian, lorentzian, lineSource})
    for (double shift = -0.5; shift <= 0.5; shift += 0.05) {
      const Beam found = sampled(shape, 12, shift, 6);
      EXPECT_NEAR(found.peak, 3, 3e-3);
      EXPECT_NEAR(found.position, 7, 0.01 * found.width);
      EXPECT_NEAR((found.left + found.right) / 2, 7, 0.01 * found.width);
      EXPECT_EQ(found.width, found.right - found.left);
    }
}

TEST(BeamTest, ThePeakOfAParabolaIsExactInUnequalSteps) {
  const Line x = {-3, -2, -0.5, 0.25, 1, 4};
  Line p;
  for (const double at : x) p.push_back(9 - (at - 0.125) * (at - 0.125) / 4);
  const Beam found = beam(x, pressuresOf(p));
  EXPECT_NEAR(found.position, 0.125, 1e-15);
  EXPECT_NEAR(found.peak, 9, 1e-14);
}

TEST(BeamTest, ThePeakOfVeryUnequalStepsIsASample) {
  const Beam found = beam({0, 1, 3.5}, pressuresOf({0, 2, 1.5}));
  EXPECT_EQ(found.peak, 2);
  EXPECT_EQ(found.position, 1);
}

// A random monotone rise and a random monotone fall, in random steps: the edges are where the
// polygon through the samples and the peak is on the level.
TEST(BeamTest, EdgesOfRandomShapesLieBetweenTheSamplesAboveAndBelow) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> from0to1(0, 1);
  for (int trial = 0; trial < 1000; ++trial) {
    Line x = {0}, p = {0};
    for (int n = 1; n <= 10; ++n) p.push_back(p.back() + from0to1(random));
    while (p.back() > 0) p.push_back(std::max(0., p.back() - 0.01 - from0to1(random)));
    while (x.size() < p.size()) x.push_back(x.back() + 0.01 + from0to1(random));
    const double drop = 0.1 + 20 * from0to1(random);
    const Beam found = beam(x, pressuresOf(p), drop);
    const double largest = *std::max_element(p.begin(), p.end());
    EXPECT_GE(found.peak, largest);
    EXPECT_LE(found.peak, largest * 4 / 3);
    EXPECT_LT(found.left, found.position);
    EXPECT_GT(found.right, found.position);
    const double level = found.peak * std::pow(10, -drop / 20);
    for (std::size_t n = 0; n < x.size(); ++n) {
      const bool isInside = x[n] > found.left && x[n] < found.right;
      EXPECT_TRUE(isInside ? p[n] > level * (1 - 1e-12) : p[n] < level * (1 + 1e-12));
    }
  }
}

TEST(BeamTest, ASideLobeDoesNotWidenTheBeam) {
  const Beam found = beam({0, 1, 2, 3, 4, 5, 6}, pressuresOf({1, 0, 1, 2, 1, 0, 1.5}), half);
  EXPECT_NEAR(found.left, 2, 1e-14);
  EXPECT_NEAR(found.right, 4, 1e-14);
}

TEST(BeamTest, AnEdgeThatIsNotWithinXIsNaN) {
  const Beam falls = beam({1, 2, 3, 4}, pressuresOf({4, 3, 2, 1}), half);
  EXPECT_EQ(falls.peak, 4);
  EXPECT_EQ(falls.position, 1);
  EXPECT_NEAR(falls.right, 3, 1e-14);
  EXPECT_TRUE(std::isnan(falls.left) && std::isnan(falls.width));
  const Beam rises = beam({1, 2, 3, 4}, pressuresOf({1, 2, 3, 4}), half);
  EXPECT_EQ(rises.position, 4);
  EXPECT_NEAR(rises.left, 2, 1e-14);
  EXPECT_TRUE(std::isnan(rises.right) && std::isnan(rises.width));
  for (const double value : {0., 1.}) {
    const Beam flat = beam({1, 2, 3}, {value, value, value});
    EXPECT_EQ(flat.peak, value);
    EXPECT_TRUE(std::isnan(flat.left) && std::isnan(flat.right) && std::isnan(flat.width));
  }
  EXPECT_TRUE(std::isnan(beam({1, 2, 3}, {1e-9, 1, 1e-9}, 1e4).width));  // drops to 0 only
}

TEST(BeamTest, SmallDropsAreNextToThePeak) {
  const Beam found = beam({-2, -1, 0, 1, 2}, pressuresOf({0, 1, 2, 1.5, 0}), 1e-6);
  EXPECT_GT(found.position, 0);
  EXPECT_LT(found.left, found.position);
  EXPECT_GT(found.right, found.position);
  EXPECT_LT(found.width, 1e-5);
}

TEST(BeamTest, PressuresThatAreNotFiniteGiveNaNForTheirLineOnly) {
  for (const double bad : {notANumber, infinity}) {
    const Pressures p = {0, bad, 0, 0, 2, 0, {0, bad}, 0, 0};
    const std::vector<Beam> found = beams({1, 2, 3}, p.data(), 3);
    for (const Beam& none : {found[0], found[2]})
      for (const double number : {none.peak, none.position, none.width, none.left, none.right})
        EXPECT_TRUE(std::isnan(number));
    EXPECT_EQ(found[1].peak, 2);
    EXPECT_NEAR(found[1].width, 2 * (1 - std::pow(10, -0.3)), 1e-15);
  }
}

TEST(BeamTest, ArgumentsOutOfRangeAreRefused) {
  for (const Line& x :
       {Line{}, Line{1}, Line{1, 1}, Line{2, 1}, Line{1, notANumber}, Line{notANumber, 1},
        Line{1, infinity}, Line{-infinity, 1}, Line{1, notANumber, 3}})
    EXPECT_THROW(beam(x, Pressures(x.size())), FieldError);
  for (const double drop : {0., -6., notANumber, infinity})
    EXPECT_THROW(beam({1, 2}, {1, 2}, drop), FieldError);
  EXPECT_THROW(beam({1, 2}, {1, 2, 3}), FieldError);
  EXPECT_TRUE(beams({1, 2}, nullptr, 0).empty());
}

TEST(BeamTest, OtherLanguagesHaveTheseNumbers) {
  const Beam found = beam({-2, -1, 0.5, 1, 3}, {{0, 0.1}, {0.8, -0.3}, {2, 1}, 1.9, -0.2}, 3);
  EXPECT_DOUBLE_EQ(found.peak, 2.2360679774997898);
  EXPECT_DOUBLE_EQ(found.position, 0.5);
  EXPECT_DOUBLE_EQ(found.width, 1.5819072112393866);
  EXPECT_DOUBLE_EQ(found.left, -0.20898356214214131);
  EXPECT_DOUBLE_EQ(found.right, 1.3729236490972452);
}
