#include <gtest/gtest.h>

#include <cmath>
#include <iostream>
#include <limits>
#include <random>
#include <stdexcept>

#include "field/FrequencySum.h"
#include "field/Pistons.h"
#include "field/Pulses.h"
#include "field/medium.h"
#include "support/AnyScene.h"

// Pulses as sums over frequencies, against sums over many more of the double integral, and against
// double sums in time.

using pistonfield::DelayedPiston;
using pistonfield::Excitation;
using pistonfield::ExcitationSpline;
using pistonfield::Medium;
using pistonfield::Position;
using pistonfield::PulseOptions;
using pistonfield::PulseReport;
using pistonfield::TimeAxis;
using support::Chance;

namespace {

constexpr double pi = 3.14159265358979323846, megahertz = 1e6, millimetre = 1e-3,
                 microsecond = 1e-6;

/// Soft tissue, in which 1 cm takes some decibels at 3 MHz.
const Medium tissue{1540, 0.7, 1.1, 0};

/// The parameter is the seed.
class RandomPulseTest : public testing::TestWithParam<unsigned> {
 protected:
  Medium anyMedium() {
    const double exponents[] = {0.5, 0.8, 1, 1.1, 1.5, 2};
    Medium medium{1500, 0, exponents[below(6)], 0};
    medium.attenuation = chance.ofAnySize(0.05, 4) / std::pow(2.0, medium.exponent);
    if (below(2) == 1) medium.reference = chance.ofAnySize(1, 4) * megahertz;
    return medium;
  }

  std::vector<DelayedPiston> anyPistons() {
    std::vector<DelayedPiston> pistons;
    const auto count = 1 + static_cast<int>(below(3));
    for (int n = 0; n < count; ++n) {
      DelayedPiston one{
          piston(chance.ofAnySize(0.02, 1.5) * millimetre, chance.ofAnySize(0.02, 1.5) * millimetre,
                 {2 * n * millimetre, 0, 0}, chance.between(0.2, 1)),
          chance.between(-1, 1) * microsecond};
      pistons.push_back(one);
    }
    return pistons;
  }

  std::vector<Position> anyPoints() {
    std::vector<Position> points;
    points.reserve(2);
    for (int n = 0; n < 2; ++n)
      points.push_back({chance.between(-8, 8) * millimetre, chance.between(-8, 8) * millimetre,
                        chance.ofAnySize(0.1, 30) * millimetre});
    return points;
  }

  std::size_t below(int count) { return static_cast<std::size_t>(chance.between(0, count)); }

  std::mt19937 random{GetParam()};
  Chance chance{random};
};

/// The pressure of pistons along the axes, of weights 1 and in a medium without loss, as the sum of
/// the velocity's slope over small parts of their faces.
std::vector<double> sumInTime(const std::vector<DelayedPiston>& pistons, double speed,
                              const Excitation& excitation, const Position& p,
                              const TimeAxis& times) {
  const ExcitationSpline v(excitation);
  const double h = 1e-3 / excitation.rate;
  constexpr int parts = 60;
  std::vector<double> signal(times.count);
  for (const DelayedPiston& one : pistons)
    for (int i = 0; i < parts; ++i)
      for (int j = 0; j < parts; ++j) {
        const double x = one.piston.centre[0] + one.piston.width * ((i + 0.5) / parts - 0.5),
                     y = one.piston.centre[1] + one.piston.height * ((j + 0.5) / parts - 0.5);
        const double R = std::hypot(p[0] - x, p[1] - y, p[2] - one.piston.centre[2]),
                     area = one.piston.width * one.piston.height / (parts * parts);
        for (std::size_t m = 0; m < times.count; ++m) {
          const double t =
              times.start + static_cast<double>(m) / times.rate - one.delay - R / speed;
          signal[m] += one.piston.weight.real() * area / (2 * pi * speed * R) *
                       (v.at(t + h) - v.at(t - h)) / (2 * h);
        }
      }
  return signal;
}

std::vector<double> partOf(const std::vector<double>& signals, std::size_t index,
                           std::size_t count) {
  const auto first = signals.begin() + static_cast<std::ptrdiff_t>(index * count);
  return {first, first + static_cast<std::ptrdiff_t>(count)};
}

const std::vector<DelayedPiston> pair = {
    delayedBy(0.2 * microsecond, piston(0.5 * millimetre, 0.3 * millimetre)),
    delayedBy(-0.1 * microsecond,
              piston(0.4 * millimetre, 0.4 * millimetre, {millimetre, 0, 0}, 0.7))};
const std::vector<Position> somePoints = {{0, 0, 3 * millimetre},
                                          {2 * millimetre, millimetre, 5 * millimetre},
                                          {-2 * millimetre, 0, millimetre}};
const Excitation twoCycles = burst(2 * megahertz, 3, 20 * megahertz);

}  // namespace

