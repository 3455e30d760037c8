#include "FastNearfield/packs/PackedPressure.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <ostream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "FastNearfield/point/HalfAngleIntegrand.h"
#include "support/GuardedVector.h"
#include "support/LiteralPressure.h"
#include "support/SameBits.h"

using pistonfield::Complex;
using pistonfield::has;
using pistonfield::InstructionSet;
using pistonfield::packedPressure;
using support::HalfRule;

namespace {

/// A way to evaluate packs.
struct Way {
  InstructionSet set;
  bool slowDivision = false;

  pistonfield::PackedPressure* packed() const { return packedPressure(set, slowDivision); }
};

std::string nameOf(const Way& way) {
  if (way.set == InstructionSet::OLDEST) return "Oldest";
  if (way.set == InstructionSet::AVX2) return "Avx2";
  return way.slowDivision ? "Avx512SlowDivision" : "Avx512";
}

void PrintTo(const Way& way, std::ostream* out) { *out << nameOf(way); }

struct Point {
  float x, y, z;
};

std::ostream& operator<<(std::ostream& out, const Point& p) {
  return out << std::hexfloat << p.x << ", " << p.y << ", " << p.z << std::defaultfloat;
}

struct Piston {
  float a, b, k;
};

constexpr Piston piston{0.75f, 0.5f, 12.5f};
const Piston pistons[] = {
    piston,
    {0.005f, 0.01f, 4188.79f},
    {1e-6f, 3e-7f, 2e6f},  // about as large as the strip that counts as the middle
    {1e-6f, 3e-7f, 1},     // too small to change coordinates of the order of 1/k
    {0.75f, 0.0f, 12.5f},
    {0.75f, 0.5f, 0.0f},
    {0.75f, 0.5f, -12.5f},
    // Very small and very large numbers, up to the limits of floats.
    {3e-6f, 2e-6f, 1e6f},
    {1e5f, 5e4f, 2},
    {0.75f, 0.5f, 1e-36f},
    {1e-18f, 5e-19f, 1e18f},
    {1e-19f, 5e-20f, 1e19f},
    {1e12f, 5e11f, 1e-12f},
    {1e18f, 5e17f, 1e-18f},
    {9e18f, 5e18f, 1e-19f},
};

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float inf = std::numeric_limits<float>::infinity();
constexpr float largest = std::numeric_limits<float>::max();

/// Whether products are rounded once more than in the scalar code.
bool roundsTwice(const Way& way) {
#if defined(__x86_64__)
  return way.set == InstructionSet::OLDEST;
#else
  static_cast<void>(way);
  return false;
#endif
}

bool same(float p, float q) {
  // The sign and the payload of a NaN depend on the processor.
  return (std::isnan(p) && std::isnan(q)) || support::bits({p, 0}) == support::bits({q, 0});
}
bool same(const Complex& p, const Complex& q) { return same(p.re, q.re) && same(p.im, q.im); }

std::string text(const Complex& p) {
  std::ostringstream out;
  out << std::hexfloat << p.re << ", " << p.im;
  return out.str();
}

testing::AssertionResult sameValues(const std::vector<Complex>& actual,
                                    const std::vector<Complex>& expected,
                                    const std::vector<Point>& points) {
  if (actual.size() != expected.size()) return testing::AssertionFailure() << "sizes differ";
  for (std::size_t i = 0; i < actual.size(); ++i)
    if (!same(actual[i], expected[i]))
      return testing::AssertionFailure()
             << "point " << i << " of " << points.size() << " (" << points[i]
             << "): " << text(actual[i]) << " instead of " << text(expected[i]);
  return testing::AssertionSuccess();
}

std::vector<Complex> evaluate(const Way& way, const std::vector<Point>& points,
                              const HalfRule<float>& rule, const Piston& p = piston) {
  // Exactly as many as may be read, so that a sanitizer detects any read beyond them.
  std::vector<float> positions;
  positions.reserve(3 * points.size());
  for (const Point& point : points) positions.insert(positions.end(), {point.x, point.y, point.z});
  support::GuardedVector<Complex> pressures(points.size());
  way.packed()(positions.data(), pressures.data(), static_cast<int>(points.size()), p.a, p.b, p.k,
               rule.view(), {});
  return pressures.read();
}

/// Evaluates each point in a separate call.
std::vector<Complex> evaluateAlone(const Way& way, const std::vector<Point>& points,
                                   const HalfRule<float>& rule, const Piston& p = piston) {
  std::vector<Complex> pressures;
  pressures.reserve(points.size());
  for (const Point& point : points) pressures.push_back(evaluate(way, {point}, rule, p)[0]);
  return pressures;
}

std::vector<Complex> scalar(const std::vector<Point>& points, const HalfRule<float>& rule,
                            const Piston& p = piston) {
  std::vector<Complex> pressures;
  pressures.reserve(points.size());
  for (const Point& point : points)
    pressures.push_back(pistonfield::pointPressure<pistonfield::HalfAngleIntegrand>(
        point.x, point.y, point.z, p.a, p.b, p.k, rule.view()));
  return pressures;
}

std::complex<double> wide(const Complex& p) { return {p.re, p.im}; }

/// Bit for bit where the machine fuses products, elsewhere within one unit of 2^-24·(1 + kR).
testing::AssertionResult meetsScalar(const Way& way, const std::vector<Point>& points,
                                     const HalfRule<float>& rule, const Piston& p) {
  const std::vector<Complex> expected = scalar(points, rule, p);
  const std::vector<Complex> actual = evaluate(way, points, rule, p);
  if (!roundsTwice(way)) return sameValues(actual, expected, points);
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (same(actual[i], expected[i])) continue;
    const auto& [x, y, z] = points[i];
    if (!(std::abs(wide(actual[i]) - wide(expected[i])) <=
          support::unitOfError(x, y, z, p.a, p.b, p.k)))
      return testing::AssertionFailure() << "at " << points[i] << ": " << wide(actual[i])
                                         << " instead of " << wide(expected[i]);
  }
  return testing::AssertionSuccess();
}

