#include "field/echo.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>

#include "field/FrequencySum.h"
#include "field/Pistons.h"
#include "field/Pulses.h"

using pistonfield::DelayedPiston;
using pistonfield::Echo;
using pistonfield::Excitation;
using pistonfield::FieldError;
using pistonfield::Medium;
using pistonfield::Position;
using pistonfield::PulseOptions;
using pistonfield::PulseReport;
using pistonfield::TimeAxis;

namespace {

constexpr double megahertz = 1e6, millimetre = 1e-3, microsecond = 1e-6;

const std::vector<DelayedPiston> transmit = {
    delayedBy(0.3 * microsecond, piston(0.6 * millimetre, 0.4 * millimetre)),
    delayedBy(0, piston(0.4 * millimetre, 0.5 * millimetre, {millimetre, 0, 0}, 0.8))};
const std::vector<DelayedPiston> receive = {
    delayedBy(-0.4 * microsecond, piston(0.3 * millimetre, 0.3 * millimetre, {-millimetre, 0, 0})),
    delayedBy(0.1 * microsecond,
              piston(0.5 * millimetre, 0.2 * millimetre, {0, millimetre, 0}, -0.5))};
const std::vector<Position> scatterers = {{0, 0, 4 * millimetre},
                                          {2 * millimetre, -millimetre, 3 * millimetre}};
const Excitation excitation = burst(2 * megahertz, 3, 25 * megahertz);
const Medium lossless{1500, 0, 1, 0}, tissue{1540, 0.7, 1.1, 3 * megahertz};

std::vector<double> exactEchoes(const Medium& medium, const std::vector<Position>& points,
                                const TimeAxis& times) {
  const FrequencySum sum({transmit, receive}, medium, excitation, 12 * microsecond, 2.2);
  std::vector<double> all;
  for (const Position& p : points) {
    const std::vector<double> signal = sum(p, times);
    all.insert(all.end(), signal.begin(), signal.end());
  }
  return all;
}

void expectWithin(double tolerance, const Medium& medium, const std::vector<Position>& points) {
  const Echo echo(transmit, receive, medium, excitation);
  const TimeAxis times = echo.times(points, 20 * megahertz);
  const std::vector<double> exact = exactEchoes(medium, points, times);
  for (double kept = 1e-2; kept >= 0.99 * tolerance; kept /= 10) {
    PulseReport report;
    const std::vector<double> e = echo.at(points, times, pulseTo(kept), &report);
    EXPECT_LE(differenceOf(e, exact), report.bound);
    EXPECT_LE(report.bound, 1.1 * kept * largestOf(exact));  // it may be between two times
    EXPECT_GT(report.frequencies, 0u);
  }
}

}  // namespace

TEST(EchoTest, IsWithinItsToleranceOfTheDoubleIntegrals) { expectWithin(1e-4, tissue, scatterers); }

// Frequencies around multiples of the excitation's rate matter here, of which the sum has only two.
TEST(EchoTest, IsWithinItsToleranceOfTheDoubleIntegralsWithoutLoss) {
  expectWithin(1e-3, lossless, scatterers);
}

// There the plane wave of a piston is heard before it is emitted.
TEST(EchoTest, WithoutLossScatterersMayBeBehindPistons) {
  expectWithin(1e-3, lossless, {{0, 0, -2 * millimetre}});
}

// The transmitted pulse at the scatterer is what a point there radiates to the receiving pistons,
// and by reciprocity what these radiate to the point.
TEST(EchoTest, IsAPulseOfThePulseAtTheScatterer) {
  for (const Medium& medium : {lossless, tissue})
    for (const Position& p : scatterers) {
      const double rate = 80 * megahertz;
      const TimeAxis there = timesOf({transmit}, medium, excitation, {p}, rate, microsecond);
      const Excitation pulse{byFrequency(transmit, medium, excitation, {p}, there, pulseTo(1e-5)),
                             rate, there.start};
      const Echo echo(transmit, receive, medium, excitation);
      const TimeAxis times = echo.times({p}, 20 * megahertz);
      const std::vector<double> twice =
          byFrequency(receive, medium, pulse, {p}, times, pulseTo(1e-4));
      EXPECT_LT(differenceOf(echo.at({p}, times), twice), 1e-3 * largestOf(twice));
      EXPECT_GT(largestOf(twice), 0);
    }
}

TEST(EchoTest, TransmittingAndReceivingPistonsMayBeExchanged) {
  const Echo one(transmit, receive, tissue, excitation),
      other(receive, transmit, tissue, excitation);
  const TimeAxis times = one.times(scatterers, 20 * megahertz);
  const std::vector<double> e = one.at(scatterers, times);
  EXPECT_LT(differenceOf(e, other.at(scatterers, times)), 2e-4 * largestOf(e));
}

TEST(EchoTest, TimesAreThoseFromTheFirstToTheLastEcho) {
  const Echo echo(transmit, receive, lossless, excitation);
  const double rate = 40 * megahertz;
  const TimeAxis times = echo.times(scatterers, rate);
  const double beyond = 2 * microsecond;
  const TimeAxis wide = {times.start - beyond, rate,
                         times.count + static_cast<std::size_t>(2 * beyond * rate)};
  const std::vector<double> e = echo.at(scatterers, wide);
  const double peak = largestOf(e);
  std::size_t first = wide.count, last = 0;
  for (std::size_t n = 0; n < e.size(); ++n)
    if (std::fabs(e[n]) > 1e-4 * peak) {
      first = std::min(first, n % wide.count);
      last = std::max(last, n % wide.count);
    }
  const auto shift = static_cast<std::size_t>(beyond * rate);
  EXPECT_GE(first, shift);
  EXPECT_LT(last, shift + times.count);
  EXPECT_LT(first, shift + 0.3 * static_cast<double>(times.count));
  EXPECT_GT(last, shift + 0.7 * static_cast<double>(times.count));
  EXPECT_EQ(echo.times(std::vector<Position>{}, rate).count, 0u);
}

