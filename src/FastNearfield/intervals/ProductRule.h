#pragma once

#include "FastNearfield/intervals/IntervalOrder.h"
#include "FastNearfield/intervals/IntervalSum.h"

// The Rayleigh integral of a piston by a product of two Gauss rules. Far from a small piston this
// takes fewer nodes than the integrals along its edges, which nearly cancel each other there. All
// lengths are in wavelengths, so that k = 2π, in the piston's own axes.
//
// The pressure is
//
//     p = ∬ exp(−2πiR)/R dξ dη = exp(−2πiC)·∬ exp(−2πi(R − C))/R dξ dη,
//
// C being the distance from the centre: R − C = q/(R + C), q = ξ² − 2xξ + η² − 2yη, has no
// cancellation. At one η the integral over ξ is that of NodeNeeds, with S = 2a/R₀ and an error of
// the branch point of about S. The order, from the same bounds, plus 0.3 and 0.09 for each unit of
// L above 5, was measured (docs/theory.md).
//
// In a lossy medium the integrand has the factor exp(−decay·(R − N)) in addition: N is a lower
// bound of R, of a pack, and the factor exp(−decay·N) is left to the caller. Bounds and tolerances
// are those without that factor.

namespace pistonfield {

/// Bounds of the positions of several points.
template <class V>
struct PointBounds {
  V leastX, mostX, leastY, mostY;  ///< of magnitudes
  V leastZ;
};

/// What product rules for a piston need, for one set of points a lane.
template <class Set>
struct ProductNeeds {
  using V = Pack<Set>;

  V orderX, orderY;  ///< not rounded
  V nearest;         ///< a lower bound of the distance from the piston
  V rounding;        ///< the bound of the rounding error, in units of the precision

  /// Of the tolerance of the pressure. The bound of the rounding error is too small by a factor of
  /// up to 2.5 in the worst cases that were found.
  static constexpr float quadratureShare = 0.65f, roundingShare = 0.14f;

  PISTONFIELD_HOST_DEVICE ProductNeeds(V halfWidth, V halfHeight, const PointBounds<V>& in,
                                       V tolerance, const Wave& wave = {}) {
    const V fromX = in.leastX - halfWidth, fromY = in.leastY - halfHeight, zero(0.0f);
    const V besideX = larger(fromX, zero), besideY = larger(fromY, zero),
            zz = in.leastZ * in.leastZ;
    const V alongX = larger(multiplyAdd(besideY, besideY, zz), V(1e-30f)),
            alongY = larger(multiplyAdd(besideX, besideX, zz), V(1e-30f));
    nearest = rootEstimate(multiplyAdd(besideX, besideX, alongX));
    const V magnitude = V(4.0f) * halfWidth * halfHeight * inverseEstimate(nearest);
    const V part = V(quadratureShare / 2) * tolerance;
    const V L = logarithmOver(magnitude, 2, part);
    const V strength =
        multiplyAdd(nearest, V(growthToBranch(wave)),
                    larger(log2Above(magnitude * inverseEstimate(part) + V(1e-18f)), zero));
    const V isNear = select(nearest < V(0.4f) * larger(halfWidth, halfHeight), V(0.3f), zero);
    const V more = V(0.3f) + isNear + V(0.09f) * larger(L - V(5.0f), zero);
    const NodeNeeds<Set> needsX(alongX, fromX, in.mostX + halfWidth, V(2.0f) * halfWidth, L,
                                strength, wave),
        needsY(alongY, fromY, in.mostY + halfHeight, V(2.0f) * halfHeight, L, strength, wave);
    orderX = needsX.order + more;
    orderY = needsY.order + more;
    // Of q, which delays a wave by q/2R; and of the sum's terms and of sums.
    const V paths =
        multiplyAdd(halfWidth, in.mostX + halfWidth, halfHeight * (in.mostY + halfHeight)) *
        inverseEstimate(nearest);
    const float turns = 50.0f / Wave().waveNumber * wave.waveNumber;
    rounding = magnitude * (V(8.0f) + orderX + orderY + V(turns) * paths);
  }
};

/// A rule for one direction, or for half of it where both halves are equal.
template <class Set>
struct HalvedRule {
  IntervalRule<Set> rule;
  bool halves;

  PISTONFIELD_HOST_DEVICE int nodes() const { return halves ? (rule.order + 1) / 2 : rule.order; }
  PISTONFIELD_HOST_DEVICE typename Set::Value weight(int n) const {
    return halves && 2 * n + 1 < rule.order ? 2 * rule.w[n] : rule.w[n];
  }
};

/// ∬ exp(−2πi(R − C))/R dξ dη over a piston. With loss also the factor exp(−decay·(R − N)), given
/// C − N.
template <class Set, bool isLossy = false>
PISTONFIELD_HOST_DEVICE ComplexPair<Pack<Set>> productSum(
    typename Set::Value halfWidth, typename Set::Value halfHeight, Pack<Set> x, Pack<Set> y,
    Pack<Set> C, const HalvedRule<Set>& ruleX, const HalvedRule<Set>& ruleY,
    typename Set::Value decay = 0, Pack<Set> beyond = Pack<Set>(0)) {
  using V = Pack<Set>;
  using Value = typename Set::Value;
  const V zero(Value(0)), minusTwo(Value(-2)), CC = C * C, twoX = x + x, twoY = y + y;
  ComplexPair<V> sum{zero, zero};
  for (int i = 0; i < ruleX.nodes(); ++i) {
    const V xi(halfWidth * (ruleX.rule.fromStart[i] - Value(1)));
    const V qx = xi * (xi - twoX);
    V ones = zero;
    ComplexPair<V> column{zero, zero};
    for (int j = 0; j < ruleY.nodes(); ++j) {
      const V eta(halfHeight * (ruleY.rule.fromStart[j] - Value(1)));
      const V q = multiplyAdd(eta, eta - twoY, qx);
      const V R = squareRoot(CC + q);
      const Quotients<Set> quotients(q, R + C, R);
      // exp(−2πiδ) = 1 − 2·sin(πδ)·(sin(πδ) + i·cos(πδ))
      const auto [sine, cosine] = sineCosine(fractionOf(quotients.path));
      V weight = V(ruleY.weight(j)) * quotients.inverse;
      if constexpr (isLossy)
        weight = weight * Exponential<Set>(V(-decay) * (quotients.path + beyond)).value();
      ones = ones + weight;
      column = multiplyAdd(weight * sine, ComplexPair<V>{sine, cosine}, column);
    }
    const V weight(ruleX.weight(i));
    sum = multiplyAdd(weight, {multiplyAdd(minusTwo, column.re, ones), minusTwo * column.im}, sum);
  }
  const V area(halfWidth * halfHeight);
  return {area * sum.re, area * sum.im};
}

}  // namespace pistonfield
