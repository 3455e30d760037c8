#include "field/spectrum/BandInterpolation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstddef>

using pistonfield::BandInterpolation;
using pistonfield::BandPlan;
using pistonfield::bandPlan;

namespace {

/// The largest error of waves whose phases change by up to phaseStep/2 to both sides from each
/// place to the next.
double errorOf(const BandPlan& plan, double phaseStep) {
  const BandInterpolation interpolation(plan.nodes, plan.length);
  double most = 0;
  for (const double share : {0.03, 0.5, 0.9, 1.0}) {
    const double turn = share * phaseStep / 2;
    for (std::size_t place = 0; place < plan.length; ++place) {
      const auto filter = interpolation.filter<double>(place);
      std::complex<double> sum = 0;
      for (int n = 0; n < filter.count; ++n)
        sum += filter.re[n] *
               std::polar(1.0, turn * interpolation.nodes()[static_cast<std::size_t>(n)]);
      const std::complex<double> exact = std::polar(1.0, turn * static_cast<double>(place));
      most = std::max(most, std::abs(sum - exact));
    }
  }
  return most;
}

TEST(BandInterpolationTest, WavesHaveAtMostTheErrorOfThePlan) {
  int interpolated = 0;
  constexpr std::size_t counts[] = {16, 57, 256, 512};
  for (const std::size_t count : counts)
    for (const double phaseStep : {1e-9, 1e-3, 0.03, 0.3, 1.0})
      for (const double error : {1e-1, 1e-3, 1e-6, 1e-10}) {
        const BandPlan plan = bandPlan(count, phaseStep, 4, error);
        if (plan.nodes == 0) continue;
        ++interpolated;
        EXPECT_LE(errorOf(plan, phaseStep), error + 1e-12)
            << count << " wave numbers, phase " << phaseStep << ", " << plan.nodes << " nodes";
      }
  EXPECT_GT(interpolated, 40);
}

/// The orders would be one or two too high otherwise.
TEST(BandInterpolationTest, TheBoundIsAtMostAHundredTimesTheError) {
  for (const double phaseStep : {0.03, 0.1, 0.3}) {
    const BandPlan plan = bandPlan(256, phaseStep, 64, 1e-6);
    ASSERT_GT(plan.nodes, 0U);
    EXPECT_GT(errorOf(plan, phaseStep), 1e-8) << plan.nodes;
  }
}

TEST(BandInterpolationTest, FactorsOfAPlaceHaveTheSumOne) {
  const BandInterpolation interpolation(17, 100);
  for (std::size_t place = 0; place < 100; ++place) {
    const auto filter = interpolation.filter<double>(place);
    double sum = 0, magnitudes = 0;
    for (int n = 0; n < filter.count; ++n) {
      sum += filter.re[n];
      magnitudes += std::fabs(filter.re[n]);
    }
    EXPECT_NEAR(sum, 1, 1e-14);
    EXPECT_LE(magnitudes, interpolation.factorSum());
  }
  EXPECT_LT(interpolation.factorSum(), 3);
}

/// The middle one of an odd number of nodes lies on the middle one of an odd number of places.
TEST(BandInterpolationTest, ANodesValueIsThatOfThePolynomial) {
  const BandInterpolation interpolation(7, 21);
  const auto filter = interpolation.filter<double>(10);
  for (int n = 0; n < 7; ++n) EXPECT_NEAR(filter.re[n], n == 3 ? 1 : 0, 1e-11) << n;
}

TEST(BandInterpolationTest, WhatChangesTooFastIsNotInterpolated) {
  EXPECT_EQ(bandPlan(256, 7, 1, 1e-3).nodes, 0U);
  EXPECT_EQ(bandPlan(1, 1e-6, 1, 1e-3).nodes, 0U);
  EXPECT_EQ(bandPlan(7, 1e-6, 1000, 1e-3).nodes, 0U);
}

}  // namespace
