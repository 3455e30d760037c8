#include "field/DeviceEvaluation.h"

#include <cmath>
#include <complex>
#include <cstddef>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "field/Evaluation.h"
#include "field/ExactPressure.h"
#include "support/DeviceTest.h"

// The kernel that sums pistons, as Evaluation uses it. RandomFieldsTest has its accuracy.

using pistonfield::DeviceEvaluation;
using pistonfield::Evaluation;
using pistonfield::Field;
using pistonfield::FieldError;
using pistonfield::ListPoints;
using pistonfield::Position;
using pistonfield::Used;
using pistonfield::Work;

namespace {

using Pressures = std::vector<std::complex<double>>;

constexpr double k = 2 * M_PI;  // lengths are in wavelengths

/// Pistons of various sides, turned about x by a little and weighted.
std::vector<Field::Piston> somePistons(int count) {
  std::vector<Field::Piston> pistons;
  for (int m = 0; m < count; ++m) {
    Field::Piston piston;
    piston.width = 0.4 + 0.1 * (m % 7);
    piston.height = 5.0 + m % 3;
    piston.centre = {0.7 * (m - count / 2.0), 0.1 * m, 0};
    const double turn = 0.01 * m;
    piston.axes = {
        {{1, 0, 0}, {0, std::cos(turn), std::sin(turn)}, {0, -std::sin(turn), std::cos(turn)}}};
    piston.weight = std::polar(1.0, 0.3 * m);
    pistons.push_back(piston);
  }
  return pistons;
}

std::vector<Position> somePoints(std::size_t count) {
  std::vector<Position> points;
  for (std::size_t n = 0; n < count; ++n) {
    const auto t = static_cast<double>(n);
    points.push_back(
        {10 * std::sin(t), 8 * std::sin(1.7 * t), 0.2 + 15 * std::fabs(std::sin(0.3 * t))});
  }
  return points;
}

class DeviceEvaluationTest : public support::DeviceTest {
 protected:
  Pressures onDevice(Evaluation& evaluation, const std::vector<Position>& points) {
    Pressures p(points.size());
    Work work([&](double fraction) { progress.push_back(fraction); },
              static_cast<double>(points.size()));
    evaluation.runOnDevice(ListPoints(points.data(), points.size()), p.data(), work);
    return p;
  }

  static Pressures onCpu(const Evaluation& evaluation, const std::vector<Position>& points,
                         Used& used) {
    Pressures p(points.size());
    used = pistonfield::nothingUsed();
    evaluation.runHere(ListPoints(points.data(), points.size()), 0, points.size(), p.data(), used);
    return p;
  }

  static void expectNear(const Pressures& p, const Pressures& q, double tolerance) {
    ASSERT_EQ(p.size(), q.size());
    for (std::size_t n = 0; n < p.size(); ++n) ASSERT_LE(std::abs(p[n] - q[n]), tolerance) << n;
  }

