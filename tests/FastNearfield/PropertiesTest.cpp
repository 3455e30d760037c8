#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "FastNearfield/Launchers.h"
#include "support/SameBits.h"

// Properties that hold for every piston and every point, bit for bit unless stated otherwise.

using launchers::Complex;
using launchers::GuardedVector;

namespace {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float inf = std::numeric_limits<float>::infinity();

/// Sides a along y and b along x.
struct Piston {
  float a, b, k;
};

struct Point {
  float x, y, z;
};

using Points = std::vector<Point>;
using Pressures = std::vector<Complex>;

class OrderedPropertiesTest : public launchers::Test, public testing::WithParamInterface<int> {
 protected:
  void SetUp() override {
    Test::SetUp();
    device.poisonFreshMemory();
    setCudaIntegratorParameters("RectangularPiston", GetParam());
  }

  float between(float low, float high) {
    return std::uniform_real_distribution<float>(low, high)(random);
  }
  float either(float x) { return random() % 2 == 0 ? x : -x; }

  Piston anyPiston() {
    const float a = between(0.3f, 3), b = between(0.3f, 3);
    return {a, b, std::exp2(between(-1, 6)) / std::max(a, b)};
  }

  /// A coordinate on or beside the piston, on its edges and axes or away from them, in front of or
  /// behind it, but never so close to an axis that scaling could move the point across the fixed
  /// distance of 1e-7.
  float coordinate(float side) {
    switch (random() % 8) {
      case 0:
        return 0;
      case 1:
        return either(side / 2);
      default:
        return either(between(1e-3f, 1.2f * side));
    }
  }
  Points anyPoints(const Piston& piston, std::size_t count) {
    Points points;
    while (points.size() < count)
      points.push_back({coordinate(piston.b), coordinate(piston.a),
                        random() % 4 == 0 ? between(-3, 0) : between(0, 8)});
    return points;
  }

  static Pressures evaluate(const Points& points, const Piston& piston) {
    std::vector<float> positions;
    for (const auto& [x, y, z] : points) positions.insert(positions.end(), {x, y, z});
    GuardedVector<Complex> data(points.size());
    RectangularPiston_func_unstructured(data.data(), static_cast<int>(points.size()),
                                        positions.data(), piston.a, piston.b, piston.k);
    return data.read();
  }

  template <class Change>
  static Points changed(Points points, Change change) {
    std::for_each(points.begin(), points.end(), change);
    return points;
  }

  std::mt19937 random{20};
};

INSTANTIATE_TEST_SUITE_P(Order, OrderedPropertiesTest, testing::Values(1, 9, 10, 64),
                         testing::PrintToStringParamName());

TEST_P(OrderedPropertiesTest, TheFieldIsMirrorSymmetricInXAndY) {
  for (int repeat = 0; repeat < 20; ++repeat) {
    const Piston piston = anyPiston();
    const Points points = anyPoints(piston, 1000);
    const Pressures expected = evaluate(points, piston);
    const auto left = [](Point& p) { p.x = -p.x; };
    const auto below = [](Point& p) { p.y = -p.y; };
    EXPECT_TRUE(support::sameBits(evaluate(changed(points, left), piston), expected));
    EXPECT_TRUE(support::sameBits(evaluate(changed(points, below), piston), expected));
    EXPECT_TRUE(
        support::sameBits(evaluate(changed(changed(points, left), below), piston), expected));
  }
}

TEST_P(OrderedPropertiesTest, TheOrderOfPointsDoesNotMatter) {
  const Piston piston = anyPiston();
  const Points points = anyPoints(piston, 30000);
  const Pressures expected = evaluate(points, piston);
  std::vector<std::size_t> places(points.size());
  std::iota(places.begin(), places.end(), 0);
  for (int repeat = 0; repeat < 3; ++repeat) {
    std::shuffle(places.begin(), places.end(), random);
    Points shuffled;
    Pressures wanted;
    for (const std::size_t place : places) {
      shuffled.push_back(points[place]);
      wanted.push_back(expected[place]);
    }
    EXPECT_TRUE(support::sameBits(evaluate(shuffled, piston), wanted));
  }
}

TEST_P(OrderedPropertiesTest, LengthsScaleByPowersOfTwo) {
  for (int repeat = 0; repeat < 20; ++repeat) {
    const Piston piston = anyPiston();
    const Points points = anyPoints(piston, 1000);
    const Pressures expected = evaluate(points, piston);
    for (const int exponent : {-10, -1, 1, 3, 20}) {
      const auto scale = [exponent](float length) { return std::ldexp(length, exponent); };
      const auto scalePoint = [&](Point& p) { p = {scale(p.x), scale(p.y), scale(p.z)}; };
      const Piston scaled = {scale(piston.a), scale(piston.b), std::ldexp(piston.k, -exponent)};
      EXPECT_TRUE(support::sameBits(evaluate(changed(points, scalePoint), scaled), expected))
          << exponent;
    }
  }
}

TEST_P(OrderedPropertiesTest, APointThatIsNoneSpoilsOnlyItsOwnPressure) {
  const Piston piston = anyPiston();
  const std::size_t count = 9000;
  const Points points = anyPoints(piston, count);
  const Pressures expected = evaluate(points, piston);
  const float none[] = {nan, inf, -inf};
  std::size_t turn = 0;  // which value goes to which coordinate
  for (const std::size_t place : {0u, 1u, 15u, 16u, 2047u, 2048u, 5000u, 8191u, 8999u}) {
    for (std::size_t n = 0; n < 3; ++n) {
      const float bad = none[n];
      const std::size_t axis = (n + turn) % 3;
      Points spoilt = points;
      (axis == 0 ? spoilt[place].x : axis == 1 ? spoilt[place].y : spoilt[place].z) = bad;
      Pressures actual = evaluate(spoilt, piston);
      EXPECT_TRUE(std::isnan(actual[place].re) && std::isnan(actual[place].im))
          << bad << " on axis " << axis;
      actual[place] = expected[place];
      EXPECT_TRUE(support::sameBits(actual, expected)) << bad << " at " << place;
    }
    ++turn;
  }
}

TEST_P(OrderedPropertiesTest, TheOppositeWaveNumberTurnsTheSignOfTheRealPart) {
  // Both exponentials become their conjugates, but the factor -i does not, so p(-k) is -conj(p(k)).
  for (int repeat = 0; repeat < 20; ++repeat) {
    const Piston piston = anyPiston();
    const Points points = anyPoints(piston, 1000);
    const Pressures pressures = evaluate(points, piston);
    const Pressures opposite = evaluate(points, {piston.a, piston.b, -piston.k});
    for (std::size_t i = 0; i < points.size(); ++i) {
      EXPECT_EQ(opposite[i].re, -pressures[i].re);
      EXPECT_EQ(opposite[i].im, pressures[i].im);
    }
  }
}

}  // namespace