/// The coordinates at which something changes, for a piston that reaches from -half to half.
std::vector<float> specialCoordinates(float half) {
  std::vector<float> values = {0.0f, -0.0f};
  for (const float at : {half, 1e-7f})
    for (const float sign : {-1.0f, 1.0f})
      for (const float c : {std::nextafter(at, 0.0f), at, std::nextafter(at, inf)})
        values.push_back(sign * c);
  return values;
}

/// Random lists of points around a piston. Each list consists of runs of points of the same kind,
/// some of them longer than a pack. The kinds are coordinates inside and outside the piston, those
/// on which the case changes and, if `wild` is set, those of any size, infinite or NaN.
class Points {
 public:
  Points(const Piston& p, unsigned seed) : piston_(p), random_(seed) {}

  std::vector<Point> list(std::size_t count, bool wild) {
    std::vector<Point> points;
    std::size_t left = 0;
    int kindOfX = 0, kindOfY = 0, kindOfZ = 0;
    for (; points.size() < count; --left) {
      if (left == 0) {
        left = below(3) == 0 ? 1 : 1 + below(150);
        kindOfX = static_cast<int>(below(wild ? 6 : 4));
        kindOfY = static_cast<int>(below(wild ? 6 : 4));
        kindOfZ = static_cast<int>(below(wild ? 6 : 4));
      }
      points.push_back(
          {across(kindOfX, piston_.a), across(kindOfY, piston_.b), along(kindOfZ, piston_.a)});
    }
    return points;
  }

 private:
  std::size_t below(std::size_t n) {
    return std::uniform_int_distribution<std::size_t>(0, n - 1)(random_);
  }
  float between(float low, float high) {
    return std::uniform_real_distribution<float>(low, high)(random_);
  }
  float either(float x) { return below(2) == 0 ? x : -x; }
  float oneOf(const std::vector<float>& values) { return values[below(values.size())]; }

  float across(int kind, float half) {
    switch (kind) {
      case 0:
        return between(-half, half);
      case 1:
        return either(half + between(0, 3 * half));
      case 2:
        return oneOf(specialCoordinates(half));
      case 3:
        return between(-2 * half, 2 * half);
      default:
        return wild(kind);
    }
  }
  float along(int kind, float half) {
    switch (kind) {
      case 0:
        return between(0, 10 * half);
      case 1:
        return between(-10 * half, 0);
      case 2:
        return oneOf({0.0f, -0.0f, 1e-7f, -1e-7f, half, -half});
      case 3:
        return between(0, 1e5f / std::max(std::abs(piston_.k), 1.0f));
      default:
        return wild(kind);
    }
  }
  float wild(int kind) {
    if (kind == 4) return either(std::exp2(between(-149, 128)));
    return oneOf({nan, -nan, inf, -inf, largest, -largest, 1e-45f, 1e30f, 1e19f, 1e10f, 8e3f});
  }

  Piston piston_;
  std::mt19937 random_;
};

