#include "FastNearfield/nodes/SineCosine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

struct Here;
template <class T>
using SineCosine = pistonfield::SineCosine<Here, T>;

template <class T>
class SineCosineTest : public testing::Test {
 protected:
  static void expectRight(T x) {
    // In units of half the machine epsilon; the reference has more digits.
    const auto unit = static_cast<long double>(std::numeric_limits<T>::epsilon()) / 2;
    const long double most = sizeof(T) == sizeof(float) ? 0.502L : 0.85L;
    const SineCosine<T> e(x);
    const auto exact = static_cast<long double>(x);
    ASSERT_LE(std::abs(e.sine - std::sin(exact)), most * unit) << x;
    ASSERT_LE(std::abs(e.cosine - std::cos(exact)), most * unit) << x;
  }
};

using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(SineCosineTest, Precisions);

TYPED_TEST(SineCosineTest, IsRightForEverySizeOfArgument) {
  using T = TypeParam;
  std::mt19937_64 random(1);
  for (int i = 0; i < 200000; ++i) {
    // From 2^-12 to 2^28.
    const double mantissa = 0.5 + static_cast<double>(random()) * 0x1p-65;
    const T x = static_cast<T>(std::ldexp(mantissa, i % 41 - 12));
    this->expectRight(i % 2 == 0 ? x : -x);
  }
}

TYPED_TEST(SineCosineTest, IsRightNextToMultiplesOfAnEighthTurn) {
  using T = TypeParam;
  for (int n = -3000000; n < 3000000; n += n / 8 % 50 == 0 ? 1 : 97) {
    const T x = static_cast<T>(n * 0.785398163397448309616);
    this->expectRight(x);
    this->expectRight(std::nextafter(x, T(0)));
  }
}

TYPED_TEST(SineCosineTest, ZeroIsExact) {
  using T = TypeParam;
  for (const T zero : {T(0), -T(0)}) {
    EXPECT_EQ(SineCosine<T>(zero).sine, T(0));
    EXPECT_EQ(SineCosine<T>(zero).cosine, T(1));
  }
}

TYPED_TEST(SineCosineTest, NothingIsFiniteBeyondItsLimit) {
  using T = TypeParam;
  using Limits = std::numeric_limits<T>;
  this->expectRight(T(0x1p28));
  for (const T x : {T(0x1p29), T(1e10), T(1e20), T(1e38), Limits::max(), Limits::infinity(),
                    Limits::quiet_NaN()})
    for (const T signedX : {x, -x}) {
      EXPECT_FALSE(std::isfinite(SineCosine<T>(signedX).sine)) << signedX;
      EXPECT_FALSE(std::isfinite(SineCosine<T>(signedX).cosine)) << signedX;
    }
}

}  // namespace
