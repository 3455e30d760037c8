#include "field/pulse.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>

#include "field/ExactPulse.h"
#include "field/Pistons.h"
#include "lanes/InstructionSet.h"

using namespace pistonfield;

namespace {

const double pi = std::acos(-1.0);
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN(),
                 infinity = std::numeric_limits<double>::infinity();

PulseOptions within(double tolerance) {
  PulseOptions options;
  options.tolerance = tolerance;
  return options;
}

double largest(const std::vector<double>& values) {
  double most = 0;
  for (const double value : values) most = std::max(most, std::fabs(value));
  return most;
}

double largestDifference(const std::vector<double>& one, const std::vector<double>& other) {
  EXPECT_EQ(one.size(), other.size());
  double most = 0;
  for (std::size_t n = 0; n < one.size(); ++n)
    if (!(std::fabs(one[n] - other[n]) <= most)) most = std::fabs(one[n] - other[n]);
  return most;
}

/// A scene with everything that a user may choose.
struct Scene {
  std::vector<DelayedPiston> pistons;
  Excitation excitation;
  double speed;
  std::vector<Position> points;
};

class AnyScene {
 public:
  explicit AnyScene(unsigned seed) : random_(seed) {}

  Scene operator()() {
    Scene scene;
    scene.speed = between(0.5, 3);
    const double wavelength = scene.speed;
    const int count = 1 + static_cast<int>(between(0, 3));
    for (int n = 0; n < count; ++n) {
      DelayedPiston delayed;
      delayed.piston = piston(log(0.2, 12) * wavelength, log(0.2, 12) * wavelength,
                              {between(-3, 3), between(-3, 3), between(-1, 1)}, between(-2, 2));
      if (between(0, 1) < 0.5) delayed.piston.axes = anyRotation(random_);
      delayed.delay = between(-2, 2);
      scene.pistons.push_back(delayed);
    }
    scene.excitation = excitation();
    for (int n = 0; n < 4; ++n) scene.points.push_back(near(scene.pistons[0].piston, wavelength));
    return scene;
  }

  double between(double least, double most) {
    return std::uniform_real_distribution<double>(least, most)(random_);
  }
  double log(double least, double most) { return least * std::pow(most / least, between(0, 1)); }

 private:
  Excitation excitation() {
    switch (static_cast<int>(between(0, 4))) {
      case 0:
        return toneBurst(1, between(0.5, 4), between(8, 30));
      case 1:
        return toneBurst(1, between(0.5, 4), between(8, 20), "rectangular");
      case 2:
        return gaussPulse(1, between(0.3, 1.2), between(8, 30));
      default:
        Excitation any;
        any.rate = between(4, 9);
        any.start = between(-1, 1);
        const double count = between(1, 15);
        for (int n = 0; n < count; ++n) any.samples.push_back(between(-1, 1));
        return any;
    }
  }

  /// On the axis, off it, near an edge, or behind the rim.
  Position near(const Field::Piston& piston, double wavelength) {
    const double a = piston.width / 2, b = piston.height / 2, depth = log(1e-3, 20) * wavelength;
    const auto place = static_cast<int>(between(0, 5));
    const Position own = place == 0   ? Position{0, 0, depth}
                         : place == 1 ? Position{a * between(-1, 1), b * between(-1, 1), depth}
                         : place == 2
                             ? Position{a * (1 + between(-1e-3, 1e-3)), b * between(-1, 1), depth}
                         : place == 3 ? Position{a * between(-3, 3), b * between(-3, 3), -depth}
                                      : Position{a * between(1.1, 4), b * between(-2, 2), 0};
    Position p = piston.centre;
    for (std::size_t axis = 0; axis < 3; ++axis)
      for (std::size_t n = 0; n < 3; ++n) p[n] += own[axis] * piston.axes[axis][n];
    return p;
  }

