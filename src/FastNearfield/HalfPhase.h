#pragma once

#include "core/LaneFunctions.h"

namespace pistonfield {

/// The sine and cosine of half the phase k·path, up to one sign that they share: all that is
/// wanted of them are their products with each other, where it cancels.
///
/// The half phase is counted in half turns, so that whole ones drop out without a rounding: only
/// the fraction matters, and it comes from the exact product. k/2π is kept as a sum of two, since
/// rounded to one number it would be off by up to k·path·2^-25 everywhere.
///
/// The products of the two are right to 6.5·2^-24 up to 10^5 half turns. From there on the second
/// number moves the fraction past a half, where the polynomials are less exact: the error grows, to
/// some 10^-3 at four million half turns, which is still less than the rounding of the path costs.
template <class Lane>
class HalfPhase {
 public:
  __host__ __device__ explicit HalfPhase(float k)
      : high_(k * inverse2Pi),
        low_(multiplyAdd(k, inverse2PiRest, multiplyAdd(k, inverse2Pi, -high_))) {}

  struct SineCosine {
    Lane sine, cosine;
  };

  /// For paths that are not `lost`.
  __host__ __device__ SineCosine operator()(Lane path) const { return ofHalfTurns(fraction(path)); }

  /// For any path; of a lost one some phase, and NaN of an infinite one.
  __host__ __device__ SineCosine ofAny(Lane path) const {
    const auto kept = absolute(Lane(high_) * path) <= Lane(mostHalfTurns);
    return ofHalfTurns(select(kept, fraction(path), path * Lane(0.0f)));
  }

  /// Whether a path of at most this length can be lost.
  __host__ __device__ auto mayBeLost(Lane length) const {
    return absolute(Lane(high_) * length) > Lane(mostHalfTurns / 2);
  }

  /// Whether so many half turns go into a finite path that floats have hardly a fraction of one
  /// left.
  __host__ __device__ auto lost(Lane path) const {
    const Lane halfTurns = absolute(Lane(high_) * path);
    return (halfTurns > Lane(mostHalfTurns)) & (halfTurns <= Lane(3.4028235e38f));
  }

 private:
  /// Half turns less whole ones.
  __host__ __device__ Lane fraction(Lane path) const {
    const Lane high(high_);
    // A sum near 2^23 leaves no room for a fraction.
    const Lane roundsOff(3 * mostHalfTurns);
    const Lane whole = multiplyAdd(high, path, roundsOff) - roundsOff;
    return multiplyAdd(Lane(low_), path, multiplyAdd(high, path, -whole));
  }

  /// sin(πr) and cos(πr) for |r| ≤ 1/2, within 0.5 and 0.02 units of 2^-24 before rounding.
  __host__ __device__ static SineCosine ofHalfTurns(Lane r) {
    const Lane t = r * r;
    Lane sine = multiplyAdd(t, Lane(0.07969464361667633f), Lane(-0.5993670225143433f));
    Lane cosine = multiplyAdd(t, Lane(-0.023963654413819313f), Lane(0.23468372225761414f));
    sine = multiplyAdd(t, sine, Lane(2.5502591133117676f));
    cosine = multiplyAdd(t, cosine, Lane(-1.335161566734314f));
    sine = multiplyAdd(t, sine, Lane(-5.167720317840576f));
    cosine = multiplyAdd(t, cosine, Lane(4.0587053298950195f));
    sine = multiplyAdd(t, sine, Lane(3.1415927410125732f));
    cosine = multiplyAdd(t, cosine, Lane(-4.934802055358887f));
    return {r * sine, multiplyAdd(t, cosine, Lane(1.0f))};
  }

  static constexpr float mostHalfTurns = 4194304;  // 2^22
  static constexpr float inverse2Pi = 0.15915494f;
  static constexpr float inverse2PiRest = 6.42063824e-09f;

  float high_, low_;
};

}  // namespace pistonfield
