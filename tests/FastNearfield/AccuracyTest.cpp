#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <iomanip>
#include <random>
#include <sstream>
#include <vector>

#include "FastNearfield/packs/PackedPressure.h"
#include "support/LiteralPressure.h"

// The accuracy of single precision on the emulation device, against the formula in double
// precision, for a piston of 5λ × 7.5λ at 1 MHz in water in SI units.

using pistonfield::Complex;
using support::HalfRule;

namespace {

constexpr float wavelength = 1.5e-3f;
constexpr float a = 2.5f * wavelength, b = 3.75f * wavelength, k = 4188.79f;

class Points {
 public:
  /// In wavelengths.
  void add(double x, double y, double z) {
    for (const double coordinate : {x, y, z})
      positions_.push_back(static_cast<float>(coordinate) * wavelength);
  }

  struct Errors {
    double overPeak = 0;   // the largest error relative to the largest pressure
    double overBound = 0;  // the largest ratio of the error to the promised bound
    double overKR = 0;     // the largest error in units of 2^-24·kR
  };

  /// The errors with a rule of this order against the exact pressure.
  Errors errors(int order) const { return errors(order, HalfRule<double>(200)); }

  /// The errors against the same rule evaluated without rounding.
  Errors roundingErrors(int order) const { return errors(order, HalfRule<float>(order)); }

 private:
  template <class Real>
  Errors errors(int order, const HalfRule<Real>& yardstick) const {
    const HalfRule<float> rule(order);
    std::vector<Complex> pressures(positions_.size() / 3);
    const auto evaluate = pistonfield::packedPressure(pistonfield::instructionSet());
    evaluate(positions_.data(), pressures.data(), static_cast<int>(pressures.size()), a, b, k,
             rule.view(), {});
    Errors errors;
    double largest = 0, peak = 0;
    for (std::size_t n = 0; n < pressures.size(); ++n) {
      const double x = positions_[3 * n], y = positions_[3 * n + 1], z = positions_[3 * n + 2];
      const std::complex<double> exact = support::literalPressure(x, y, z, a, b, k, yardstick);
      const double error = std::abs(std::complex<double>(pressures[n].re, pressures[n].im) - exact);
      peak = std::max(peak, std::abs(exact));
      largest = std::max(largest, error);
      const double bound = support::tolerance(x, y, z, a, b, k);
      errors.overBound = std::max(errors.overBound, error / bound);
      errors.overKR = std::max(errors.overKR, 3 * error / (bound - 3 * std::ldexp(1.0, -24)));
    }
    errors.overPeak = largest / peak;
    return errors;
  }

  std::vector<float> positions_;
};

class AccuracyTest : public testing::Test {
 protected:
  /// Adds the measured error to the test report.
  static void record(double error) {
    std::ostringstream text;
    text << std::setprecision(2) << error;
    RecordProperty("measured", text.str());
  }

  std::mt19937 random{1};
  double between(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
  }
};

TEST_F(AccuracyTest, InFrontOfThePistonTwoMillionthsOfThePeak) {
  Points points;
  for (int n = 0; n < 25000; ++n)  // kR to 400
    points.add(between(-20, 20), between(-20, 20), between(0.01, 55));
  for (int n = 0; n < 2000; ++n) {  // above edges
    points.add(n % 2 != 0 ? 2.5 : -2.5, between(-6, 6), between(0.01, 55));
    points.add(between(-5, 5), n % 2 != 0 ? 3.75 : -3.75, between(0.01, 55));
  }
  for (int n = 0; n < 1000; ++n) {  // above corners, and on the axis
    points.add(n % 2 != 0 ? 2.5 : -2.5, n % 4 < 2 ? 3.75 : -3.75, 0.05 * (n + 1));
    points.add(0, 0, 0.05 * (n + 1));
  }
  const Points::Errors errors = points.errors(64);
  record(errors.overPeak);
  EXPECT_LE(errors.overPeak, 2e-6);
  EXPECT_LE(errors.overBound, 1);
}

TEST_F(AccuracyTest, FarAwayTheErrorStaysBelowThreeUnitsOfKR) {
  Points points;
  for (int n = 0; n < 20000; ++n) {
    const double R = std::pow(10.0, between(1, 5)) / (2 * M_PI);
    const double cosine = between(0, 1), angle = between(0, 2 * M_PI);
    const double sine = std::sqrt(1 - cosine * cosine);
    points.add(R * sine * std::cos(angle), R * sine * std::sin(angle), R * cosine);
  }
  const double overKR = points.errors(64).overKR;
  record(overKR);
  EXPECT_LE(overKR, 3);
}

TEST_F(AccuracyTest, OnThePlaneOfThePistonAndBehindItTheRoundingStaysWithinTheBound) {
  // Behind the piston the rule resolves the field only far from the edges.
  Points points;
  for (int n = 0; n < 5000; ++n) {
    points.add(between(-10, 10), between(-10, 10), 0);
    points.add(between(-20, 20), between(-20, 20), between(-40, -0.1));
  }
  const double overBound = points.roundingErrors(64).overBound;
  record(3 * overBound);
  EXPECT_LE(overBound, 1);
}

}  // namespace
