#include "field/pulse/Fourier.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using pistonfield::spectrumOf;
using pistonfield::transform;
using Complex = std::complex<double>;

namespace {

constexpr double pi = 3.14159265358979323846;

}  // namespace

TEST(FourierTest, SpectraAreSumsForAnyNumberOfSteps) {
  std::mt19937 random(1);
  std::normal_distribution<double> normal;
  for (const std::size_t steps : {2U, 3U, 7U, 64U, 1001U})
    for (const std::size_t count : {1U, 2U, 50U}) {
      std::vector<double> samples(count);
      for (double& sample : samples) sample = normal(random);
      const std::vector<Complex> spectrum = spectrumOf(samples, steps, steps / 2);
      ASSERT_EQ(spectrum.size(), steps / 2);
      for (std::size_t n = 1; n <= steps / 2; ++n) {
        Complex sum = 0;
        for (std::size_t m = 0; m < count; ++m)
          sum += samples[m] * std::polar(1., -2 * pi * static_cast<double>(n * m % steps) /
                                                 static_cast<double>(steps));
        EXPECT_NEAR(std::abs(spectrum[n - 1] - sum), 0, 1e-12);
      }
    }
}

TEST(FourierTest, TransformsThereAndBackGiveTheValuesTimesTheirNumber) {
  std::vector<Complex> values = {1, {2, 1}, -3, {0, 4}, 5, 6, {1, -7}, 0};
  const std::vector<Complex> before = values;
  transform(values, -1);
  EXPECT_NEAR(std::abs(values[0] - Complex(12, -2)), 0, 1e-13);
  transform(values, 1);
  for (std::size_t n = 0; n < values.size(); ++n)
    EXPECT_NEAR(std::abs(values[n] - 8. * before[n]), 0, 1e-12);
}

TEST(FourierTest, TheSpectrumOfTheSplineIsThatOfItsIntegral) {
  for (const double omega : {0., 0.1, 2., 7.}) {
    double sum = 0;
    constexpr int steps = 4000;
    for (int n = -steps; n <= steps; ++n) {
      const double x = std::fabs(2. * n / steps);
      const double spline = x >= 1 ? (2 - x) * (2 - x) * (2 - x) / 6 : 2. / 3 - x * x * (1 - x / 2);
      sum += spline * std::cos(omega * x) * 2 / steps;
    }
    EXPECT_NEAR(pistonfield::splineSpectrum(omega), sum, 1e-6);
  }
}
