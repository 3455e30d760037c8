#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "FastNearfield/point/HalfPhase.h"
#include "lanes/Arithmetic.h"

namespace {

using Wide = unsigned __int128;

/// The smallest nonzero ‖m·A/2^bits‖ for 0 < m < most, in units of 2^-bits, where ‖x‖ is the
/// distance of x from the nearest integer. Of all m below the next denominator of the continued
/// fraction, the current denominator comes nearest to an integer, and its distance is a remainder
/// in Euclid's algorithm.
Wide leastDistance(Wide A, int bits, std::uint64_t most) {
  Wide before = Wide{1} << bits, distance = A % before;
  std::uint64_t denominatorBefore = 0, denominator = 1;
  while (distance != 0) {
    const auto quotient = before / distance;
    const Wide next = denominatorBefore + quotient * denominator;
    if (next >= most) return distance;
    const Wide remainder = before % distance;
    // Then the next denominator gives an integer, and all others differ from an integer by at least
    // its reciprocal.
    if (remainder == 0) return distance;
    denominatorBefore = denominator;
    denominator = static_cast<std::uint64_t>(next);
    before = distance;
    distance = remainder;
  }
  return before;
}

// Above half a turn, the sine of a half phase is small where (high + low)·path, for k/2π = high +
// low, is close to an integer. There HalfPhase computes the fraction exactly except for one last
// rounding, since it subtracts the integer before it adds `low`. path is a float, M·2^e with M <
// 2^24, so for a path of 1/4 to 2^19 half turns the distance is
//
//     ‖(high + low)/2^(E + 25)·m‖,   m = M·2^(E + e + 25) < 2^44,   2^E ≤ high < 2^(E + 1).
//
// The test covers all k; a power of two as a factor changes nothing.
TEST(ModeratePointsTest, NoPhaseComesTooNearToAWholeNumberOfHalfTurns) {
  constexpr std::uint64_t most = std::uint64_t{1} << 44;
  double least = 1;
  for (float k = 1; k < 2; k = std::nextafter(k, 2.0f)) {
    const pistonfield::HalfPhase<float> half(k);
    // Exact: `high` is a multiple of 2^-26, `low` one of 2^-74.
    const auto high = static_cast<Wide>(std::ldexp(double{half.high()}, 26));
    const auto low = static_cast<__int128>(std::ldexp(double{half.low()}, 74));
    const Wide A = (high << 48) + static_cast<Wide>(low);
    const int bits = 74 + 25 + std::ilogb(half.high());
    least = std::min(least, std::ldexp(static_cast<double>(leastDistance(A, bits, most)), -bits));
  }
  EXPECT_GE(2 * least, double{pistonfield::SecondQuotientRange::leastX});  // sin(πr) ≥ 2r
  EXPECT_LE(least, 0x1p-60);  // as expected for so many k
}

}  // namespace
