#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "lanes/Arithmetic.h"
#include "lanes/InstructionSet.h"
#include "lanes/SecondQuotients.h"

namespace {

/// Collects pairs and compares their quotients with the results of divisions.
class Pairs {
 public:
  void add(float x, float y) {
    x_[count_] = x;
    y_[count_] = y;
    if (++count_ == capacity) compare();
  }

  /// Compares the remaining pairs and returns the number of all pairs.
  std::size_t finish() {
    while (count_ % 16 != 0) {
      x_[count_] = y_[count_] = 1;
      ++count_;
    }
    compare();
    return compared_;
  }

 private:
  static constexpr std::size_t capacity = 4096;

  void compare() {
    lanes::secondQuotients(x_.data(), y_.data(), q_.data(), static_cast<int>(count_));
    for (std::size_t n = 0; n < count_; ++n)
      if (q_[n] != x_[n] / y_[n])
        ADD_FAILURE() << std::hexfloat << x_[n] << " / " << y_[n] << " is " << x_[n] / y_[n]
                      << " and not " << q_[n];
    compared_ += count_;
    count_ = 0;
  }

  std::vector<float> x_ = std::vector<float>(capacity), y_ = x_, q_ = x_;
  std::size_t count_ = 0;
  std::size_t compared_ = 0;
};

/// The inverse of an odd number modulo 2^32: each step doubles the number of correct bits, which is
/// 3 at first.
std::uint32_t inverse(std::uint32_t odd) {
  std::uint32_t x = odd;
  for (int step = 0; step < 4; ++step) x *= 2 - odd * x;
  return x;
}

class SecondQuotientTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!pistonfield::has(pistonfield::InstructionSet::AVX512))
      GTEST_SKIP() << "this machine lacks AVX-512";
    if (!pistonfield::dividesSlowly())
      GTEST_SKIP() << "this machine divides, and its estimates of inverses may be others";
  }
};

// A quotient can be rounded wrongly only if it is close to the midpoint m between two floats. If
// the 24-bit integers X and Y represent x and y, and the odd 25-bit integer M represents m, this is
// so if
//
//     t = X·2^e − M·Y
//
// is small, where e is 24 for quotients from 1 to 2, and 25 for those from 1/2 to 1. Before the
// last rounding, the error of a quotient by multiplications is up to |t| = 5: that of the first x/y
// is up to 1.5 units in the last place, and the reciprocal and the remainder that correct it add a
// rounding error each. The test covers all pairs with |t| ≤ 8. Other powers of two do not change
// the bits.
TEST_F(SecondQuotientTest, RoundsAsADivisionWhereThatIsHardest) {
  constexpr std::uint32_t least = 1u << 23, limit = 1u << 24;
  Pairs pairs;
  for (std::uint32_t Y = least; Y < limit; ++Y) {
    const int zeros = __builtin_ctz(Y);
    const std::uint32_t inverseOfOdd = inverse(Y >> zeros);
    for (const int e : {24, 25}) {
      const std::uint32_t period = 1u << (e - zeros);
      for (int t = 1 << zeros; t <= 8; t += 2 << zeros)
        for (const int signedT : {t, -t}) {
          const auto odd = static_cast<std::uint32_t>(-(signedT / (1 << zeros)));
          std::uint32_t M = odd * inverseOfOdd % period;
          if (M < limit) M += (limit - M + period - 1) / period * period;
          for (; M < 2 * limit; M += period) {
            const auto X = (static_cast<std::int64_t>(M) * Y + signedT) >> e;
            if (X >= least && X < limit) pairs.add(static_cast<float>(X), static_cast<float>(Y));
          }
        }
    }
  }
  EXPECT_GT(pairs.finish(), 40'000'000);
}

TEST_F(SecondQuotientTest, RoundsAsADivisionInAllModerateNumbers) {
  std::mt19937 random(1);
  std::uniform_real_distribution<float> digits(1, 2);
  using Range = pistonfield::SecondQuotientRange;
  std::uniform_int_distribution<int> exponentOfX(std::ilogb(Range::leastX), 0),
      exponentOfY(std::ilogb(Range::leastY), std::ilogb(Range::mostY) - 1), sign(0, 1);
  Pairs pairs;
  for (int n = 0; n < 3'000'000; ++n) {
    const float x = std::ldexp(digits(random), exponentOfX(random));
    pairs.add(sign(random) == 0 ? x : -x, std::ldexp(digits(random), exponentOfY(random)));
  }
  for (const float x : {0.0f, -0.0f, 1.0f, -1.0f, Range::leastX})
    for (const float y : {Range::leastY, 1.0f, 3.0f, Range::mostY}) pairs.add(x, y);
  EXPECT_GT(pairs.finish(), 3'000'000);
}

}  // namespace
