#pragma once

#include "FastNearfield/point/HalfPhase.h"
#include "FastNearfield/point/PointPressure.h"

namespace pistonfield {

/// Which points are moderate, for a piston and a rule: those for which no phase is lost and
/// `secondQuotient` stays in its range. The limits suit lengths in metres, millimetres or
/// micrometres. docs/theory.md has the argument ("Moderate points").
template <class V>
class ModeratePoints {
 public:
  /// For a moderate point k(R − z)/2 has fewer than this many half turns.
  static constexpr float mostHalfTurns = 0x1p19f;

  ModeratePoints(float halfWidth, float halfHeight, float k, const SymmetricRule<float>& rule)
      : halfWidth_(halfWidth),
        halfHeight_(halfHeight),
        reach_(reach(halfWidth, halfHeight, k, rule)) {}

  /// The points (±u, ±v, z).
  auto operator()(V u, V v, V z) const {
    const V nearX = u - V(halfWidth_), nearY = v - V(halfHeight_), least(leastSquare);
    const V length = multiplyAdd(V(2.0f), absolute(z), u + v);
    return (length <= V(reach_)) & (least <= nearX * nearX) & (least <= nearY * nearY);
  }

 private:
  // L = |x| + |y| + 2·|z| + halfWidth + halfHeight is at least as long as every sum of two
  // distances that occurs.
  static constexpr float mostL = 0x1p20f;
  static constexpr float mostKL = 0x1p21f;
  static constexpr float leastK = 0x1p-10f;
  /// The least square of the distance from a plane through an edge.
  static constexpr float leastSquare = 0x1p-40f;

  // Bounds that follow from these. Factors of 2 allow for rounding.
  static constexpr float mostD = 2 * mostL * mostL;
  static constexpr float leastPath = leastSquare / (2 * mostL);
  /// Below half a turn, sin(kR/2 − kz/2) is at least k·path/π.
  static constexpr float leastSine = leastK * leastPath / 4;

  using Range = SecondQuotientRange;
  static_assert(Range::leastY <= leastSquare && mostD <= Range::mostY, "D is in the range");
  static_assert(Range::leastX <= leastSine, "so is the sine; above half a turn by a test");
  static_assert(mostKL / 6 <= mostHalfTurns, "1/(2π) is below 1/6");
  static_assert(mostHalfTurns <= HalfPhase<float>::mostHalfTurns / 2, "no phase is lost");

  /// Moderate points have |x| + |y| + 2·|z| of at most this. Negative for a piston or a rule with
  /// unsuitable numbers, which have no moderate points.
  static float reach(float halfWidth, float halfHeight, float k, const SymmetricRule<float>& rule) {
    if (rule.N < 2) return -1;
    for (int i = 0; i < rule.N / 2; ++i)
      if (!(-1 <= rule.x[i] && rule.x[i] <= 1)) return -1;
    const float wavenumber = k < 0 ? -k : k;
    if (!(halfWidth >= 0 && halfHeight >= 0 && wavenumber >= leastK)) return -1;
    const float ofPhase = mostKL / wavenumber;
    return (ofPhase < mostL ? ofPhase : mostL) - (halfWidth + halfHeight);
  }

  float halfWidth_, halfHeight_, reach_;
};

}  // namespace pistonfield
