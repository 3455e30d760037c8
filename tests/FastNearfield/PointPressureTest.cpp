#include "FastNearfield/point/PointPressure.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <vector>

#include "FastNearfield/point/HalfAngleIntegrand.h"
#include "support/LiteralPressure.h"

using pistonfield::Complex;
using pistonfield::HalfAngleIntegrand;
using pistonfield::SymmetricRule;
using support::HalfRule;
using support::literalPressure;

namespace {

std::complex<double> pressure(double x, double y, double z, double a, double b, double k,
                              const SymmetricRule<float>& rule) {
  const Complex p = pistonfield::pointPressure<HalfAngleIntegrand>(
      static_cast<float>(x), static_cast<float>(y), static_cast<float>(z), static_cast<float>(a),
      static_cast<float>(b), static_cast<float>(k), rule);
  return {p.re, p.im};
}

const double a = 0.75, b = 0.5, k = 12.5;

TEST(PointPressureTest, UpToTheThresholdTheLongerPartOfAnEdgeIsTakenTwice) {
  // A piston so small that the threshold is a tenth of it: the two branches differ by 5 %.
  const double side = 1e-6, other = 3e-7, z = 1e-6, kSmall = 2e6;
  const HalfRule<float> rule(10);
  const double at = 1e-7f;
  const double above = std::nextafter(1e-7f, 1.0f);
  const auto along_y = [&](double y) {
    return pressure(other, y, z, side, side, kSmall, rule.view());
  };
  const auto along_x = [&](double x) {
    return pressure(x, other, z, side, side, kSmall, rule.view());
  };
  EXPECT_GT(std::abs(along_y(at) - along_y(above)), 0.03);
  EXPECT_GT(std::abs(along_x(at) - along_x(above)), 0.03);
  for (const double offset : {at, above, -at, -above}) {
    EXPECT_LE(
        std::abs(along_y(offset) - literalPressure(other, offset, z, side, side, kSmall, rule)),
        1e-5);
    EXPECT_LE(
        std::abs(along_x(offset) - literalPressure(offset, other, z, side, side, kSmall, rule)),
        1e-5);
  }
}

TEST(PointPressureTest, FarAwayItKeepsTheDigitsThatTheLiteralFormLoses) {
  // Far away, kz alone has an error of 1e-4 in single precision, so the difference of the
  // exponentials keeps only four digits.
  const HalfRule<float> rule(16);
  double meanOfMagnitude = 0;
  const int count = 400;
  for (int n = 0; n < count; ++n) {
    const double x = static_cast<float>(0.01 * n), z = static_cast<float>(100 + 0.37 * n);
    const std::complex<double> expected = literalPressure(x, 0.5, z, a, b, k, rule);
    const std::complex<double> actual = pressure(x, 0.5, z, a, b, k, rule.view());
    EXPECT_LE(std::abs(actual - expected), 2e-6 * std::abs(expected)) << x << ", " << z;
    meanOfMagnitude += (std::abs(actual) / std::abs(expected) - 1) / count;
  }
  EXPECT_LE(std::abs(meanOfMagnitude), 1e-7);  // 1/(2π) rounded to six digits would exceed this
}

TEST(PointPressureTest, OddOrdersNeverReadTheCentreAbscissa) {
  const float nan = std::nanf("");
  for (const int n : {1, 3, 9}) {
    HalfRule<float> rule(n);
    const std::complex<double> before = pressure(0.5, 0.25, 1, a, b, k, rule.view());
    for (std::size_t i = static_cast<std::size_t>(n) / 2; i < rule.x.size(); ++i) rule.x[i] = nan;
    for (std::size_t i = static_cast<std::size_t>(n) / 2 + 1; i < rule.w.size(); ++i)
      rule.w[i] = nan;
    EXPECT_EQ(pressure(0.5, 0.25, 1, a, b, k, rule.view()), before) << "order " << n;
  }
}

TEST(PointPressureTest, NoDistanceIsTooFar) {
  // In front, the magnitude is the area divided by wavelength and distance, although rounding
  // destroys the phase of E0. Behind and to the side, the magnitude stays bounded.
  const HalfRule<float> rule(10);
  for (int n = 20; n < 300; ++n) {
    const double R = std::pow(1.125, n + 40);
    const double magnitude = k * 4 * a * b / (2 * M_PI * R);
    EXPECT_NEAR(std::abs(pressure(0.3, 0.2, R, a, b, k, rule.view())) / magnitude, 1, 1e-5) << R;
    EXPECT_LE(std::abs(pressure(0.3, 0.2, -R, a, b, k, rule.view())), 3) << R;
    EXPECT_LE(std::abs(pressure(R, 0.2, 1, a, b, k, rule.view())), 2 * magnitude) << R;
    EXPECT_LE(std::abs(pressure(R, R, R, a, b, k, rule.view())), 2 * magnitude) << R;
  }
}

}  // namespace