class PackedPressureTest : public testing::TestWithParam<Way> {
 protected:
  void SetUp() override {
    if (!has(way.set)) GTEST_SKIP() << "this machine lacks " << nameOf(way);
    if (way.slowDivision && !pistonfield::dividesSlowly()) GTEST_SKIP() << "this machine divides";
  }
  const Way way = GetParam();
};

INSTANTIATE_TEST_SUITE_P(Sets, PackedPressureTest,
                         testing::Values(Way{InstructionSet::OLDEST}, Way{InstructionSet::AVX2},
                                         Way{InstructionSet::AVX512},
                                         Way{InstructionSet::AVX512, true}),
                         [](const auto& test) { return nameOf(test.param); });

TEST_P(PackedPressureTest, MeetsTheScalar) {
  for (const int n : {1, 2, 9, 10, 64}) {
    const HalfRule<float> rule(n);
    unsigned seed = 1;
    for (const Piston& p : pistons)
      for (const bool wild : {false, true}) {
        const std::vector<Point> points = Points(p, seed++).list(n > 10 ? 600 : 2500, wild);
        EXPECT_TRUE(meetsScalar(way, points, rule, p)) << "order " << n << ", k = " << p.k;
      }
  }
}

TEST_P(PackedPressureTest, AbscissasFarOutsideMeetTheScalar) {
  HalfRule<float> rule(10);
  for (const float x : {-2.0f, -1e10f, -1e18f, -8e18f, 1e18f, -inf}) {
    if (roundsTwice(way) && x != -2) break;  // in sums this large, one more rounding is visible
    rule.x[0] = x;
    EXPECT_TRUE(meetsScalar(way, Points(piston, 9).list(500, false), rule, piston)) << x;
  }
}

TEST_P(PackedPressureTest, ListsOfAnyLengthGiveEachPointWhatItGetsAlone) {
  const HalfRule<float> rule(10);
  for (const bool wild : {false, true}) {
    const std::vector<Point> all = Points(piston, 3).list(5000, wild);
    const std::vector<Complex> alone = evaluateAlone(way, all, rule);
    for (const int count :
         {1, 2, 7, 8, 9, 15, 16, 17, 31, 32, 33, 63, 65, 2047, 2048, 2049, 4096, 4097, 5000})
      for (const int first : {0, 1, 1000})
        if (first + count <= 5000) {
          const std::vector<Point> points(all.begin() + first, all.begin() + first + count);
          EXPECT_TRUE(sameValues(evaluate(way, points, rule),
                                 {alone.begin() + first, alone.begin() + first + count}, points))
              << count << " points from " << first;
        }
  }
}

TEST_P(PackedPressureTest, NegativeSidesReachAsFarAsPositiveOnes) {
  // Sides of opposite signs: without their magnitudes, they would cancel in a sum of distances.
  const HalfRule<float> rule(10);
  const Piston huge{1073741824.0f, -1073741824.0f, -2147483648.0f};
  const std::vector<Point> points = {{4, -1.25f, 0}, {4, -1.25f, -4}, {1e9f, 1, -4}};
  const std::vector<Complex> alone = evaluateAlone(way, points, rule, huge);
  EXPECT_TRUE(sameValues(evaluate(way, points, rule, huge), alone, points));
  EXPECT_TRUE(sameValues(scalar(points, rule, huge), alone, points));
  for (const Complex& p : alone) EXPECT_TRUE(same(p, {0, 0})) << text(p);

  // Next to an edge that would be the far one if the side were taken with its sign.
  for (const float side : {-1e5f, -1e7f, -1e8f}) {
    const Piston far{side, 0.0025f, 4188.79f};
    for (const Point& point : {Point{-side, 0, 0.01f}, Point{0.99f * side, 0, 0.01f}})
      EXPECT_TRUE(same(evaluate(way, {point}, rule, far)[0], {0, 0})) << point;
  }
}

TEST_P(PackedPressureTest, OrderZeroOrBelowIsZeroEverywhere) {
  const std::vector<Point> points = Points(piston, 8).list(100, false);
  for (const int N : {0, -1, -4}) {
    support::GuardedVector<Complex> pressures(points.size());
    way.packed()(&points[0].x, pressures.data(), static_cast<int>(points.size()), piston.a,
                 piston.b, piston.k, {nullptr, nullptr, N}, {});
    for (const Complex& p : pressures.read()) {
      EXPECT_EQ(p.re, 0.0f);
      EXPECT_EQ(p.im, 0.0f);
    }
  }
}

}  // namespace