TEST_P(RandomPulseTest, IsWithinItsToleranceOfTheDoubleIntegral) {
  double worst = 0;
  for (int n = 0; n < 2; ++n) {
    const Medium medium = anyMedium();
    const std::vector<DelayedPiston> pistons = anyPistons();
    const std::vector<Position> points = anyPoints();
    const double frequency = chance.ofAnySize(1, 3) * megahertz;
    Excitation excitation = burst(frequency, chance.between(2, 6), 10 * frequency);
    excitation.start = chance.between(-5, 5) * microsecond;
    const TimeAxis times =
        timesOf({pistons}, medium, excitation, points, 5 * frequency, 2 * microsecond);
    SCOPED_TRACE("medium " + std::to_string(medium.attenuation) + " dB, exponent " +
                 std::to_string(medium.exponent) + ", reference " +
                 std::to_string(medium.reference));
    // Of tails that fall with the time to the power of -2.5, hardly any reach the next repetition.
    const FrequencySum sum({pistons}, medium, excitation, 40 * microsecond);
    std::vector<double> exact;
    for (const Position& p : points) {
      const std::vector<double> signal = sum(p, times);
      exact.insert(exact.end(), signal.begin(), signal.end());
    }
    const double peak = largestOf(exact);
    for (const double tolerance : {1e-2, 1e-3, 1e-4}) {
      PulseReport report;
      const std::vector<double> p =
          byFrequency(pistons, medium, excitation, points, times, pulseTo(tolerance), &report);
      const double error = differenceOf(p, exact);
      EXPECT_LE(error, report.bound);
      EXPECT_LE(report.bound, 1.1 * tolerance * peak);  // the peak may be between two times
      EXPECT_GT(report.nodes, 0);
      worst = std::max(worst, error / (tolerance * peak));
    }
  }
  std::cout << "largest error " << worst << " of the tolerance\n";
  EXPECT_GT(worst, 1e-3);
}

TEST(AttenuatedPulseTest, WithHardlyAnyLossItIsTheSumInTime) {
  for (const double loss : {0., 1e-7}) {
    const Medium medium{1500, loss, 1, 0};
    const TimeAxis times = timesOf({pair}, medium, twoCycles, somePoints, 30 * megahertz);
    std::vector<double> exact;
    for (const Position& p : somePoints) {
      const std::vector<double> signal = sumInTime(pair, 1500, twoCycles, p, times);
      exact.insert(exact.end(), signal.begin(), signal.end());
    }
    PulseReport report;
    const std::vector<double> p =
        byFrequency(pair, medium, twoCycles, somePoints, times, pulseTo(1e-4), &report);
    // The parts are small enough for some 1e-4.
    EXPECT_LT(differenceOf(p, exact), 3e-4 * largestOf(exact));
    EXPECT_LE(report.bound, 1e-4 * 1.01 * largestOf(exact));
  }
}

// Before the waves of its edges, a large piston gives a plane wave.
TEST(AttenuatedPulseTest, APlaneWaveDecaysAsTheAttenuationStates) {
  const double frequency = 3 * megahertz;
  const std::vector<DelayedPiston> large = {delayedBy(0, piston(60 * millimetre, 60 * millimetre))};
  const Excitation excitation = burst(frequency, 20, 10 * frequency);
  const std::vector<Position> points = {{0, 0, 5 * millimetre}, {0, 0, 20 * millimetre}};
  const TimeAxis times = {0, 20 * frequency, 1500};  // until the waves of edges arrive
  const std::vector<double> p = byFrequency(large, tissue, excitation, points, times);
  const double near = largestOf(partOf(p, 0, times.count)),
               far = largestOf(partOf(p, 1, times.count)),
               alpha = pistonfield::attenuation(0.7, frequency, 1.1);
  EXPECT_NEAR(near, std::exp(-alpha * 5 * millimetre), 0.02 * near);
  EXPECT_NEAR(far / near, std::exp(-alpha * 15 * millimetre), 0.02 * far / near);
}

