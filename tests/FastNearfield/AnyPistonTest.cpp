#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <iomanip>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "FastNearfield/packs/PackedPressure.h"
#include "support/AnyScene.h"
#include "support/LiteralPressure.h"

// Checks what docs/accuracy.md promises for single precision on the emulation device, for any
// piston, order and point, against the formula in double precision.

using pistonfield::Complex;
using support::HalfRule;
using support::Scene;

namespace {

std::vector<std::complex<double>> pressures(const Scene& scene, const HalfRule<float>& rule) {
  std::vector<Complex> out(scene.points.size());
  pistonfield::packedPressure(pistonfield::instructionSet())(scene.points[0].data(), out.data(),
                                                             static_cast<int>(out.size()), scene.a,
                                                             scene.b, scene.k, rule.view(), {});
  std::vector<std::complex<double>> wide(out.size());
  for (std::size_t i = 0; i < out.size(); ++i) wide[i] = {out[i].re, out[i].im};
  return wide;
}

/// The largest errors at order 64: over the largest pressure, and in units of 2^-24·(1 + kR) and of
/// 2^-24·kR.
struct Errors {
  double overPeak = 0, overUnit = 0, overKR = 0;
};

template <class Real>
Errors errors(const Scene& scene, const HalfRule<Real>& unrounded) {
  const std::vector<std::complex<double>> actual = pressures(scene, HalfRule<float>(64));
  Errors errors;
  double largest = 0, peak = 0;
  for (std::size_t i = 0; i < actual.size(); ++i) {
    const auto& [x, y, z] = scene.points[i];
    const std::complex<double> exact =
        support::literalPressure(x, y, z, scene.a, scene.b, scene.k, unrounded);
    const double error = std::abs(actual[i] - exact);
    const double unit = support::unitOfError(x, y, z, scene.a, scene.b, scene.k);
    peak = std::max(peak, std::abs(exact));
    largest = std::max(largest, error);
    errors.overUnit = std::max(errors.overUnit, error / unit);
    errors.overKR = std::max(errors.overKR, error / (unit - std::ldexp(1.0, -24)));
  }
  errors.overPeak = largest / peak;
  return errors;
}

class AnyPistonTest : public testing::Test {
 protected:
  std::mt19937 random{1};
};

TEST_F(AnyPistonTest, AtAnyPointOfAnyPistonTheRoundingStaysWithinThePromise) {
  for (int n = 0; n < 2500; ++n) {
    const int order = support::anyOrder(random);
    const HalfRule<float> rule(order);
    const HalfRule<double> unrounded(order);
    const Scene scene = support::anyScene<float>(random, 20);
    const std::vector<std::complex<double>> actual = pressures(scene, rule);
    for (std::size_t i = 0; i < actual.size(); ++i) {
      const auto& [x, y, z] = scene.points[i];
      // Behind the piston, next to an edge, the result depends strongly on where the first node
      // lies.
      const std::complex<double> exact =
          z >= 0 ? support::literalPressure(x, y, z, scene.a, scene.b, scene.k, unrounded)
                 : support::literalPressure(x, y, z, scene.a, scene.b, scene.k, rule);
      const double units =
          std::abs(actual[i] - exact) / support::unitOfError(x, y, z, scene.a, scene.b, scene.k);
      EXPECT_LE(units, support::promisedUnits(order, z))
          << std::setprecision(9) << "order " << order << " at " << x << ", " << y << ", " << z
          << ", a = " << scene.a << ", b = " << scene.b << ", k = " << scene.k;
    }
  }
}

TEST_F(AnyPistonTest, UnluckyPointsStayWithinThePromise) {
  // The worst cases that a search over millions of cases has found for each range of orders, in
  // front of and behind the piston.
  struct Unlucky {
    int order;
    float a, b, k, x, y, z;
  };
  for (const Unlucky& p : {
           Unlucky{7, 0.258072704f, 0.258072704f, 4.86375809f, 0, 0, 0.00340889837f},
           Unlucky{244, 1.58511055f, 1.58511055f, 1.03072596f, 0, 0, 0},
           Unlucky{418, 0.251479745f, 0.251479745f, -3.13336205f, 0, 0, 0.000159851246f},
           Unlucky{512, 2.844172955f, 2.844172955f, -0.333770633f, 0, 0, 8.89607109e-05f},
           Unlucky{1, 1.83294988f, 1.83294988f, 0.0183131751f, 0, 0, -88.6637344f},
           Unlucky{212, 1.96882057f, 0.322112322f, 0.0305605177f, 0, 0, -50.0548859f},
           Unlucky{506, 0.148812845f, 0.148812845f, 0.725033045f, 0.148813322f, 0, -2.09915423f},
       }) {
    const HalfRule<float> rule(p.order);
    const Scene scene = {p.a, p.b, p.k, {{p.x, p.y, p.z}}};
    const std::complex<double> exact = support::literalPressure(p.x, p.y, p.z, p.a, p.b, p.k, rule);
    const double units = std::abs(pressures(scene, rule)[0] - exact) /
                         support::unitOfError(p.x, p.y, p.z, p.a, p.b, p.k);
    EXPECT_LE(units, support::promisedUnits(p.order, p.z)) << "order " << p.order;
  }
}

TEST_F(AnyPistonTest, OfSidesUpToTenWavelengthsTheRoundingIsAMillionthOrTwoOfThePeak) {
  const HalfRule<double> unrounded(64);
  support::Chance chance(random);
  double worst = 0;
  for (int n = 0; n < 300; ++n) {
    const double s = chance.ofAnySize(0.1, 10);
    const double l = std::clamp(s * chance.ofAnySize(0.1, 10), 0.1, 10.0);
    Scene scene = {
        static_cast<float>(s / 2), static_cast<float>(l / 2), static_cast<float>(2 * M_PI), {}};
    const double size = std::hypot(s, l) / 2;
    for (int i = 0; i < 100; ++i) {
      const double x = i % 5 == 0 ? 0 : chance.between(-3, 3) * (i % 7 == 0 ? 1e3 : 1);
      const double y = i % 4 == 0 ? 0 : chance.between(-3, 3);
      const double z = i % 3 == 0 ? 0 : chance.ofAnySize(1e-3, 1e5);
      scene.points.push_back({static_cast<float>(x * size), static_cast<float>(y * size),
                              static_cast<float>(z * size)});
    }
    worst = std::max(worst, errors(scene, unrounded).overPeak);
  }
  EXPECT_LE(worst, 3e-6);
}

/// The largest error at points at this distance from the plane x = 0, some of them also from y = 0,
/// in front of a piston with sides s along x and 1.5·s along y, which are 5 and 7.5 wavelengths.
/// Lengths are in units of `unit` metres.
double errorNextToPlane(double s, double distance, double unit) {
  std::mt19937 random(1);
  support::Chance chance(random);
  const double wavelength = s / 5;
  Scene scene = {static_cast<float>(s / 2 / unit),
                 static_cast<float>(0.75 * s / unit),
                 static_cast<float>(2 * M_PI / wavelength * unit),
                 {}};
  for (int n = 0; n < 3000; ++n) {
    const double beside[] = {0, distance, chance.between(0.05, 1.2) * 0.75 * s};
    const double z = chance.ofAnySize(0.01, 30) * wavelength;
    scene.points.push_back({static_cast<float>(distance / unit),
                            static_cast<float>(beside[n % 3] / unit),
                            static_cast<float>(z / unit)});
  }
  const HalfRule<double> unrounded(64);
  const std::vector<std::complex<double>> actual = pressures(scene, HalfRule<float>(64));
  double most = 0;
  for (std::size_t i = 0; i < actual.size(); ++i) {
    const auto& [x, y, z] = scene.points[i];
    const std::complex<double> bothHalves =
        support::literalPressure(x, y, z, scene.a, scene.b, scene.k, unrounded, 0);
    most = std::max(most, std::abs(actual[i] - bothHalves));
  }
  return most;
}

TEST_F(AnyPistonTest, NextToAPlaneOfSymmetryPointsAreOffByWhatThePageSays) {
  for (const auto& [s, error] : {std::pair{7.5e-3, 2.1e-5}, {1e-3, 1.8e-4}, {1e-5, 1.9e-2}}) {
    const double within = errorNextToPlane(s, 0.99e-7, 1);
    EXPECT_NEAR(within / error, 1, 0.3) << s;
    EXPECT_LT(errorNextToPlane(s, 1.01e-7, 1), 2e-6) << s;
    // In millimetres, the distance of the same points from the plane exceeds the threshold.
    EXPECT_LT(errorNextToPlane(s, 0.99e-7, 1e-3), 2e-6) << s;
  }
}

TEST_F(AnyPistonTest, CoordinatesThatFloatsDoNotHoldGiveZeroOrNoNumber) {
  const float infinity = std::numeric_limits<float>::infinity();
  const float none[] = {std::nanf(""), infinity, -infinity, static_cast<float>(1e38) * 100};
  const HalfRule<float> rule(10);
  support::Chance chance(random);
  int zeros = 0;
  for (int n = 0; n < 20000; ++n) {
    Scene scene = support::anyScene<float>(random, 1);
    auto& [x, y, z] = scene.points[0];
    for (float* const coordinate : {&x, &y, &z}) {
      const double kind = chance.between(0, 1);
      if (kind < 0.2) *coordinate = none[static_cast<int>(chance.between(0, 4))];
      if (kind > 0.7) *coordinate *= static_cast<float>(chance.ofAnySize(1, 1e12));
    }
    if (std::isfinite(x) && std::isfinite(y) && std::isfinite(z)) continue;
    const bool isNumber = !(std::isnan(x) || std::isnan(y) || !std::isfinite(z));
    // True if half a side is lost when it is added to this distance.
    const bool farAcross = std::abs(x) - scene.a == std::abs(x) + scene.a;
    const bool farAlong = std::abs(y) - scene.b == std::abs(y) + scene.b;
    const std::complex<double> p = pressures(scene, rule)[0];
    if (isNumber && farAcross && farAlong) {
      EXPECT_EQ(p, 0.0) << x << ", " << y << ", " << z;
      ++zeros;
    } else {
      EXPECT_TRUE(std::isnan(p.real()) && std::isnan(p.imag())) << x << ", " << y << ", " << z;
    }
  }
  EXPECT_GT(zeros, 500);
}

/// A piston of 5λ × 7.5λ at 1 MHz in water, in SI units, seen from points in wavelengths.
class AccuracyTest : public AnyPistonTest {
 protected:
  void add(double x, double y, double z) {
    scene.points.push_back({static_cast<float>(x) * wavelength, static_cast<float>(y) * wavelength,
                            static_cast<float>(z) * wavelength});
  }
  double between(double low, double high) { return support::Chance(random).between(low, high); }

