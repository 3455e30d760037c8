#include "field/medium.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using pistonfield::attenuation;
using pistonfield::FieldError;
using pistonfield::intensity;
using pistonfield::Medium;
using pistonfield::pascals;
using Complex = std::complex<double>;

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN(),
                 infinity = std::numeric_limits<double>::infinity();

}  // namespace

// A plane wave loses as many decibels on its way as the coefficient states.
TEST(MediumTest, AttenuationIsThatOfThePowerLaw) {
  for (const double exponent : {0., 0.5, 1., 1.1, 2., 3.})
    for (const double megahertz : {0.1, 1., 3.5, 40.}) {
      const double amplitude = std::exp(-attenuation(0.7, megahertz * 1e6, exponent) * 1e-3);
      const double loss = 0.07 * std::pow(megahertz, exponent);
      EXPECT_NEAR(-20 * std::log10(amplitude) / loss, 1, 1e-9);
    }
  EXPECT_EQ(attenuation(0.5, 3e6), attenuation(0.5, 3e6, 1));
  EXPECT_EQ(attenuation(0, 3e6), 0);
}

TEST(MediumTest, AttenuationOutOfRangeIsRefused) {
  for (const double coefficient : {-1., notANumber, infinity})
    EXPECT_THROW(attenuation(coefficient, 1e6), FieldError);
  for (const double frequency : {0., -1., notANumber, infinity})
    EXPECT_THROW(attenuation(1, frequency), FieldError);
  for (const double exponent : {-0.1, 3.1, notANumber})
    EXPECT_THROW(attenuation(1, 1e6, exponent), FieldError);
}

TEST(MediumTest, AWaveNumberHasTheSpeedAndTheAttenuation) {
  const Complex k = Medium{1540, 0.5, 1.1, 0}.waveNumber(3e6);
  EXPECT_NEAR(k.real(), 2 * pi * 3e6 / 1540, 1e-9);
  EXPECT_DOUBLE_EQ(k.imag(), -attenuation(0.5, 3e6, 1.1));
}

TEST(MediumTest, DispersionIsThatOfCausality) {
  for (const double y : {0., 0.5, 0.9, 1.1, 1.5, 2., 2.5})
    for (const double frequency : {0.3e6, 1e6, 2e6, 7e6}) {
      const Medium medium{1540, 0.05, y, 2e6};
      const double alpha = attenuation(0.05, 1e6, y) / std::pow(2 * pi * 1e6, y),
                   omega = 2 * pi * frequency, reference = 2 * pi * 2e6;
      const double slowness = 1 / 1540. + alpha * std::tan(pi * y / 2) *
                                              (std::pow(omega, y - 1) - std::pow(reference, y - 1));
      EXPECT_NEAR(medium.waveNumber(frequency).real() / (omega * slowness), 1, 1e-14);
    }
}

TEST(MediumTest, DispersionForTheExponent1IsThatOfExponentsNextToIt) {
  const double slowness =
      1 / 1540. - 2 / pi * attenuation(0.5, 1e6) / (2 * pi * 1e6) * std::log(3.5);
  for (const double y : {1., 1 - 1e-12, 1 + 1e-12, 1 + 1e-15})
    EXPECT_NEAR((Medium{1540, 0.5, y, 2e6}.waveNumber(7e6).real()) / (2 * pi * 7e6 * slowness), 1,
                1e-13);
}

TEST(MediumTest, AtTheReferenceThereIsNoDispersion) {
  for (const double y : {0.3, 1., 1.7})
    EXPECT_NEAR((Medium{1540, 0.5, y, 2e6}.waveNumber(2e6).real()), 2 * pi * 2e6 / 1540, 1e-9);
  EXPECT_EQ((Medium{1540, 0, 3, 2e6}.waveNumber(5e6)), (Medium{1540, 0, 3, 0}.waveNumber(5e6)));
}

TEST(MediumTest, MediaOutOfRangeAreRefused) {
  const auto expectRefused = [](const Medium& medium) {
    EXPECT_THROW(medium.waveNumber(1e6), FieldError);
  };
  for (const double wrong : {-1., notANumber, infinity}) {
    expectRefused({wrong, 0.5, 1, 0});
    expectRefused({1540, wrong, 1, 0});
    expectRefused({1540, 0.5, wrong, 0});
    expectRefused({1540, 0.5, 1, wrong});
    EXPECT_THROW((Medium{1540, 0.5, 1, 0}.waveNumber(wrong)), FieldError);
  }
  expectRefused({0, 0.5, 1, 0});
  expectRefused({1540, 0.5, 3.1, 0});
  expectRefused({1540, 0.5, 3, 1e6});  // the dispersion would be infinite
  EXPECT_THROW((Medium{1540, 0.5, 1, 0}.waveNumber(0)), FieldError);
  // No speed is positive so far from the reference.
  EXPECT_THROW((Medium{1540, 5, 1.5, 1e6}.waveNumber(1e12)), FieldError);
}

// In front of a large piston p = −i·exp(−ikz), and the pressure is ρcv.
TEST(MediumTest, PressureAndIntensityOfAPlaneWave) {
  const Complex p = Complex(0, -1) * std::polar(1., -0.7);
  const Complex pressure = pascals(p, 0.05, 1000, 1500);
  EXPECT_NEAR(std::abs(pressure - std::polar(75e3, -0.7)), 0, 1e-9);
  EXPECT_NEAR(intensity(pressure, 1000, 1500), 1000 * 1500 * 0.05 * 0.05 / 2, 1e-9);
}

TEST(MediumTest, TheSpeedOfSoundInALossyMediumIsComplex) {
  const Complex k(4000, -20);
  const double omega = 6e6;
  const Complex expected = Complex(0, 1) * 1000. * omega / k * 0.1 * Complex(1, 2);
  EXPECT_NEAR(std::abs(pascals({1, 2}, 0.1, 1000, omega / k) - expected), 0, 1e-9);
}

TEST(MediumTest, OtherLanguagesHaveTheseNumbers) {
  EXPECT_DOUBLE_EQ(attenuation(0.7, 3.3e6, 1.1), 29.967400147374047);
  EXPECT_DOUBLE_EQ(intensity({3.3, 4.1}, 998.7, 1481.3), 9.3620660480443237e-06);
  const Complex pressure = pascals({1.1, -0.3}, 0.05, 998.7, {1481.3, -2.5});
  EXPECT_DOUBLE_EQ(pressure.real(), 22327.9359);
  EXPECT_DOUBLE_EQ(pressure.imag(), 81328.135800000018);
}