TEST(AttenuatedPulseTest, DispersionChangesWhenAPulseArrives) {
  const Excitation excitation = burst(2 * megahertz, 6, 20 * megahertz);
  const std::vector<Position> point = {{0, 0, 80 * millimetre}};
  Medium medium{1500, 3, 1, 8 * megahertz};
  const Medium same{2 * pi * 2 * megahertz / medium.waveNumber(2 * megahertz).real(), 3, 1,
                    2 * megahertz};
  const TimeAxis times =
      timesOf({pair}, medium, excitation, point, 20 * megahertz, 3 * microsecond);
  const std::vector<double> p = byFrequency(pair, medium, excitation, point, times),
                            q = byFrequency(pair, same, excitation, point, times);
  medium.reference = 0;
  const std::vector<double> without = byFrequency(pair, medium, excitation, point, times);
  EXPECT_LT(differenceOf(p, q), 3e-4 * largestOf(p));
  EXPECT_GT(differenceOf(p, without), 0.5 * largestOf(p));
}

TEST(AttenuatedPulseTest, TheTimeAxisMayBeginAnywhereAndHaveAnyRate) {
  const TimeAxis fine = timesOf({pair}, tissue, twoCycles, somePoints, 40 * megahertz, microsecond);
  const std::vector<double> p = byFrequency(pair, tissue, twoCycles, somePoints, fine);
  const double negligible = 1e-5 * largestOf(p);
  const TimeAxis coarse = {fine.start + 7 / fine.rate, fine.rate / 13, fine.count / 13 - 1};
  const std::vector<double> q = byFrequency(pair, tissue, twoCycles, somePoints, coarse);
  for (std::size_t n = 0; n < somePoints.size(); ++n)
    for (std::size_t m = 0; m < coarse.count; ++m)
      EXPECT_NEAR(q[m + n * coarse.count], p[7 + 13 * m + n * fine.count], negligible);
  const std::vector<double> one =
      byFrequency(pair, tissue, twoCycles, somePoints, {fine.start + 50 / fine.rate, 1, 1});
  for (std::size_t n = 0; n < somePoints.size(); ++n)
    EXPECT_NEAR(one[n], p[50 + n * fine.count], negligible);
}

TEST(AttenuatedPulseTest, WhereNothingArrivesPressuresAreNegligible) {
  const double tolerance = 1e-4;
  const TimeAxis axis = timesOf({pair}, tissue, twoCycles, somePoints, 40 * megahertz);
  const double peak = largestOf(byFrequency(pair, tissue, twoCycles, somePoints, axis));
  for (const double start : {-1., 1., 1e30})
    for (const double rate : {1e-20, 1., 1e6, 1e15}) {
      const std::vector<double> p =
          byFrequency(pair, tissue, twoCycles, somePoints, {start, rate, 10}, pulseTo(tolerance));
      EXPECT_LE(largestOf(p), tolerance * peak);
    }
  EXPECT_TRUE(byFrequency(pair, tissue, twoCycles, somePoints, {0, 1, 0}).empty());
  EXPECT_TRUE(byFrequency(pair, tissue, twoCycles, {}, axis).empty());
}

TEST(AttenuatedPulseTest, AnExcitationOfOneSampleIsASpline) {
  const Excitation one{{1}, 10 * megahertz, 0};
  const std::vector<Position> point = {{0.1 * millimetre, 0, 2 * millimetre}};
  const TimeAxis times = timesOf({pair}, tissue, one, point, 100 * megahertz, microsecond);
  const std::vector<double> exact =
      FrequencySum({pair}, tissue, one, 12 * microsecond, 5)(point[0], times);
  EXPECT_LT(differenceOf(byFrequency(pair, tissue, one, point, times, pulseTo(1e-3)), exact),
            1e-3 * largestOf(exact));
}

