#include "field/pulse/ExcitationSpline.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>
#include <random>

#include "field/ExactPulse.h"
#include "field/Pistons.h"
#include "field/pulse/PulseSpectrum.h"

using namespace pistonfield;

namespace {

const double pi = std::acos(-1.0);

Excitation anySamples(unsigned seed, std::size_t count) {
  std::mt19937 random(seed);
  std::normal_distribution<double> normal;
  Excitation excitation{{}, 7.5, -0.3};
  for (std::size_t n = 0; n < count; ++n) excitation.samples.push_back(normal(random));
  return excitation;
}

/// ∫ v(t)·exp(−iω(t − start)) dt by Simpson's rule on each half of a step.
std::complex<double> integral(const ExcitationSpline& spline, double omega) {
  const double step = 1 / spline.rate() / 32;
  const auto count = static_cast<int>(std::lround((spline.end() - spline.begin()) / step));
  std::complex<double> sum = 0;
  for (int n = 0; n <= count; ++n) {
    const double t = spline.begin() + n * step, weight = n == 0 || n == count ? 1 : n % 2 ? 4 : 2;
    sum += weight * spline.at(t) * std::polar(1.0, -omega * (t - spline.start()));
  }
  return sum * step / 3.0;
}

}  // namespace

TEST(ExcitationSplineTest, PassesThroughTheSamples) {
  for (const std::size_t count : {1U, 2U, 3U, 50U}) {
    const Excitation excitation = anySamples(1, count);
    const ExcitationSpline spline(excitation);
    for (std::size_t n = 0; n < count; ++n)
      EXPECT_NEAR(spline.at(excitation.start + static_cast<double>(n) / excitation.rate),
                  excitation.samples[n], 1e-12);
  }
}

TEST(ExcitationSplineTest, IsTheSplineOfTheReferenceAndZeroBeyondTwoSteps) {
  const Excitation excitation = anySamples(2, 9);
  const ExcitationSpline spline(excitation);
  const ExactPulse reference({}, 1, excitation);
  for (double t = -1; t < 2; t += 0.0137) EXPECT_NEAR(spline.at(t), reference.velocity(t), 1e-12);
  EXPECT_EQ(spline.at(spline.begin() - 1e-9), 0);
  EXPECT_EQ(spline.at(spline.end() + 1e-9), 0);
  EXPECT_NEAR(spline.begin(), excitation.start - 2 / excitation.rate, 1e-15);
  EXPECT_NEAR(spline.end(), excitation.start + 10 / excitation.rate, 1e-15);
}

TEST(ExcitationSplineTest, HasTheSpectrumOfItsVelocity) {
  const ExcitationSpline spline(anySamples(3, 12));
  for (const double omega : {0.0, 1.0, 10.0, 23.0, 47.0, 60.0})
    EXPECT_LT(std::abs(spline.spectrum(omega) - integral(spline, omega)), 1e-6) << omega;
}

TEST(ExcitationSplineTest, RefusesWhatIsNoExcitation) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const auto refused = [](const Excitation& excitation) {
    return errorOf([&] { ExcitationSpline spline(excitation); });
  };
  EXPECT_NE(refused({{}, 1, 0}).find("at least one sample"), std::string::npos);
  EXPECT_NE(refused({{1}, 0, 0}).find("rate"), std::string::npos);
  EXPECT_NE(refused({{1}, nan, 0}).find("rate"), std::string::npos);
  EXPECT_NE(refused({{1}, 1, nan}).find("start"), std::string::npos);
  EXPECT_NE(refused({{1, nan}, 1, 0}).find("samples"), std::string::npos);
}

// The mass beyond any frequency bounds that of the spectrum, summed finely.
TEST(PulseSpectrumTest, BoundsTheSpectrumBeyondEachFrequency) {
  for (const Excitation& excitation :
       {anySamples(4, 1), anySamples(5, 40), toneBurst(1, 2.5, 8), gaussPulse(1, 0.6, 12)}) {
    const ExcitationSpline spline(excitation);
    const PulseSpectrum spectrum(spline);
    const double most = 12 * 2 * pi * spline.rate();
    constexpr std::size_t count = 40000;
    const double step = most / static_cast<double>(count);
    std::vector<double> beyond(count + 1);
    for (std::size_t n = count; n-- > 0;)
      beyond[n] = beyond[n + 1] +
                  std::abs(spline.spectrum((static_cast<double>(n) + 0.5) * step)) * step / pi;
    double bound = 0;
    const auto& parts = spectrum.parts();
    for (std::size_t n = parts.size(); n-- > 1;) {
      bound += parts[n].mass;
      const double from = parts[n - 1].omega;
      if (from >= most) continue;
      const double exact = beyond[static_cast<std::size_t>(from / step) + 1];
      EXPECT_GE(bound, 0.999 * exact) << from;
      EXPECT_LE(bound, 2.5 * beyond[static_cast<std::size_t>(from / step * 0.85)] + 1e-3) << from;
    }
    EXPECT_GE(spectrum.mass(), beyond[0]);
    EXPECT_LE(spectrum.mass(), 1.3 * beyond[0]);
  }
}