  std::vector<double> progress;
};

TEST_F(DeviceEvaluationTest, OneLaunchAfterAnotherAddsToTheSums) {
  const std::vector<Position> points = somePoints(300);
  Evaluation evaluation(somePistons(40), k, 1e-5, 0);
  Used used{};
  expectNear(onDevice(evaluation, points), onCpu(evaluation, points, used), 2e-5);
  EXPECT_EQ(progress, std::vector<double>{1});

  const pistonfield::GaussRules<float> rules(1, pistonfield::mostIntervalOrder);
  const pistonfield::GaussRules<double> preciseRules(1, pistonfield::mostIntervalOrder);
  DeviceEvaluation device(evaluation.pistons(), rules, preciseRules, points.size());
  ListPoints(points.data(), points.size())
      .read(0, points.size(), device.x(), device.y(), device.z());
  const auto nothing = [](double /*fraction*/) {};
  device.run(points.size(), nothing);
  const std::vector<double> re = device.re(), im = device.im();
  const std::vector<pistonfield::UsedAtPoint> atOnce = device.used();
  int launches = 0;
  double done = 0;
  device.run(
      points.size(), [&](double fraction) { ++launches, done += fraction; }, std::size_t{300} * 7);
  EXPECT_EQ(launches, 6);
  EXPECT_NEAR(done, 1, 1e-12);
  EXPECT_EQ(device.re(), re);
  EXPECT_EQ(device.im(), im);
  for (std::size_t n = 0; n < points.size(); ++n) {
    EXPECT_EQ(device.used()[n].nodes, atOnce[n].nodes);
    EXPECT_EQ(device.used()[n].excess, atOnce[n].excess);
    EXPECT_EQ(device.used()[n].positionError, atOnce[n].positionError);
    EXPECT_EQ(device.used()[n].leastOrder, atOnce[n].leastOrder);
    EXPECT_EQ(device.used()[n].mostOrder, atOnce[n].mostOrder);
    EXPECT_EQ(device.used()[n].single, atOnce[n].single);
    EXPECT_EQ(device.used()[n].precise, atOnce[n].precise);
  }
}

TEST_F(DeviceEvaluationTest, LongListsAreEvaluatedInPieces) {
  const std::vector<Position> points = somePoints(DeviceEvaluation::mostPoints + 77);
  Evaluation evaluation(somePistons(1), k, 1e-3, 0);
  Used used{};
  expectNear(onDevice(evaluation, points), onCpu(evaluation, points, used), 2e-3);
  EXPECT_EQ(progress.size(), 2U);
  EXPECT_EQ(progress.back(), 1);
}

TEST_F(DeviceEvaluationTest, AGivenOrderIsThatOfTheCpu) {
  const std::vector<Position> points = somePoints(200);
  for (const int order : {1, 10, 100, 512}) {
    Evaluation evaluation(somePistons(5), k, 0, 0, order);
    Used used{};
    const Pressures p = onDevice(evaluation, points);
    // Of a few units of 2^-24 (1 + kR) for each piston.
    expectNear(p, onCpu(evaluation, points, used), 5 * 8 * 0x1p-24 * (1 + k * 30));
    EXPECT_EQ(evaluation.used().leastOrder, order);
    EXPECT_EQ(evaluation.used().mostOrder, order);
    EXPECT_EQ(evaluation.used().excess, 0);
  }
}

TEST_F(DeviceEvaluationTest, TightTolerancesAreKeptInDoublePrecision) {
  const std::vector<Position> points = somePoints(200);
  Evaluation evaluation(somePistons(3), k, 1e-10, 0);
  Used used{};
  expectNear(onDevice(evaluation, points), onCpu(evaluation, points, used), 2e-10);
  EXPECT_TRUE(evaluation.used().precise);
  EXPECT_LT(evaluation.used().excess, 1);
}

TEST_F(DeviceEvaluationTest, OfTheNegativeKThePressureIsMinusTheConjugate) {
  const std::vector<Position> points = somePoints(50);
  std::vector<Field::Piston> pistons = somePistons(2);
  for (Field::Piston& piston : pistons) piston.weight = 1;
  Evaluation positive(pistons, k, 1e-4, 0), negative(pistons, -k, 1e-4, 0);
  const Pressures p = onDevice(positive, points), q = onDevice(negative, points);
  for (std::size_t n = 0; n < p.size(); ++n) EXPECT_EQ(q[n], -std::conj(p[n]));
}

TEST_F(DeviceEvaluationTest, APointThatIsNotFiniteIsNaNAndOneThatIsTooFarRefused) {
  std::vector<Position> points = somePoints(10);
  Evaluation evaluation(somePistons(2), k, 1e-4, 0);
  const Pressures p = onDevice(evaluation, points);
  points[3] = {std::numeric_limits<double>::quiet_NaN(), 0, 1};
  points[9] = {0, std::numeric_limits<double>::infinity(), 1};
  Evaluation again(somePistons(2), k, 1e-4, 0);
  const Pressures q = onDevice(again, points);
  for (std::size_t n = 0; n < p.size(); ++n) {
    if (n == 3 || n == 9)
      EXPECT_TRUE(std::isnan(q[n].real()) && std::isnan(q[n].imag())) << n;
    else
      EXPECT_EQ(q[n], p[n]) << n;
  }
  EXPECT_LT(again.used().excess, 1);
  points[0] = {2e9, 0, 1};
  onDevice(again, points);
  EXPECT_TRUE(std::isinf(again.used().excess));
}

TEST_F(DeviceEvaluationTest, ThreadsTakeTurns) {
  const std::vector<Position> points = somePoints(100);
  Evaluation alone(somePistons(3), k, 1e-5, 0);
  const Pressures expected = onDevice(alone, points);
  std::vector<std::thread> threads;
  std::vector<Pressures> results(8, Pressures(points.size()));
  threads.reserve(results.size());
  for (Pressures& result : results)
    threads.emplace_back([&] {
      Evaluation evaluation(somePistons(3), k, 1e-5, 0);
      Work work({}, 1);
      evaluation.runOnDevice(ListPoints(points.data(), points.size()), result.data(), work);
    });
  for (std::thread& thread : threads) thread.join();
  for (const Pressures& result : results) EXPECT_EQ(result, expected);
}

/// Field computes it on a GPU if there is one.
TEST_F(DeviceEvaluationTest, AFieldOfManyPointsAndPistonsKeepsItsTolerance) {
  const std::vector<Field::Piston> pistons = somePistons(64);
  const std::vector<Position> points = somePoints(DeviceEvaluation::mostPoints + 1000);
#if defined(CUDART_VERSION)
  EXPECT_TRUE(DeviceEvaluation::isFaster(points.size(), pistons.size()));
  EXPECT_FALSE(DeviceEvaluation::isFaster(points.size(), 1));
#else
  EXPECT_FALSE(DeviceEvaluation::isFaster(points.size(), pistons.size()));
#endif
  pistonfield::FieldReport report;
  const Pressures p = Field(pistons, k).at(points, {}, &report);
  for (std::size_t n = 0; n < points.size(); n += 9973)
    EXPECT_LE(std::abs(std::complex<long double>(p[n]) - exactPressure(pistons, k, points[n])),
              report.bound)
        << n;
  EXPECT_EQ(printed(), "");
}

#if !defined(CUDART_VERSION)

class DeviceEvaluationFaultTest : public DeviceEvaluationTest {
 protected:
  void SetUp() override {
    emulationTestControl()->restore();
    DeviceEvaluationTest::SetUp();
  }
  void TearDown() override {
    emulationTestControl()->restore();
    DeviceEvaluationTest::TearDown();
  }
  pistonfield::emulation::TestControl& device = *emulationTestControl();
  const std::vector<Position> points = somePoints(500);
};

TEST_F(DeviceEvaluationFaultTest, SeparateMemoryGivesTheSameBits) {
  Evaluation evaluation(somePistons(4), k, 1e-5, 0);
  const Pressures p = onDevice(evaluation, points);
  device.separateMemory();
  device.poisonFreshMemory();
  EXPECT_EQ(onDevice(evaluation, points), p);
  EXPECT_EQ(device.liveAllocations(), 0U);
}

TEST_F(DeviceEvaluationFaultTest, AFailureOfEachCallIsAFieldError) {
  int failures = 0;
  for (int nth = 1;; ++nth) {
    device.restore();
    device.separateMemory();
    device.failCall("", nth, cudaErrorUnknown, false);
    Evaluation evaluation(somePistons(2), k, 1e-5, 0);
    try {
      onDevice(evaluation, points);
      // Only the freeing of memory may fail, in destructors.
      if (device.liveAllocations() == 0) break;
    } catch (const FieldError& error) {
      ++failures;
      EXPECT_EQ(error.what(),
                "The GPU failed (" + std::string(cudaGetErrorString(cudaErrorUnknown)) +
                    "). Close other programs that use the GPU, or use a build without CUDA.");
      EXPECT_EQ(device.liveAllocations(), 0U) << nth;
      EXPECT_EQ(cudaGetLastError(), cudaSuccess) << nth;
    }
    ASSERT_LT(nth, 100);
  }
  // 11 arrays, 8 that are copied to the device and 3 back, a launch and a wait.
  EXPECT_EQ(failures, 11 + 8 + 3 + 1 + 1);
}

TEST_F(DeviceEvaluationFaultTest, AnInterruptionPassesAndFreesAll) {
  struct Interrupted {};
  device.separateMemory();
  Evaluation evaluation(somePistons(2), k, 1e-5, 0);
  Pressures p(points.size());
  Work work([](double /*fraction*/) { throw Interrupted(); }, 1);
  EXPECT_THROW(evaluation.runOnDevice(ListPoints(points.data(), points.size()), p.data(), work),
               Interrupted);
  EXPECT_EQ(device.liveAllocations(), 0U);
}

#endif

}  // namespace