  std::mt19937 random_;
};

/// The errors at some of the times.
struct Errors {
  double largest = 0, peak = 0, bound = 0;
};

Errors errorsOf(const Scene& scene, double rate, double tolerance) {
  const Pulse pulse(scene.pistons, Medium{scene.speed}, scene.excitation);
  const ExactPulse exact(scene.pistons, scene.speed, scene.excitation);
  const TimeAxis times = pulse.times(scene.points, rate);
  PulseReport report;
  const std::vector<double> p = pulse.at(scene.points, times, within(tolerance), &report);
  Errors errors;
  errors.bound = report.bound;
  for (std::size_t n = 0; n < scene.points.size(); ++n)
    for (std::size_t m = 0; m < times.count; m += 1 + times.count / 60) {
      const double value =
          exact.at(scene.points[n], times.start + static_cast<double>(m) / times.rate);
      errors.peak = std::max(errors.peak, std::fabs(value));
      const double error = std::fabs(p[m + times.count * n] - value);
      if (!(error <= errors.largest)) errors.largest = error;
    }
  // Between the times, too.
  errors.peak = std::max(
      errors.peak, largest(pulse.at(scene.points, pulse.times(scene.points, 40), within(1e-3))));
  return errors;
}

Scene oneScene() {
  Scene scene;
  scene.speed = 1;
  scene.pistons = {{piston(5, 7.5), 0}};
  scene.excitation = toneBurst(1, 2, 16);
  scene.points = {{0, 0, 4}, {1.3, 0.9, 4}, {2.49, 1, 0.05}, {6, 5, 0}, {1, 1, -3}, {3, 0, -2}};
  return scene;
}

}  // namespace

// ∬ v'(t − R/c)/R dS by Gauss rules in cells that are short against the samples' steps.
TEST(ExactPulseTest, IsTheDoubleIntegral) {
  const Excitation excitation = gaussPulse(1, 0.8, 8);
  const DelayedPiston delayed{piston(1.5, 2, {0.1, 0, 0}, 0.7), 0.25};
  const ExactPulse exact({delayed}, 1.3, excitation);
  const Position point = {0.9, 0.3, 0.8};
  const double nodes[] = {-0.7745966692414834, 0, 0.7745966692414834},
               weights[] = {5.0 / 9, 8.0 / 9, 5.0 / 9};
  const int cells = 150;
  for (const double t : {0.3, 0.9, 1.4, 2.0}) {
    double sum = 0;
    for (int i = 0; i < 3 * cells; ++i)
      for (int j = 0; j < 3 * cells; ++j) {
        const double x = 0.1 + 1.5 * ((i / 3 + (nodes[i % 3] + 1) / 2) / cells - 0.5),
                     y = 2 * ((j / 3 + (nodes[j % 3] + 1) / 2) / cells - 0.5),
                     R = std::hypot(x - point[0], y - point[1], point[2]);
        sum += weights[i % 3] * weights[j % 3] * exact.acceleration(t - 0.25 - R / 1.3) / R;
      }
    const double cell = 1.5 * 2 / 4 / cells / cells;
    EXPECT_NEAR(exact.at(point, t), 0.7 * sum * cell / (2 * pi * 1.3), 1e-6) << t;
  }
}

TEST(PulseTest, KeepsItsToleranceInAnyScene) {
  AnyScene anyScene(7);
  for (const double tolerance : {1e-2, 1e-3, 1e-4}) {
    double worst = 0, mean = 0;
    constexpr int scenes = 12;
    for (int n = 0; n < scenes; ++n) {
      const Scene scene = anyScene();
      const Errors errors = errorsOf(scene, anyScene.log(3, 40), tolerance);
      EXPECT_LE(errors.largest, errors.bound) << tolerance << ", scene " << n;
      EXPECT_LE(errors.bound, 1.001 * tolerance * errors.peak) << tolerance << ", scene " << n;
      worst = std::max(worst, errors.largest / errors.bound);
      mean += errors.largest / errors.bound / scenes;
    }
    std::printf("tolerance %g: error/bound at most %.2g, %.2g on average\n", tolerance, worst,
                mean);
    EXPECT_GT(worst, 5e-3);  // the bound is no better than that
  }
}

TEST(PulseTest, KeepsTheFinestTolerance) {
  const Errors errors = errorsOf(oneScene(), 9.7, 1e-6);
  EXPECT_LE(errors.largest, 1e-6 * errors.peak);
  EXPECT_LE(errors.largest, errors.bound);
}

