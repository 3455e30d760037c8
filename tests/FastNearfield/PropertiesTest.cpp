#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <vector>

#include "FastNearfield/Launchers.h"
#include "support/SameBits.h"

// Properties that hold for every piston and every point, bit for bit. That a pressure depends on
// its own point only is tested in PackedPressureTest, and through the gateway in PressureTest.

using launchers::Complex;

namespace {

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

  static Pressures evaluate(const Points& points, const Piston& piston) {
    std::vector<float> positions;
    for (const auto& [x, y, z] : points) positions.insert(positions.end(), {x, y, z});
    launchers::GuardedVector<Complex> data(points.size());
    RectangularPiston_func_unstructured(data.data(), static_cast<int>(points.size()),
                                        positions.data(), piston.a, piston.b, piston.k);
    return data.read();
  }

  /// Expects that the change of points and piston changes all pressures as `changed` does.
  void expect(
      const std::function<void(Point&, Piston&)>& change,
      const std::function<void(Complex&)>& changed = [](Complex&) {}) {
    for (int repeat = 0; repeat < 20; ++repeat) {
      const Piston piston = anyPiston();
      Points points(1000);
      for (Point& p : points)
        p = {coordinate(piston.b), coordinate(piston.a),
             random() % 4 == 0 ? between(-3, 0) : between(0, 8)};
      Pressures expected = evaluate(points, piston);
      std::for_each(expected.begin(), expected.end(), changed);
      Piston other = piston;
      for (Point& p : points) change(p, other = piston);
      EXPECT_TRUE(support::sameBits(evaluate(points, other), expected)) << repeat;
    }
  }

 private:
  std::mt19937 random{20};
};

INSTANTIATE_TEST_SUITE_P(Order, OrderedPropertiesTest, testing::Values(1, 9, 10, 64),
                         testing::PrintToStringParamName());

TEST_P(OrderedPropertiesTest, TheFieldIsMirrorSymmetricInXAndY) {
  expect([](Point& p, Piston&) { p.x = -p.x; });
  expect([](Point& p, Piston&) { p.y = -p.y; });
}

TEST_P(OrderedPropertiesTest, LengthsScaleByPowersOfTwo) {
  for (const int exponent : {-10, -1, 1, 3, 20})
    expect([exponent](Point& p, Piston& piston) {
      for (float* const length : {&p.x, &p.y, &p.z, &piston.a, &piston.b})
        *length = std::ldexp(*length, exponent);
      piston.k = std::ldexp(piston.k, -exponent);
    });
}

TEST_P(OrderedPropertiesTest, TheOppositeWaveNumberTurnsTheSignOfTheRealPart) {
  // Both exponentials become their conjugates, but the factor -i does not, so p(-k) is -conj(p(k)).
  expect([](Point&, Piston& piston) { piston.k = -piston.k; }, [](Complex& p) { p.re = -p.re; });
}

}  // namespace
