#include "field/spectrum.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "field/ExactPressure.h"
#include "field/Pistons.h"
#include "lanes/InstructionSet.h"
#include "support/AnyScene.h"
#include "support/Threads.h"

using pistonfield::Field;
using pistonfield::FieldReport;
using pistonfield::Position;
using pistonfield::spectrum;
using pistonfield::SpectrumOptions;
using pistonfield::WaveNumbers;
using support::Chance;
using Pressures = std::vector<std::complex<double>>;

namespace {

constexpr double pi = 3.14159265358979323846;

SpectrumOptions within(double tolerance) {
  SpectrumOptions options;
  options.tolerance = tolerance;
  return options;
}

double waveNumber(const WaveNumbers& waves, std::size_t m) {
  return waves.first + static_cast<double>(m) * waves.step;
}

/// Pistons, points and wave numbers; lengths are in wavelengths at 2π.
struct Scene {
  std::vector<Field::Piston> pistons;
  std::vector<Position> points;
  WaveNumbers waves;
};

/// A coordinate next to an edge, on it, over the piston or beside it.
double coordinate(Chance& chance, double half) {
  switch (static_cast<int>(chance.between(0, 5))) {
    case 0:
      return half;
    case 1:
      return half + chance.sign() * chance.ofAnySize(1e-9, 0.1);
    case 2:
      return 0;
    case 3:
      return chance.between(-half, half);
    default:
      return half * chance.ofAnySize(1, 30);
  }
}

/// On the plane of the piston, close to it, far off or behind it, but not straight behind an edge.
Position anyPoint(Chance& chance, const Field::Piston& piston) {
  Position own = {coordinate(chance, piston.width / 2), coordinate(chance, piston.height / 2), 0};
  switch (static_cast<int>(chance.between(0, 5))) {
    case 0:
      break;
    case 1:
      own[2] = chance.ofAnySize(1e-9, 0.1);
      break;
    case 2:
      own[2] = chance.ofAnySize(30, 1e4);
      break;
    case 3:
      own = {chance.between(-piston.width, piston.width), own[1] * 0.9,
             -chance.ofAnySize(0.01, 20)};
      break;
    default:
      own[2] = chance.ofAnySize(0.1, 30);
  }
  Position p = piston.centre;
  for (std::size_t n = 0; n < 3; ++n)
    for (std::size_t axis = 0; axis < 3; ++axis) p[n] += own[axis] * piston.axes[axis][n];
  return p;
}

WaveNumbers anyWaveNumbers(Chance& chance) {
  const auto count = static_cast<std::size_t>(chance.ofAnySize(1, 1200));
  const double step = 2 * pi * chance.ofAnySize(0.1, 2) / static_cast<double>(count);
  switch (static_cast<int>(chance.between(0, 4))) {
    case 0:
      return {0, step, count};
    case 1:
      return {3 * pi, -step, count};
    case 2:
      return {-0.3 * 2 * pi, step, count};
    default:
      return {chance.between(0.3, 1) * 2 * pi, step, count};
  }
}

Scene anyScene(std::mt19937& random) {
  Chance chance(random);
  Scene scene;
  const int count = random() % 2 == 0 ? 1 : static_cast<int>(chance.ofAnySize(2, 20));
  const bool turned = random() % 3 == 0;
  for (int n = 0; n < count; ++n) {
    scene.pistons.push_back(piston(chance.ofAnySize(0.05, 12), chance.ofAnySize(0.05, 12)));
    if (turned) scene.pistons.back().axes = anyRotation(random);
    if (count == 1) continue;
    scene.pistons.back().centre = {chance.between(-6, 6), chance.between(-6, 6),
                                   turned ? chance.between(-2, 2) : 0};
    scene.pistons.back().weight = std::polar(chance.ofAnySize(0.1, 1), chance.between(0, 2 * pi));
  }
  const std::size_t points = random() % 4 == 0 ? 150 : 7;
  while (scene.points.size() < points)
    scene.points.push_back(anyPoint(chance, scene.pistons[random() % scene.pistons.size()]));
  scene.waves = anyWaveNumbers(chance);
  return scene;
}

std::complex<double> exactAt(std::vector<Field::Piston> pistons, double k, const Position& point) {
  if (k == 0) return 0;
  if (k > 0) return std::complex<double>(exactPressure(pistons, k, point));
  // −conj(p) for −k and the weight 1
  for (Field::Piston& piston : pistons) piston.weight = std::conj(piston.weight);
  return -std::conj(std::complex<double>(exactPressure(pistons, -k, point)));
}

/// The largest error at some points and wave numbers, over the report's bound.
double largestErrorOf(const Scene& scene, const Pressures& p, const FieldReport& report) {
  double most = 0;
  const std::size_t steps = std::max<std::size_t>(scene.waves.count / 5, 1),
                    strides = std::max<std::size_t>(scene.points.size() / 7, 1);
  for (std::size_t n = 0; n < scene.points.size(); n += strides)
    for (std::size_t m = 0; m < scene.waves.count; m += steps)
      most = std::max(
          most, std::abs(p[m + scene.waves.count * n] -
                         exactAt(scene.pistons, waveNumber(scene.waves, m), scene.points[n])));
  return most == 0 ? 0 : most / report.bound;
}

class SpectraTest : public testing::TestWithParam<unsigned> {};

TEST_P(SpectraTest, TheToleranceIsKept) {
  std::mt19937 random(GetParam());
  double worst = 0;
  int refused = 0;
  const int rounds = std::getenv("PISTONFIELD_LONG") ? 250 : 12;
  for (int round = 0; round < rounds; ++round) {
    const Scene scene = anyScene(random);
    for (const double tolerance : {1e-2, 1e-3, 1e-5, 1e-7, 1e-9}) {
      FieldReport report;
      Pressures p;
      const std::string error = errorOf([&] {
        p = spectrum(scene.pistons, scene.waves, scene.points, within(tolerance), &report);
      });
      if (!error.empty()) {
        EXPECT_LT(tolerance, 1e-6) << error;
        ++refused;
        continue;
      }
      EXPECT_LE(report.bound, tolerance * peakOf(p) * (1 + tolerance));
      const double ratio = largestErrorOf(scene, p, report);
      EXPECT_LE(ratio, 1) << "round " << round << ", tolerance " << tolerance << ", "
                          << scene.pistons.size() << " pistons, " << scene.points.size()
                          << " points, k " << scene.waves.first << " + " << scene.waves.step << "·"
                          << scene.waves.count;
      worst = std::max(worst, ratio);
    }
  }
  std::cout << "largest error " << worst << " of the bound, " << refused << " of " << 5 * rounds
            << " refused\n";
  EXPECT_GT(worst, 1e-4);
  EXPECT_LE(refused, rounds / 2);
}

INSTANTIATE_TEST_SUITE_P(Seeds, SpectraTest, testing::Range(1U, 7U));

std::vector<Position> onALine(std::size_t count, const Position& first, const Position& step) {
  std::vector<Position> points(count);
  for (std::size_t n = 0; n < count; ++n)
    for (std::size_t axis = 0; axis < 3; ++axis)
      points[n][axis] = first[axis] + static_cast<double>(n) * step[axis];
  return points;
}

/// A scene that is interpolated, with a piston's field at each wave number by Field.
TEST(SpectrumTest, IsThatOfFieldAtEachWaveNumber) {
  const std::vector<Field::Piston> pistons = {piston(5, 7.5),
                                              piston(2, 3, {4, -1, -0.5}, {0.5, -0.7})};
  const std::vector<Position> points = {{0, 0, 10}, {2.5, 3.75, 0}, {2.5, 1, 0.01},
                                        {1, 2, -3}, {40, 3, 60},    {0.1, 5, 2}};
  for (const WaveNumbers& waves :
       {WaveNumbers{pi, 2 * pi / 99, 100}, WaveNumbers{2 * pi, -4 * pi / 80, 81},
        WaveNumbers{0, 2 * pi / 600, 601}, WaveNumbers{-1, 0.1, 21}, WaveNumbers{3, 0, 40},
        WaveNumbers{5, 1, 1}})
    for (const double tolerance : {1e-2, 1e-4, 1e-6, 1e-9}) {
      const Pressures p = spectrum(pistons, waves, points, within(tolerance));
      ASSERT_EQ(p.size(), waves.count * points.size());
      const double peak = peakOf(p);
      for (std::size_t m = 0; m < waves.count; ++m) {
        // -1 + 10·0.1 is a rounding error.
        const double k = waves.first == -1 && m == 10 ? 0 : waveNumber(waves, m);
        const Pressures exact = Field(pistons, k).at(points, toTolerance(1e-10));
        for (std::size_t n = 0; n < points.size(); ++n)
          ASSERT_LE(std::abs(p[m + waves.count * n] - exact[n]), tolerance * peak + 3e-10)
              << "tolerance " << tolerance << ", k " << k << ", point " << n;
      }
    }
}

TEST(SpectrumTest, ManyWaveNumbersTakeFewNodes) {
  const std::vector<Position> points = {{1, 2, 20}, {3, 4, 30}};
  const WaveNumbers waves = {pi, 2 * pi / 255, 256};
  FieldReport report, ofOne;
  spectrum({piston(5, 7.5)}, waves, points, {}, &report);
  Field({piston(5, 7.5)}, 2 * pi).at(points, {}, &ofOne);
  EXPECT_GT(report.nodes, ofOne.nodes);
  EXPECT_LT(report.nodes, 30 * ofOne.nodes);
  EXPECT_GT(report.bound, 0);
  EXPECT_GT(report.leastOrder, 0);
  EXPECT_GE(report.mostOrder, report.leastOrder);
  EXPECT_TRUE(report.single || report.precise);
}

TEST(SpectrumTest, EveryInstructionSetKeepsTheTolerance) {
  using pistonfield::InstructionSet;
  const std::vector<Field::Piston> pistons = {piston(5, 7.5), piston(0.3, 9, {4, 0, 0}, {0, 1})};
  const std::vector<Position> points = onALine(70, {0, 2, 0}, {0.1, -0.07, 0.2});
  const WaveNumbers waves = {pi, 2 * pi / 99, 100};
  const Pressures exact = spectrum(pistons, waves, points, within(1e-10));
  const double peak = peakOf(exact);
  const InstructionSet previous = pistonfield::limitInstructionSet(InstructionSet::AVX512);
  for (const InstructionSet set :
       {InstructionSet::OLDEST, InstructionSet::AVX2, InstructionSet::AVX512}) {
    pistonfield::limitInstructionSet(set);
    for (const double tolerance : {1e-3, 1e-6}) {
      const Pressures p = spectrum(pistons, waves, points, within(tolerance));
      for (std::size_t n = 0; n < p.size(); ++n)
        ASSERT_LE(std::abs(p[n] - exact[n]), tolerance * peak)
            << pistonfield::nameOf(set) << ", number " << n;
    }
  }
  pistonfield::limitInstructionSet(previous);
}

TEST(SpectrumTest, PointsThatAreNotFiniteAreNaNAndChangeNoOther) {
  const double nan = std::numeric_limits<double>::quiet_NaN(),
               infinity = std::numeric_limits<double>::infinity();
  const WaveNumbers waves = {pi, 2 * pi / 63, 64};
  const std::vector<Position> points = {
      {0, 0, 5}, {nan, 0, 1}, {1, 2, 3}, {0, infinity, 2}, {4, 4, 4}};
  const Pressures p = spectrum({piston(5, 7.5)}, waves, points);
  const Pressures exact =
      spectrum({piston(5, 7.5)}, waves, {points[0], points[2], points[4]}, within(1e-8));
  for (std::size_t m = 0; m < waves.count; ++m) {
    for (const std::size_t lost : {std::size_t{1}, std::size_t{3}}) {
      EXPECT_TRUE(std::isnan(p[m + waves.count * lost].real()));
      EXPECT_TRUE(std::isnan(p[m + waves.count * lost].imag()));
    }
    for (std::size_t n = 0; n < 3; ++n)
      EXPECT_LE(std::abs(p[m + waves.count * 2 * n] - exact[m + waves.count * n]), 1e-4 * 2.5);
  }
}

TEST(SpectrumTest, NothingIsAnEmptyOrSilentSpectrum) {
  const std::vector<Position> points = {{0, 0, 1}, {1, 0, 1}};
  FieldReport report;
  report.nodes = 1;
  EXPECT_TRUE(spectrum({piston(1, 1)}, {1, 1, 0}, points, {}, &report).empty());
  EXPECT_EQ(report.nodes, 0);
  EXPECT_TRUE(spectrum({piston(1, 1)}, {1, 1, 3}, std::vector<Position>()).empty());
  for (const auto& pistons :
       {std::vector<Field::Piston>(), {piston(0, 1)}, {piston(1, 1, {0, 0, 0}, 0)}})
    EXPECT_EQ(spectrum(pistons, {1, 1, 3}, points), Pressures(6));
  EXPECT_EQ(spectrum({piston(1, 1)}, {0, 0, 3}, points), Pressures(6));
}

TEST(SpectrumTest, WeightsMayHaveAnySize) {
  const WaveNumbers waves = {pi, 0.05, 64};
  const std::vector<Position> points = {{0, 0, 5}, {3, 2, 1}};
  const Pressures p = spectrum({piston(5, 7.5)}, waves, points);
  FieldReport report;
  for (const double weight : {0x1p-990, 0x1p990}) {
    const Pressures scaled =
        spectrum({piston(5, 7.5, {0, 0, 0}, weight)}, waves, points, {}, &report);
    EXPECT_GT(report.bound / weight, 1e-5);
    for (std::size_t n = 0; n < p.size(); ++n) EXPECT_EQ(scaled[n] / weight, p[n]) << weight;
  }
}

TEST(SpectrumTest, ArgumentsOutOfRangeAreRefused) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const std::vector<Position> points = {{0, 0, 1}};
  const auto error = [&](const Field::Piston& one, const WaveNumbers& waves,
                         const std::vector<Position>& at, double tolerance) {
    return errorOf([&] { spectrum({one}, waves, at, within(tolerance)); });
  };
  const auto contains = [](const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
  };
  const WaveNumbers good = {1, 0.1, 20};
  EXPECT_EQ(error(piston(1, 1), good, points, 1e-4), "");
  EXPECT_TRUE(contains(error(piston(-1, 1), good, points, 1e-4), "width and height"));
  EXPECT_TRUE(contains(error(piston(1e-10, 1), good, points, 1e-4), "sides must be 0 or from"));
  EXPECT_TRUE(contains(error(piston(1, 1, {1e11, 0, 0}), good, points, 1e-4), "its centre"));
  EXPECT_TRUE(contains(error(piston(1, 1), {nan, 0.1, 20}, points, 1e-4), "must be finite"));
  EXPECT_TRUE(contains(error(piston(1, 1), {1, nan, 20}, points, 1e-4), "must be finite"));
  EXPECT_TRUE(contains(error(piston(1, 1), {1e99, 1e99, 2}, points, 1e-4), "1e-99 to 1e99"));
  EXPECT_TRUE(contains(error(piston(1, 1), {1, 1e308, 20}, points, 1e-4), "finite"));
  EXPECT_TRUE(contains(error(piston(1, 1), good, points, 1e-13), "tolerance"));
  EXPECT_TRUE(contains(error(piston(1, 1), good, points, 1), "tolerance"));
  // Within the range of the least k, but not of the largest.
  EXPECT_TRUE(contains(error(piston(1, 1), {1, 0.1, 20}, {{0, 0, 5e9}}, 1e-4), "1e9 wavelengths"));
  EXPECT_TRUE(contains(errorOf([&] {
                         spectrum({piston(1, 1)},
                                  {1, 1e-9, std::numeric_limits<std::size_t>::max() / 4096},
                                  std::vector<Position>(1 << 20));
                       }),
                       "memory"));
}

