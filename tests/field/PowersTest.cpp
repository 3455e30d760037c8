#include "field/Powers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using pistonfield::exponential;
using pistonfield::logarithm;
using pistonfield::power;

namespace {

constexpr double largestError = 1e-15;

double relativeError(double value, long double exact) {
  return static_cast<double>(std::fabs((value - exact) / exact));
}

}  // namespace

TEST(PowersTest, Exponentials) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> any(-700, 700), small(-1, 1);
  double worst = 0;
  for (int n = 0; n < 10000; ++n)
    for (const double x : {any(random), small(random)})
      worst = std::max(worst, relativeError(exponential(x), std::exp(static_cast<long double>(x))));
  EXPECT_LT(worst, largestError);
  EXPECT_EQ(exponential(0), 1);
  EXPECT_EQ(exponential(-INFINITY), 0);
  EXPECT_EQ(exponential(INFINITY), INFINITY);
  EXPECT_TRUE(std::isnan(exponential(NAN)));
}

TEST(PowersTest, LogarithmsAlsoNextToOne) {
  std::mt19937 random(2);
  std::uniform_real_distribution<double> exponents(-700, 700), small(-0.5, 0.5);
  double worst = 0;
  for (int n = 0; n < 10000; ++n)
    for (const double x : {std::exp(exponents(random)), 1 + small(random), 1 + small(random) / 1e6})
      worst = std::max(worst, relativeError(logarithm(x), std::log(static_cast<long double>(x))));
  EXPECT_LT(worst, largestError);
  EXPECT_EQ(logarithm(1), 0);
}

TEST(PowersTest, Powers) {
  std::mt19937 random(3);
  std::uniform_real_distribution<double> exponents(-200, 200), any(-3, 3);
  double worst = 0;
  for (int n = 0; n < 10000; ++n) {
    const double x = std::exp(exponents(random));
    for (const double y : {any(random), 0.5, 1.1, 2.0, 3.0})
      worst = std::max(worst, relativeError(power(x, y), std::pow(static_cast<long double>(x), y)));
  }
  EXPECT_LT(worst, largestError);
  for (const double x : {1e-6, 1.0, 3.7, 1e6}) {
    EXPECT_EQ(power(x, 0), 1);
    EXPECT_DOUBLE_EQ(power(x, 1), x);
  }
}