TEST(PulseTest, IsTheFieldAtEachFrequency) {
  const Scene scene = oneScene();
  const Pulse pulse(scene.pistons, Medium{2.5}, scene.excitation);
  const TimeAxis times = pulse.times(scene.points, 40);
  const std::vector<double> p = pulse.at(scene.points, times, within(1e-5));
  for (const double frequency : {0.6, 1.0, 1.3}) {
    const double omega = 2 * pi * frequency;
    std::complex<double> V = 0;
    const ExactPulse exact({}, 1, scene.excitation);
    for (double t = -1; t < 3; t += 1e-3)
      V += 1e-3 * exact.velocity(t) * std::polar(1.0, -omega * t);
    const std::vector<std::complex<double>> P =
        Field({scene.pistons[0].piston}, omega / 2.5).at(scene.points, toTolerance(1e-8));
    for (std::size_t n = 0; n < scene.points.size(); ++n) {
      std::complex<double> sum = 0;
      for (std::size_t m = 0; m < times.count; ++m)
        sum += p[m + times.count * n] / times.rate *
               std::polar(1.0, -omega * (times.start + static_cast<double>(m) / times.rate));
      EXPECT_LT(std::abs(sum - V * std::complex<double>(0, 1) * P[n]), 2e-4)
          << frequency << ", " << n;
    }
  }
}

TEST(PulseTest, SumsPistonsWithTheirWeightsAndDelays) {
  const Scene scene = oneScene();
  const TimeAxis times{-2, 16, 300};
  const Field::Piston one = piston(2, 3, {1, 0, 0}, 0.7),
                      other = piston(1, 4, {-1, 0.5, 0.2}, -2.0);
  const Medium medium{1};
  const auto at = [&](const std::vector<DelayedPiston>& pistons, const TimeAxis& axis) {
    return Pulse(pistons, medium, scene.excitation).at(scene.points, axis, within(1e-6));
  };
  const std::vector<double> both = at({{one, 0.3}, {other, -1}}, times);
  std::vector<double> sum = at({{one, 0}}, {times.start - 0.3, times.rate, times.count});
  const std::vector<double> second = at({{other, 0}}, {times.start + 1, times.rate, times.count});
  for (std::size_t n = 0; n < sum.size(); ++n) sum[n] += second[n];
  EXPECT_LT(largestDifference(both, sum), 4e-6 * largest(both));
}

TEST(PulseTest, IsExactlyZeroWhereNoWavePasses) {
  Scene scene = oneScene();
  const Pulse pulse(scene.pistons, Medium{1}, scene.excitation);
  for (const Position& point : scene.points) {
    const TimeAxis times = pulse.times({point}, 16);
    const TimeAxis longer{times.start - 5, 16, times.count + 160};
    const std::vector<double> p = pulse.at({point}, longer, within(1e-3));
    for (std::size_t m = 0; m < longer.count; ++m)
      if (m < 80 || m >= 80 + times.count) {
        EXPECT_EQ(p[m], 0) << m;
      }
    EXPECT_GT(largest(p), 0.01);
  }
  EXPECT_EQ(largest(pulse.at(scene.points, {1e5, 16, 50})), 0);
}

TEST(PulseTest, TimesBeginAndEndWithTheWaves) {
  const Excitation excitation = toneBurst(1, 2, 16);
  const Pulse pulse({{piston(6, 8), 0.5}}, Medium{2}, excitation);
  const TimeAxis times = pulse.times({{0, 0, 12}}, 10);
  EXPECT_EQ(times.start, std::floor((0.5 + 6 - 2.0 / 16) * 10) / 10);
  EXPECT_EQ(times.start * 10 + static_cast<double>(times.count) - 1,
            std::ceil((0.5 + 6.5 + 34.0 / 16) * 10));
  EXPECT_EQ(pulse.times({}, 10).count, 0U);
  EXPECT_EQ(pulse.times({{notANumber, 0, 0}}, 10).count, 0U);
}

TEST(PulseTest, TakesOneTimeFewTimesAndMany) {
  const Scene scene = oneScene();
  const Pulse pulse(scene.pistons, Medium{1}, scene.excitation);
  const std::vector<double> all = pulse.at(scene.points, {4.5, 16, 64}, within(1e-5));
  const std::vector<double> one = pulse.at(scene.points, {6, 1, 1}, within(1e-5));
  const std::vector<double> few = pulse.at(scene.points, {6 - 1e4, 1e-4, 3}, within(1e-5));
  const std::vector<double> many = pulse.at({scene.points[0]}, {4.5, 16e3, 64000}, within(1e-5));
  for (std::size_t n = 0; n < scene.points.size(); ++n) {
    EXPECT_NEAR(one[n], all[24 + 64 * n], 2e-5);
    EXPECT_NEAR(few[1 + 3 * n], all[24 + 64 * n], 2e-5);
  }
  for (std::size_t m = 0; m < 64; ++m) EXPECT_NEAR(many[1000 * m], all[m], 2e-5);
}

