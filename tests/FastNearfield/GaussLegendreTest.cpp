#include "FastNearfield/GaussLegendre.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <numeric>
#include <sstream>
#include <string>
#include <vector>

#include "support/LegendreNode.h"
#include "support/ReferenceField.h"

using pistonfield::legendre_compute;

namespace {

template <class T>
struct Rule {
  explicit Rule(int n) : x(static_cast<std::size_t>(n)), w(static_cast<std::size_t>(n)) {
    legendre_compute(n, x.data(), w.data());
  }
  std::vector<T> x, w;
};

TEST(GaussLegendreTest, Order100HasItsDigits) {
  const Rule<double> rule(100);
  EXPECT_EQ(rule.x[0], -0.9997137267734413);
  EXPECT_EQ(rule.x[49], -0.015628984421543084);
  EXPECT_EQ(std::accumulate(rule.w.begin(), rule.w.end(), 0.0), 1.9999999999999996);
}

TEST(GaussLegendreTest, EveryOrderAscendsAndIsSymmetricBitForBit) {
  for (int n = 1; n <= 512; ++n) {
    const Rule<double> rule(n);
    const auto last = static_cast<std::size_t>(n) - 1;
    for (std::size_t i = 0; i <= last; ++i) {
      ASSERT_EQ(rule.x[i], -rule.x[last - i]) << "order " << n;
      ASSERT_EQ(rule.w[i], rule.w[last - i]) << "order " << n;
      ASSERT_GT(rule.w[i], 0.0) << "order " << n;
      ASSERT_LT(std::abs(rule.x[i]), 1.0) << "order " << n;
      if (i > 0) {
        ASSERT_LT(rule.x[i - 1], rule.x[i]) << "order " << n;
      }
    }
    if (n % 2 == 1) {
      ASSERT_EQ(rule.x[last / 2], 0.0);
      ASSERT_FALSE(std::signbit(rule.x[last / 2]));
    }
  }
}

TEST(GaussLegendreTest, MeetsTheIndependentRules) {
  std::istringstream file(support::contents(support::testFile("data/gauss_legendre.txt")));
  const double u = std::ldexp(1.0, -52);
  int n;
  std::size_t index;
  double x, w;
  int entries = 0;
  while (file >> n >> index >> x >> w) {
    const Rule<double> rule(n);
    EXPECT_LE(std::abs(rule.x[index] - x), u) << "order " << n << ", index " << index;
    EXPECT_LE(std::abs(rule.w[index] - w), 12 * n * u * w) << "order " << n << ", index " << index;
    ++entries;
  }
  // The non-negative halves of the orders 1, 2, 3, 5, 10, 64, 100, 255 and 512.
  EXPECT_EQ(entries, 1 + 1 + 2 + 3 + 5 + 32 + 50 + 128 + 256);
}

TEST(GaussLegendreTest, EveryOrderHasTheDigitsThatTheHeaderPromises) {
  if (std::numeric_limits<long double>::digits < 64)
    GTEST_SKIP() << "long double has no more digits than double";
  const double u = std::ldexp(1.0, -52);
  double abscissa = 0, weight = 0, relative = 0;
  for (int n = 1; n <= 512; ++n) {
    const Rule<double> rule(n);
    for (std::size_t i = 0; i < (rule.x.size() + 1) / 2; ++i) {
      const support::Node exact = support::legendreNode(n, rule.x[i]);
      const auto error = [&](double value, long double right) {
        return static_cast<double>(std::abs(value - right)) / u;
      };
      abscissa = std::max(abscissa, error(rule.x[i], exact.x));
      weight = std::max(weight, error(rule.w[i], exact.w));
      relative = std::max(relative, error(rule.w[i], exact.w) / (n * rule.w[i]));
    }
  }
  // In units of 2^-52; the measured values are 0.38, 2.0 and 59.8.
  EXPECT_LE(abscissa, 0.5);
  EXPECT_LE(weight, 4);
  EXPECT_LE(relative, 64);
}

TEST(GaussLegendreTest, SinglePrecisionIsTheRoundedDoubleRule) {
  for (const int n : {1, 2, 3, 10, 100, 511}) {
    const Rule<double> exact(n);
    const Rule<float> rounded(n);
    for (std::size_t i = 0; i < exact.x.size(); ++i) {
      EXPECT_EQ(rounded.x[i], static_cast<float>(exact.x[i]));
      EXPECT_EQ(rounded.w[i], static_cast<float>(exact.w[i]));
    }
  }
}

TEST(GaussLegendreTest, OrdersBeyond16383WrapIn32Bits) {
  // 8·16384² is 2³¹, which wraps to −2³¹: the first approximation moves outward instead of inward.
  // Newton's method still finds the root, but the weight differs: without the overflow it would be
  // 2.76428029902…e-08.
  const Rule<double> rule(16384);
  EXPECT_NEAR(rule.w[0], 2.7642802989149503e-08, 1e-18);
}

TEST(GaussLegendreTest, OrdersBeyond46340WrapIn32BitsAndAreNoRules) {
  // n·(n + 1) overflows to a negative number, so the second derivatives have the wrong sign.
  const Rule<double> rule(46341);
  EXPECT_GT(std::accumulate(rule.w.begin(), rule.w.end(), 0.0), 1000);
}

// The messages go to standard output, which a death test cannot see: it is redirected.
template <class T>
void computeWithOutputOnStandardError(int order) {
  dup2(STDERR_FILENO, STDOUT_FILENO);
  T x = 0, w = 0;
  legendre_compute(order, &x, &w);
}

TEST(GaussLegendreDeathTest, AnOrderBelowOneEndsTheProcess) {
  EXPECT_EXIT(computeWithOutputOnStandardError<double>(0), testing::ExitedWithCode(1),
              "^\nLEGENDRE_COMPUTE - Fatal error!\n  Illegal value of ORDER = 0\n$");
  EXPECT_EXIT(computeWithOutputOnStandardError<double>(-3), testing::ExitedWithCode(1),
              "  Illegal value of ORDER = -3\n$");
  EXPECT_EXIT(computeWithOutputOnStandardError<float>(0), testing::ExitedWithCode(1),
              "  Illegal value of ORDER = 0\n$");
}

TEST(GaussLegendreTest, SinglePrecisionNegativeOrderFailsInTheAllocation) {
  float x = 0, w = 0;
  EXPECT_THROW(legendre_compute(-3, &x, &w), std::bad_alloc);
}

}  // namespace