TEST(SpectrumTest, AToleranceThatCannotBeKeptIsRefused) {
  const std::vector<Field::Piston> cancelling = {piston(1, 1), piston(1, 1, {0, 0, 0}, -1)};
  EXPECT_NE(errorOf([&] { spectrum(cancelling, {pi, 0.1, 30}, {{0, 0, 3}}); }), "");
}

TEST(SpectrumTest, AnExceptionOfTheProgressFunctionPassesThrough) {
  const std::vector<Position> points = onALine(3000, {0, 2, 0.1}, {0.01, 0, 0.003});
  const std::vector<Field::Piston> pistons(20, piston(5, 7.5));
  int calls = 0;
  double last = 0;
  SpectrumOptions options;
  options.progress = [&](double fraction) {
    EXPECT_GE(fraction, last);
    EXPECT_LE(fraction, 1);
    last = fraction;
    ++calls;
  };
  spectrum(pistons, {pi, 0.05, 64}, points, options);
  EXPECT_EQ(last, 1);
  ASSERT_GT(calls, 3);
  for (const int when : {1, calls / 2, calls}) {
    int left = when;
    options.progress = [&](double) {
      if (--left == 0) throw std::runtime_error("enough");
    };
    EXPECT_THROW(spectrum(pistons, {pi, 0.05, 64}, points, options), std::runtime_error) << when;
  }
}

TEST(SpectrumTest, ThreadsGetTheBitsOfOne) {
  const std::vector<Position> points = onALine(500, {0, 2, 0.1}, {0.02, 0, 0.03});
  const WaveNumbers waves = {pi, 2 * pi / 63, 64};
  const std::vector<Field::Piston> pistons = {piston(5, 7.5), piston(2, 2, {4, 4, 0})};
  const Pressures alone = spectrum(pistons, waves, points);
  std::vector<Pressures> together(4);
  support::onThreads(together.size(),
                     [&](std::size_t n) { together[n] = spectrum(pistons, waves, points); });
  for (const Pressures& p : together) EXPECT_EQ(p, alone);
}

}  // namespace