TEST(PulseTest, TakesLongExcitationsAndLongDelays) {
  Scene scene = oneScene();
  scene.excitation = toneBurst(1, 900.5, 8);
  scene.pistons[0].piston = piston(1, 2);
  scene.pistons.push_back({piston(2, 1, {3, 0, 0}), 5e4});
  const Errors errors = errorsOf(scene, 0.7, 1e-3);
  EXPECT_LE(errors.largest, errors.bound);
  EXPECT_LE(errors.bound, 1.001e-3 * errors.peak);
}

TEST(PulseTest, IsTheSameForEveryInstructionSet) {
  const Scene scene = AnyScene(11)();
  const Pulse pulse(scene.pistons, Medium{scene.speed}, scene.excitation);
  const TimeAxis times = pulse.times(scene.points, 13);
  const std::vector<double> newest = pulse.at(scene.points, times, within(1e-4));
  for (const InstructionSet set : {InstructionSet::OLDEST, InstructionSet::AVX2}) {
    const InstructionSet before = limitInstructionSet(set);
    const std::vector<double> p = pulse.at(scene.points, times, within(1e-4));
    limitInstructionSet(before);
    EXPECT_LT(largestDifference(p, newest), 2e-5 * largest(newest));
  }
}

TEST(PulseTest, PiecesOfAnAxisAreTheWhole) {
  const Pulse pulse(delayed({piston(5e-3, 5e-3)}), Medium{1540}, toneBurst(5e6, 2, 1e8));
  double largest = 0;
  for (int n = 0; n < 60; ++n) {
    const std::vector<Position> points = {{0, 0, 1e-3 + 1e-4 * n}, {0, 0, 0.15 + 1e-4 * n}};
    const TimeAxis times = pulse.times(points, 1e8);
    const std::vector<double> whole = pulse.at(points, times);
    for (std::size_t first = 0; first < times.count; first += 1000) {
      const TimeAxis piece = {times.start + static_cast<double>(first) / times.rate, times.rate,
                              std::min<std::size_t>(1000, times.count - first)};
      const std::vector<double> part = pulse.at(points, piece);
      for (std::size_t m = 0; m < piece.count; ++m)
        for (std::size_t point = 0; point < points.size(); ++point)
          largest = std::max(largest, std::fabs(part[point * piece.count + m] -
                                                whole[point * times.count + first + m]));
    }
  }
  EXPECT_LT(largest, 2e-4);
}

TEST(PulseTest, GivesNotANumberAtPointsThatAreNotFinite) {
  const Scene scene = oneScene();
  const Pulse pulse(scene.pistons, Medium{1}, scene.excitation);
  const TimeAxis times{4, 16, 40};
  std::vector<Position> points(20, {notANumber, 0, 1});
  points[3] = points[18] = {0, 0, 4};
  const std::vector<double> p = pulse.at(points, times), alone = pulse.at({points[3]}, times);
  for (std::size_t n = 0; n < points.size(); ++n)
    for (std::size_t m = 0; m < times.count; ++m)
      if (n == 3 || n == 18) {
        EXPECT_NEAR(p[m + times.count * n], alone[m], 1e-4);
      } else {
        EXPECT_TRUE(std::isnan(p[m + times.count * n]));
      }
  const std::vector<double> none = pulse.at({{infinity, 0, 0}}, times);
  EXPECT_TRUE(std::all_of(none.begin(), none.end(), [](double v) { return std::isnan(v); }));
}

TEST(PulseTest, TakesNothing) {
  const Excitation excitation = toneBurst(1, 2, 16);
  const Pulse none({}, Medium{1}, excitation),
      silent({{piston(1, 0), 0}, {piston(1, 1, {}, 0), 0}}, Medium{1}, excitation),
      still({{piston(1, 1), 0}}, Medium{1}, {{0, 0}, 8, 0}),
      one({{piston(1, 1), 0}}, Medium{1}, excitation);
  for (const Pulse* pulse : {&none, &silent, &still})
    EXPECT_EQ(largest(pulse->at({{0, 0, 1}}, {0, 10, 30})), 0);
  EXPECT_EQ(none.times({{0, 0, 1}}, 5).count, 0U);
  EXPECT_TRUE(one.at({}, {0, 10, 30}).empty());
  EXPECT_TRUE(one.at({{0, 0, 1}}, {0, 10, 0}).empty());
}