TEST(AttenuatedPulseTest, SignalsAreProportionalToWeightsAndExcitation) {
  const TimeAxis times = timesOf({pair}, tissue, twoCycles, somePoints, 30 * megahertz);
  const std::vector<double> p = byFrequency(pair, tissue, twoCycles, somePoints, times);
  std::vector<DelayedPiston> heavy = pair;
  for (DelayedPiston& one : heavy) one.piston.weight *= 0x1p200;
  Excitation large = twoCycles;
  for (double& sample : large.samples) sample *= 0x1p-100;
  PulseReport report;
  std::vector<double> q = byFrequency(heavy, tissue, large, somePoints, times, {}, &report);
  for (double& value : q) value *= 0x1p-100;
  EXPECT_LT(differenceOf(p, q), 1e-12 * largestOf(p));
  EXPECT_LE(report.bound, 1.01e-4 * 0x1p100 * largestOf(p));
  for (DelayedPiston& one : heavy) one.piston.weight = 0;
  EXPECT_EQ(largestOf(byFrequency(heavy, tissue, twoCycles, somePoints, times)), 0);
  large.samples.assign(3, 0);
  EXPECT_EQ(largestOf(byFrequency(pair, tissue, large, somePoints, times)), 0);
}

TEST(AttenuatedPulseTest, PointsThatAreNotFiniteGetNaNAndChangeNoOthers) {
  const TimeAxis times = timesOf({pair}, tissue, twoCycles, somePoints, 30 * megahertz);
  std::vector<Position> points = somePoints;
  points.insert(points.begin() + 1, {0, std::numeric_limits<double>::infinity(), 0});
  const std::vector<double> p = byFrequency(pair, tissue, twoCycles, somePoints, times),
                            q = byFrequency(pair, tissue, twoCycles, points, times);
  EXPECT_EQ(partOf(p, 0, times.count), partOf(q, 0, times.count));
  EXPECT_EQ(partOf(p, 1, times.count), partOf(q, 2, times.count));
  for (const double value : partOf(q, 1, times.count)) EXPECT_TRUE(std::isnan(value));
}

TEST(AttenuatedPulseTest, AnInterruptionPassesThroughAndProgressNeverFalls) {
  struct Interruption {};
  const TimeAxis times = timesOf({pair}, tissue, twoCycles, somePoints, 30 * megahertz);
  int calls = 0;
  double last = 0;
  PulseOptions options;
  options.progress = [&](double fraction) {
    EXPECT_GE(fraction, last);
    EXPECT_LE(fraction, 1);
    last = fraction;
    ++calls;
  };
  byFrequency(pair, tissue, twoCycles, somePoints, times, options);
  EXPECT_EQ(last, 1);
  const int all = calls;
  ASSERT_GT(all, 5);
  for (int stop = 1; stop <= all; ++stop) {
    int left = stop;
    options.progress = [&](double) {
      if (--left == 0) throw Interruption();
    };
    EXPECT_THROW(byFrequency(pair, tissue, twoCycles, somePoints, times, options), Interruption);
  }
}

TEST(AttenuatedPulseTest, WhatCannotBeComputedIsRefused) {
  const TimeAxis times = {0, 30 * megahertz, 10};
  const auto refusal = [&](const std::vector<DelayedPiston>& pistons, const Medium& medium,
                           const std::vector<Position>& points) {
    return errorOf([&] { byFrequency(pistons, medium, twoCycles, points, times); });
  };
  EXPECT_NE(refusal(pair, tissue, {{0, 0, -millimetre}}).find("straight behind a piston"),
            std::string::npos);
  EXPECT_NE(refusal(pair, {1500, 0, 1, 0}, {{0, 0, 1e7}}).find("within 1e9 wavelengths"),
            std::string::npos);
  // The attenuation is more than the real part of k.
  EXPECT_NE(
      refusal(pair, {1500, 1e3, 1, 0}, {{0, 0, 1e-6}}).find("the attenuation must be at most"),
      std::string::npos);
  // Both cancel each other.
  std::vector<DelayedPiston> opposite(2, pair[0]);
  opposite[1].piston.weight = -1;
  EXPECT_NE(refusal(opposite, tissue, somePoints).find("Double precision cannot keep any"),
            std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomPulseTest, testing::Range(1u, 7u));