TEST(EchoTest, ScatterersMayBeAtVeryDifferentRanges) {
  const Echo echo(transmit, receive, tissue, excitation);
  const std::vector<Position> points = {{0, 0, 2 * millimetre}, {0, 0, 90 * millimetre}};
  const TimeAxis times = echo.times(points, 20 * megahertz);
  PulseReport both, one;
  const std::vector<double> e = echo.at(points, times, {}, &both),
                            near = echo.at({points[0]}, times, {}, &one);
  EXPECT_LT(differenceOf({e.begin(), e.begin() + static_cast<std::ptrdiff_t>(times.count)}, near),
            2e-4 * largestOf(near));
  EXPECT_LT(both.frequencies, 3 * one.frequencies);
}

TEST(EchoTest, ScatterersThatAreNotFiniteGetNaN) {
  const Echo echo(transmit, receive, tissue, excitation);
  const std::vector<double> e =
      echo.at({{0, 0, std::numeric_limits<double>::quiet_NaN()}}, {0, megahertz, 3});
  ASSERT_EQ(e.size(), 3u);
  for (const double value : e) EXPECT_TRUE(std::isnan(value));
}

TEST(EchoTest, WithoutPistonsThereIsNoEcho) {
  const Echo echo(transmit, {}, tissue, excitation);
  EXPECT_EQ(echo.at(scatterers, {0, megahertz, 3}), std::vector<double>(6, 0));
  EXPECT_EQ(echo.times(scatterers, megahertz).count, 0u);
}

TEST(EchoTest, AnInterruptionPassesThrough) {
  const Echo echo(transmit, receive, tissue, excitation);
  PulseOptions options;
  int left = 8;
  options.progress = [&](double) {
    if (--left == 0) throw std::runtime_error("stop");
  };
  EXPECT_THROW(echo.at(scatterers, {0, megahertz, 30}, options), std::runtime_error);
}

TEST(EchoTest, InvalidArgumentsAreRefused) {
  const auto refusal = [](const std::vector<DelayedPiston>& pistons, const Medium& medium,
                          const Excitation& v) {
    return errorOf([&] { Echo(pistons, receive, medium, v); });
  };
  EXPECT_EQ(refusal(transmit, tissue, excitation), "");
  std::vector<DelayedPiston> wrong = transmit;
  wrong[1].piston.weight = {1, 1};
  EXPECT_NE(refusal(wrong, tissue, excitation).find("Piston 1: its weight must be real"),
            std::string::npos);
  wrong = transmit;
  wrong[0].delay = std::numeric_limits<double>::infinity();
  EXPECT_NE(refusal(wrong, tissue, excitation).find("delay"), std::string::npos);
  wrong[0].piston.width = -1;
  EXPECT_NE(refusal(wrong, tissue, excitation).find("width"), std::string::npos);
  EXPECT_NE(refusal(transmit, {0, 0, 1, 0}, excitation).find("speed"), std::string::npos);
  EXPECT_NE(refusal(transmit, tissue, {{}, 1, 0}).find("sample"), std::string::npos);

  const Echo echo(transmit, receive, tissue, excitation);
  const TimeAxis times = {0, megahertz, 3};
  for (const double tolerance : {0., 1e-7, 1., double{NAN}})
    EXPECT_THROW(echo.at(scatterers, times, pulseTo(tolerance)), FieldError);
  for (const double rate : {0., -1., double{NAN}, double{INFINITY}}) {
    EXPECT_THROW(echo.at(scatterers, {0, rate, 3}), FieldError);
    EXPECT_THROW(echo.times(scatterers, rate), FieldError);
  }
  EXPECT_THROW(echo.at(scatterers, {NAN, megahertz, 3}), FieldError);
  EXPECT_THROW(echo.at(scatterers, {0, megahertz, std::size_t{1} << 62}), FieldError);
}

TEST(EchoTest, IsWithinItsBoundOrRefusedAtLargeDelays) {
  PulseOptions options;
  options.tolerance = 1e-6;
  const TimeAxis times = {38, 16, 160};
  std::vector<DelayedPiston> pistons = pistonfield::delayed({piston(2, 3)});
  PulseReport report;
  const auto echoAt = [&](double delay) {
    pistons[0].delay = delay;
    return Echo(pistons, pistonfield::delayed({piston(1, 1)}), Medium{1},
                pistonfield::toneBurst(1, 2, 16))
        .at({{0.3, 0, 20}}, {times.start + delay, times.rate, times.count}, options, &report);
  };
  const std::vector<double> near = echoAt(0);
  int kept = 0;
  for (int power = 10; power <= 36; ++power) try {
      const std::vector<double> far = echoAt(std::ldexp(1.0, power));
      for (std::size_t n = 0; n < near.size(); ++n)
        EXPECT_NEAR(far[n], near[n], 2 * report.bound) << power;
      ++kept;
    } catch (const FieldError&) {  // later delays are refused
    }
  EXPECT_GT(kept, 3);
  EXPECT_LT(kept, 27);
}