  static constexpr float wavelength = 1.5e-3f;
  Scene scene{2.5f * wavelength, 3.75f * wavelength, 4188.79f, {}};
};

TEST_F(AccuracyTest, InFrontOfThePistonTwoMillionthsOfThePeak) {
  for (int n = 0; n < 25000; ++n)  // kR to 400
    add(between(-20, 20), between(-20, 20), between(0.01, 55));
  for (int n = 0; n < 2000; ++n) {  // over edges
    add(n % 2 != 0 ? 2.5 : -2.5, between(-6, 6), between(0.01, 55));
    add(between(-5, 5), n % 2 != 0 ? 3.75 : -3.75, between(0.01, 55));
  }
  for (int n = 0; n < 1000; ++n) {  // over corners, and on the axis
    add(n % 2 != 0 ? 2.5 : -2.5, n % 4 < 2 ? 3.75 : -3.75, 0.05 * (n + 1));
    add(0, 0, 0.05 * (n + 1));
  }
  const Errors all = errors(scene, HalfRule<double>(200));
  EXPECT_LE(all.overPeak, 2e-6);
  EXPECT_LE(all.overUnit, 3);
}

TEST_F(AccuracyTest, FarAwayTheErrorStaysBelowThreeUnitsOfKR) {
  for (int n = 0; n < 20000; ++n) {
    const double R = std::pow(10.0, between(1, 5)) / (2 * M_PI);
    const double cosine = between(0, 1), angle = between(0, 2 * M_PI);
    const double sine = std::sqrt(1 - cosine * cosine);
    add(R * sine * std::cos(angle), R * sine * std::sin(angle), R * cosine);
  }
  EXPECT_LE(errors(scene, HalfRule<double>(200)).overKR, 3);
}

TEST_F(AccuracyTest, OnThePlaneOfThePistonAndBehindItTheRoundingStaysWithinTheBound) {
  // The rule itself resolves the field there only far from the edges.
  for (int n = 0; n < 5000; ++n) {
    add(between(-10, 10), between(-10, 10), 0);
    add(between(-20, 20), between(-20, 20), between(-40, -0.1));
  }
  EXPECT_LE(errors(scene, HalfRule<float>(64)).overUnit, 3);
}

}  // namespace