TEST(PulseTest, IsLinearInExtremeWeightsAndSamples) {
  const Scene scene = oneScene();
  const TimeAxis times{3, 16, 60};
  const std::vector<double> p =
      Pulse(scene.pistons, Medium{1}, scene.excitation).at(scene.points, times);
  Scene extreme = scene;
  extreme.pistons[0].piston.weight = 0x1p-900;
  for (double& sample : extreme.excitation.samples) sample *= 0x1p300;
  const std::vector<double> q =
      Pulse(extreme.pistons, Medium{1}, extreme.excitation).at(scene.points, times);
  for (std::size_t n = 0; n < p.size(); ++n) EXPECT_EQ(p[n], q[n] * 0x1p600);
}

TEST(PulseTest, RefusesWhatIsInvalid) {
  const Excitation excitation = toneBurst(1, 2, 16);
  const DelayedPiston good{piston(1, 1), 0};
  const auto made = [&](DelayedPiston delayed, const Medium& medium = Medium{1}) {
    return errorOf([&] { Pulse pulse({delayed}, medium, excitation); });
  };
  const auto contains = [](const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
  };
  EXPECT_EQ(made(good), "");
  EXPECT_PRED2(contains, made({piston(-1, 1), 0}), "Piston 0");
  EXPECT_PRED2(contains, made({piston(1, 1, {0, 0, 0}, {1, 1}), 0}), "weight must be real");
  EXPECT_PRED2(contains, made({piston(1, 1), infinity}), "delay must be finite");
  EXPECT_PRED2(contains, made({piston(1, 1), 1e14}), "delay must be at most");
  EXPECT_PRED2(contains, made({piston(1e8, 1), 0}), "wavelengths");
  EXPECT_PRED2(contains, made({piston(1, 1, {1e11, 0, 0}), 0}), "speed of sound");
  EXPECT_PRED2(contains, made(good, Medium{0}), "speed");
  EXPECT_PRED2(contains, made(good, Medium{notANumber}), "speed");

  const Pulse pulse({good}, Medium{1}, excitation);
  const auto asked = [&](const Position& point, const TimeAxis& times, double tolerance = 1e-4) {
    return errorOf([&] { pulse.at({point}, times, within(tolerance)); });
  };
  EXPECT_PRED2(contains, asked({0, 0, 1}, {0, 0, 5}), "rate");
  EXPECT_PRED2(contains, asked({0, 0, 1}, {notANumber, 1, 5}), "start");
  EXPECT_PRED2(contains, asked({0, 0, 1}, {1e20, 1, 5}), "too far");
  EXPECT_PRED2(contains, asked({0, 0, 1}, {0, 1, std::numeric_limits<std::size_t>::max()}),
               "too far");
  EXPECT_PRED2(contains, asked({0, 0, 1}, {0, 1, 5}, 1e-7), "tolerance");
  EXPECT_PRED2(contains, asked({0, 0, 1}, {0, 1, 5}, 1), "tolerance");
  EXPECT_PRED2(contains, asked({0, 0, 1e10}, {0, 1, 5}), "1e9 wavelengths");
  EXPECT_PRED2(contains, asked({0, 0, 9e8}, {0, 1, 5}), "Double precision");
  EXPECT_PRED2(contains, errorOf([&] { pulse.times({{0, 0, 1}}, -1); }), "rate");
  EXPECT_PRED2(contains, errorOf([&] { pulse.times({{0, 0, 1}}, 1e300); }), "rate");
}

TEST(PulseTest, ProgressNeverFallsAndMayThrow) {
  const Scene scene = oneScene();
  const Pulse pulse(scene.pistons, Medium{1}, scene.excitation);
  PulseOptions options;
  double done = 0;
  int calls = 0;
  options.progress = [&](double fraction) {
    EXPECT_GE(fraction, done);
    done = fraction;
    ++calls;
  };
  pulse.at(scene.points, {0, 16, 100}, options);
  EXPECT_EQ(done, 1);
  for (int stop = 1; stop <= calls; ++stop) {
    int call = 0;
    options.progress = [&](double) {
      if (++call == stop) throw std::runtime_error("stop");
    };
    EXPECT_THROW(pulse.at(scene.points, {0, 16, 100}, options), std::runtime_error);
  }
}
