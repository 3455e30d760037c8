#pragma once

#include "FastNearfield/point/ComplexArithmetic.h"
#include "FastNearfield/point/HalfPhase.h"

namespace pistonfield {

/// The integrand in single precision, in the half-angle form
///
///     exp(−ikR) − E0 = −2·E0·sin(δ/2)·(sin(δ/2) + i·cos(δ/2)),   δ = k(R − z),  E0 = exp(−ikz).
///
/// For z ≥ 0, R − z = D/(R + z) loses no digits. The difference of the exponentials would lose most
/// of them near the axis and far away. All values share the factor −2·E0.
template <class V>
class HalfAngleIntegrand {
 public:
  using Wave = HalfPhase<V>;  // gives the sine and cosine of half of k·path

  HalfAngleIntegrand() = default;
  PISTONFIELD_INLINE HalfAngleIntegrand(V z, Wave halfPhase)
      : z_(z),
        zz_(z * z),
        absZ_(absolute(z)),
        halfPhase_(halfPhase),
        shared_(shared(halfPhase.ofAny(z))) {}

  PISTONFIELD_INLINE static V distance(V x) { return absolute(x); }

  /// R − z, the path from the node less that from the piston's plane.
  PISTONFIELD_INLINE V path(V D) const {
    const V sum = squareRoot(zz_ + D) + absZ_;
    return select(V(0.0f) <= z_, quotient(D, sum), sum);
  }

  PISTONFIELD_INLINE ScaledPair<V> value(V D, V path) const {
    const auto [sine, cosine] = halfPhase_(path);
    // The first quotient is that of path().
    return {secondQuotient(sine, D), {sine, cosine}};
  }

  PISTONFIELD_INLINE ComplexPair<V> complete(ComplexPair<V> sum) const {
    return {multiplyAdd(shared_.re, sum.re, -(shared_.im * sum.im)),
            multiplyAdd(shared_.re, sum.im, shared_.im * sum.re)};
  }

  /// Returns p, or 0 if R − z at the farthest corner has so many turns that the phase is lost.
  PISTONFIELD_INLINE ComplexPair<V> zeroIfPhaseIsLost(ComplexPair<V> p, V across, V along) const {
    if (!any(halfPhase_.mayBeLost(across + along + V(2.0f) * absZ_))) return p;
    const auto lost = halfPhase_.lost(path(across * across + along * along));
    return {select(lost, V(0.0f), p.re), select(lost, V(0.0f), p.im)};
  }

 private:
  /// −i/(2π)·(−2·E0)
  PISTONFIELD_INLINE static ComplexPair<V> shared(typename Wave::SineCosine halfKz) {
    constexpr float inversePi = 0.31830987f;
    const auto [sine, cosine] = halfKz;
    return {V(2 * inversePi) * (sine * cosine),
            V(inversePi) * multiplyAdd(cosine, cosine, -(sine * sine))};
  }

  V z_, zz_, absZ_;
  Wave halfPhase_;
  ComplexPair<V> shared_;
};

}  // namespace pistonfield
