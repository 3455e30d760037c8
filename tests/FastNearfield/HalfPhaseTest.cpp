#include "FastNearfield/point/HalfPhase.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <type_traits>

#include "FastNearfield/OldestSet.h"

using pistonfield::HalfPhase;

namespace {

using ::first;
double first(float x) { return static_cast<double>(x); }

/// The oldest x86 instruction set has no fused multiply-add, so its last digits differ.
using OldestPack = pistonfield::Pack<Set>;

template <class V>
class HalfPhaseTest : public testing::Test {
 protected:
  /// At a quarter turn, the rounding errors of the sine add up to 3 units, or to 3.7 if products
  /// are rounded separately. The error of its square is twice that, plus its own rounding.
  static constexpr double bound = std::is_same_v<V, float> ? 6.5 : 8;

  /// The error of the products sine·sine and sine·cosine, in units of 2^-24.
  static double error(float k, float path) {
    const auto [sine, cosine] = HalfPhase<V>(k)(V(path));
    const double exact = double{k} * double{path} / 2;  // exact: 48 bits
    return std::ldexp(std::max(std::abs(first(sine * sine) - std::sin(exact) * std::sin(exact)),
                               std::abs(first(sine * cosine) - std::sin(exact) * std::cos(exact))),
                      24);
  }
};

using ValueTypes = testing::Types<float, OldestPack>;
TYPED_TEST_SUITE(HalfPhaseTest, ValueTypes);

TYPED_TEST(HalfPhaseTest, ProductsAreRightWhereverThePhaseIs) {
  std::mt19937 random(1);
  std::uniform_real_distribution<float> exponentOfK(-3, 20), exponentOfPhase(-30, 17), sign(-1, 1);
  double worst = 0;
  for (int n = 0; n < 500000; ++n) {
    const float k = std::exp2(exponentOfK(random));
    const float path = std::copysign(std::exp2(exponentOfPhase(random)) / k, sign(random));
    worst = std::max(worst, this->error(k, path));
  }
  EXPECT_LE(worst, this->bound);
}

TYPED_TEST(HalfPhaseTest, NextToWholeAndHalfTurnsItIsRight) {
  double worst = 0;
  for (const float k : {1.0f, 12.5f, 4188.79f, 6.2831855f, 3.1415927f})
    for (int halves = 0; halves < 30000; halves += halves < 100 ? 1 : 97) {
      auto path = static_cast<float>(halves * M_PI / k);
      for (int n = 0; n < 3; ++n) path = std::nextafter(path, 0.0f);
      for (int n = 0; n < 7; ++n, path = std::nextafter(path, 1e9f))
        worst = std::max(worst, this->error(k, path));
    }
  EXPECT_LE(worst, this->bound);
}

TYPED_TEST(HalfPhaseTest, SmallPathsKeepTheirRelativeDigits) {
  double worst = 0;
  for (const float k : {1.0f, 12.5f, -12.5f, 4188.79f})
    for (int n = 10; n < 200; ++n) {
      const float path = std::exp2(-0.37f * static_cast<float>(n)) / k;
      const auto [sine, cosine] = HalfPhase<TypeParam>(k)(TypeParam(path));
      const double exact = double{k} * double{path} / 2;
      const double product = std::sin(exact) * std::cos(exact);
      worst = std::max(worst, std::ldexp(std::abs(first(sine * cosine) / product - 1), 24));
    }
  EXPECT_LE(worst, 6);
}

TYPED_TEST(HalfPhaseTest, NoPathHasNoPhase) {
  for (const float k : {0.0f, 12.5f}) {
    const auto [sine, cosine] = HalfPhase<TypeParam>(k)(TypeParam(k == 0 ? 3.0f : 0.0f));
    EXPECT_EQ(first(sine), 0);
    EXPECT_EQ(first(cosine), 1);
  }
}

}  // namespace
