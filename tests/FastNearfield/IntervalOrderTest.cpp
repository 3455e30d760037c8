#include "FastNearfield/intervals/IntervalOrder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <random>

#include "FastNearfield/OldestSet.h"
#include "FastNearfield/intervals/IntervalSum.h"
#include "FastNearfield/intervals/PistonOnPoints.h"
#include "field/ExactPressure.h"
#include "support/AnyScene.h"

namespace {

using pistonfield::Pack;
using Single = Pack<Set>;
using Double = Pack<Set::Double>;

/// The integral that `exactIntegral` returns, by the rule of `order` nodes in double precision.
std::complex<double> integral(double d, double z, double from, double to, int order) {
  static const pistonfield::GaussRules<double> rules(1, pistonfield::mostIntervalOrder);
  const auto sum =
      pistonfield::intervalSum(Double(d), Double(z), Double(from), Double(to),
                               pistonfield::IntervalRule<Set::Double>(rules.table(), order));
  return -2.0 * std::polar(1.0, -2 * std::acos(-1) * z) *
         std::complex<double>(first(sum.re), first(sum.im));
}

TEST(IntervalOrderTest, TheOrderKeepsTheToleranceOfRandomIntervals) {
  std::mt19937 random(1);
  support::Chance chance(random);
  constexpr double k = 2 * 3.14159265358979323846;
  double worst = 0;
  int tested = 0;
  for (int n = 0; n < 20000; ++n) {
    const double d = chance.ofAnySize(1e-3, 1e3), z = n % 10 == 0 ? 0 : chance.ofAnySize(1e-3, 1e3);
    const double from = n % 2 == 0 ? 0 : chance.ofAnySize(1e-3, 1e2),
                 to = from + chance.ofAnySize(0.05, 80);
    const double tolerance = chance.ofAnySize(1e-10, 1e-2);
    const Single singleD(static_cast<float>(d)), singleTo(static_cast<float>(to));
    const pistonfield::IntervalNeeds<Set> needs(
        {singleD, singleD, Single(static_cast<float>(z)), Single(static_cast<float>(from)),
         singleTo, Single(static_cast<float>(to - from))},
        Single(static_cast<float>(tolerance)));
    const double order = std::ceil(first(needs.order)), magnitude = first(needs.magnitude);
    if (order > pistonfield::mostIntervalOrder || magnitude <= tolerance) continue;
    ++tested;
    const auto exact = std::complex<double>(exactIntegral(d, z, from, to, k));
    ASSERT_LE(std::abs(exact), magnitude * 1.001);
    const double rounding = 1e-13 * magnitude + 1e-15 * k * (z + to) * std::abs(exact);
    const double error = std::abs(integral(d, z, from, to, static_cast<int>(order)) - exact);
    ASSERT_LE(error, tolerance + rounding)
        << "d " << d << " z " << z << " from " << from << " to " << to << " order " << order;
    if (rounding < 0.1 * tolerance) worst = std::max(worst, error / tolerance);
  }
  std::printf("%d intervals: largest error %.2f of the tolerance\n", tested, worst);
  EXPECT_GT(tested, 5000);
}

}  // namespace
