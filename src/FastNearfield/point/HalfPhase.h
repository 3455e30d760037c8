#pragma once

#include "FastNearfield/point/HalfTurns.h"

namespace pistonfield {

/// The sine and cosine of half the phase k·path, up to a common sign. Only their products are used,
/// in which the sign cancels.
///
/// sin(k·path/2) = sin(πt), t = k/2π·path: t counts the half turns of half the phase. Whole numbers
/// drop out without a rounding: the fraction comes from the exact product. k/2π is a sum of two
/// floats, since one float would be off by up to k·path·2^-25 everywhere.
///
/// Up to 10^5 half turns, the error of these products is at most 6.5·2^-24. Beyond that, the second
/// float moves the fraction past 1/2, where the polynomials are less accurate. The error grows to
/// some 10^-3 at four million half turns, still less than the error from rounding the path.
template <class V>
class HalfPhase {
 public:
  HalfPhase() = default;
  PISTONFIELD_INLINE explicit HalfPhase(float k)
      : high_(k * inverse2Pi),
        low_(multiplyAdd(k, inverse2PiRest, multiplyAdd(k, inverse2Pi, -high_))) {}

  /// k/2π is high() + low().
  PISTONFIELD_INLINE float high() const { return high_; }
  PISTONFIELD_INLINE float low() const { return low_; }

  /// With more half turns, a float can hardly represent a fraction of one.
  static constexpr float mostHalfTurns = 4194304;  // 2^22

  using SineCosine = pistonfield::SineCosineOfHalfTurns<V>;

  /// For paths that are not `lost`.
  PISTONFIELD_INLINE SineCosine operator()(V path) const {
    return sineCosineOfHalfTurns(fraction(path));
  }

  /// For any path. A lost path gives an arbitrary phase, an infinite one NaN.
  PISTONFIELD_INLINE SineCosine ofAny(V path) const {
    const auto kept = absolute(V(high_) * path) <= V(mostHalfTurns);
    return sineCosineOfHalfTurns(select(kept, fraction(path), path * V(0.0f)));
  }

  /// Whether a path of at most this length can be lost.
  PISTONFIELD_INLINE auto mayBeLost(V length) const {
    return absolute(V(high_) * length) > V(mostHalfTurns / 2);
  }

  /// Whether a finite path has so many half turns that a float can hardly represent a fraction of
  /// one.
  PISTONFIELD_INLINE auto lost(V path) const {
    const V halfTurns = absolute(V(high_) * path);
    return (halfTurns > V(mostHalfTurns)) & (halfTurns <= V(3.4028235e38f));
  }

 private:
  /// The number of half turns minus the nearest integer.
  PISTONFIELD_INLINE V fraction(V path) const {
    const V high(high_);
    // The sum is from 2^23 to 2^24, where all floats are integers.
    const V roundsOff(3 * mostHalfTurns);
    const V whole = multiplyAdd(high, path, roundsOff) - roundsOff;
    return multiplyAdd(V(low_), path, multiplyAdd(high, path, -whole));
  }

  static constexpr float inverse2Pi = 0.15915494f;
  static constexpr float inverse2PiRest = 6.42063824e-09f;

  float high_ = 0, low_ = 0;
};

}  // namespace pistonfield
