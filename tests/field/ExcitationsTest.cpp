#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>
#include <vector>

#include "field/Pistons.h"
#include "field/arrays.h"
#include "field/pulse.h"

using namespace pistonfield;

namespace {

const double pi = std::acos(-1.0);
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN(),
                 infinity = std::numeric_limits<double>::infinity();

}  // namespace

TEST(ExcitationsTest, ToneBurstIsAWindowedSine) {
  const Excitation burst = toneBurst(2, 2.5, 40);
  ASSERT_EQ(burst.samples.size(), 51U);
  EXPECT_EQ(burst.rate, 40);
  EXPECT_EQ(burst.start, 0);
  for (std::size_t n = 0; n < burst.samples.size(); ++n) {
    const double t = static_cast<double>(n) / 40, window = std::sin(pi * t * 2 / 2.5);
    EXPECT_NEAR(burst.samples[n], std::sin(4 * pi * t) * window * window, 1e-14);
  }
  EXPECT_NEAR(toneBurst(1, 2, 16, "Rectangular").samples[4], 1, 1e-15);
  EXPECT_NE(errorOf([] { toneBurst(1, 2, 16, "square"); }).find("window"), std::string::npos);
  EXPECT_NE(errorOf([] { toneBurst(1, 0, 16); }).find("cycles"), std::string::npos);
  EXPECT_NE(errorOf([] { toneBurst(1, 2, 7); }).find("rate"), std::string::npos);
  EXPECT_NE(errorOf([] { toneBurst(notANumber, 2, 7); }).find("frequency"), std::string::npos);
}

TEST(ExcitationsTest, GaussPulseHasItsBandwidth) {
  const Excitation pulse = gaussPulse(1, 0.5, 20);
  const std::size_t middle = pulse.samples.size() / 2;
  EXPECT_NEAR(pulse.start + static_cast<double>(middle) / pulse.rate, 0, 1e-12);
  EXPECT_EQ(pulse.samples[middle], 1);
  EXPECT_LT(std::fabs(pulse.samples.front()), 1.01e-5);
  const auto spectrum = [&](double f) {
    std::complex<double> sum = 0;
    for (std::size_t n = 0; n < pulse.samples.size(); ++n)
      sum += pulse.samples[n] *
             std::polar(1.0,
                        -2 * pi * f * (static_cast<double>(n) - static_cast<double>(middle)) / 20);
    return std::abs(sum);
  };
  EXPECT_NEAR(spectrum(0.75) / spectrum(1), 0.5, 2e-3);
  EXPECT_NEAR(spectrum(1.25) / spectrum(1), 0.5, 2e-3);
  EXPECT_NE(errorOf([] { gaussPulse(1, 3, 20); }).find("bandwidth"), std::string::npos);
}

TEST(ExcitationsTest, DelaysFocusAndSteer) {
  const std::vector<DelayedPiston> array = delayed(linearArray(5, 1, 0.9, 3));
  const Position focus = {1, 2, 10};
  double arrival = 0;
  for (const DelayedPiston& element : focused(array, focus, 2)) {
    const Position& c = element.piston.centre;
    const double t = element.delay + std::hypot(focus[0] - c[0], focus[1] - c[1], focus[2]) / 2;
    if (arrival == 0) arrival = t;
    EXPECT_NEAR(t, arrival, 1e-14);
  }
  EXPECT_EQ(focused(array, focus, 2)[2].delay, 0);
  for (const DelayedPiston& element : steered(array, {3, 0, 4}, 2))
    EXPECT_NEAR(element.delay, element.piston.centre[0] * 0.6 / 2, 1e-15);
  EXPECT_NE(errorOf([&] { steered(array, {0, 0, 0}, 1); }).find("direction"), std::string::npos);
  EXPECT_NE(errorOf([&] { focused(array, {0, 0, infinity}, 1); }).find("focus"), std::string::npos);
  EXPECT_NE(errorOf([&] { focused(array, focus, 0); }).find("speed"), std::string::npos);
}
