#pragma once

#include "FastNearfield/point/ComplexArithmetic.h"

// The pressure of a rectangular piston at one point, by the fast near-field method: four single
// integrals, one along each edge,
//
//     p = −i/(2π)·( Σ± ∓(u ± a)·F(u ± a; v − b, v + b)  +  Σ± ∓(v ± b)·F(v ± b; u − a, u + a) )
//
//     F(d; lo, hi) = ∫ (exp(−ikR) − exp(−ikz)) / D dσ,   D = d² + σ²,  R = √(z² + D),
//
// where (u, v) = (|x|, |y|), a is half the piston's width along x and b half its height along y.
// All lengths, and 1/k, are in one unit.
//
// V is the type of a value (lanes/Arithmetic.h): float or double, or a pack with one point per
// lane.
//
// Single precision uses HalfAngleIntegrand, double precision SingleRootIntegrand.
//
// An integrand is constructed from z and its `Wave`: k in the form that it computes phases from.
// Its value is computed in two steps, so that packs can start the next value meanwhile:
//
//     path(D)        the length whose phase is needed, R − z or R. It takes long: a square root,
//                    and for R − z a quotient
//     value(D, path) the value, up to a factor that all values of the point share
//     complete(S)    the sum S times that factor and −i/(2π)
//     distance(x)    |x| in the precision that is kept
//     zeroIfPhaseIsLost(p, across, along)
//                    p, or 0 if single precision has lost the phase at the point; `across` and
//                    `along` are the distances in x and y to the piston's farthest corner

namespace pistonfield {

/// The most nodes that the device's tables hold, and that a rule for packs may have.
constexpr int mostNodes = 512;

/// Half of a symmetric quadrature rule of N nodes on [−1, 1]: x[i] < 0 and w[i], i < N/2, are the
/// pair ±x[i]. For odd N, w[N/2] is the weight of the node 0; x[N/2] is never read.
template <class Real>
struct SymmetricRule {
  const Real* x;
  const Real* w;
  int N;
};

/// The integrals F along two parallel edges, at the signed distances d1 and d2, over [lo, hi].
template <class V>
class EdgePair {
 public:
  EdgePair() = default;
  PISTONFIELD_INLINE EdgePair(V d1, V d2, V lo, V hi)
      : d1_(d1),
        d2_(d2),
        dd1_(d1 * d1),
        dd2_(d2 * d2),
        lo_(lo),
        hi_(hi),
        h_((hi - lo) * V(0.5f)),
        F1_{V(0.0f), V(0.0f)},
        F2_(F1_) {}

  /// D at a pair of nodes, on the first and on the second edge.
  struct Squares {
    V plus1, minus1, plus2, minus2;
  };

  /// Returns D at the nodes ±x of the rule on both edges, where fromEnd = 1 + x.
  PISTONFIELD_INLINE Squares squares(V fromEnd) const {
    // Measured from the middle of the interval, nodes next to an end at the foot of the
    // perpendicular would lose most of their digits.
    const V plus = multiplyAdd(fromEnd, h_, lo_);
    const V minus = multiplyAdd(fromEnd, -h_, hi_);
    return {multiplyAdd(plus, plus, dd1_), multiplyAdd(minus, minus, dd1_),
            multiplyAdd(plus, plus, dd2_), multiplyAdd(minus, minus, dd2_)};
  }

  /// Adds the integrand's value on an edge, of weight w.
  PISTONFIELD_INLINE void addFirst(V w, ComplexPair<V> value) { F1_ = multiplyAdd(w, value, F1_); }
  PISTONFIELD_INLINE void addSecond(V w, ComplexPair<V> value) { F2_ = multiplyAdd(w, value, F2_); }

  /// Adds the integrand at the node 0, of weight w.
  template <class Integrand>
  PISTONFIELD_INLINE void addMiddle(const Integrand& f, V w) {
    const V c = (lo_ + hi_) * V(0.5f);
    const V D1 = multiplyAdd(c, c, dd1_), D2 = multiplyAdd(c, c, dd2_);
    addFirst(w, product(f.value(D1, f.path(D1))));
    addSecond(w, product(f.value(D2, f.path(D2))));
  }

  /// d1·F(d1) − d2·F(d2), or 0 for an empty interval, also above a corner, where the integrand is
  /// 0/0.
  PISTONFIELD_INLINE ComplexPair<V> difference() const { return difference(h_); }

  /// The same, doubled where `once` is false.
  template <class Mask>
  PISTONFIELD_INLINE ComplexPair<V> difference(Mask once) const {
    return difference(select(once, h_, h_ + h_));
  }

 private:
  PISTONFIELD_INLINE ComplexPair<V> difference(V h) const {
    const V zero(0.0f);
    return select(lo_ == hi_, ComplexPair<V>{zero, zero},
                  ComplexPair<V>{h * multiplyAdd(d1_, F1_.re, -(d2_ * F2_.re)),
                                 h * multiplyAdd(d1_, F1_.im, -(d2_ * F2_.im))});
  }

  V d1_, d2_, dd1_, dd2_, lo_, hi_, h_;
  ComplexPair<V> F1_, F2_;  // without the factor h_
};

template <class V, class Integrand, class Real>
PISTONFIELD_INLINE void integrate(EdgePair<V>& edges, const Integrand& f,
                                  const SymmetricRule<Real>& rule) {
  const auto value = [&](V D) { return f.value(D, f.path(D)); };
  const int pairs = rule.N / 2;
  for (int i = 0; i < pairs; ++i) {
    const V w(rule.w[i]);
    const typename EdgePair<V>::Squares D = edges.squares(V(Real(1) + rule.x[i]));
    edges.addFirst(w, value(D.plus1) + value(D.minus1));
    edges.addSecond(w, value(D.plus2) + value(D.minus2));
  }
  if (rule.N > 2 * pairs) edges.addMiddle(f, V(rule.w[pairs]));
}

/// Whether the foot of the perpendicular on an edge of length 2·half, `offset` from its middle,
/// lies between its ends, and not in the middle.
template <class Real, class V>
PISTONFIELD_INLINE auto footSplits(V offset, V half) {
  return (offset > V(static_cast<Real>(1e-7))) & (offset <= half);
}

/// The sum of two parallel edges at the distances across ± halfAcross, of length 2·halfAlong and
/// with the foot of the perpendicular `along` from their middle. If the foot lies beyond their
/// ends, there is one interval. If it lies between them, the edges are split there, where the
/// integrand is steepest. If it lies in the middle, both parts are equal and one is doubled.
template <class V, class Integrand, class Real>
PISTONFIELD_INLINE ComplexPair<V> edgeSum(const Integrand& f, const SymmetricRule<Real>& rule,
                                          V across, V halfAcross, V along, V halfAlong) {
  const V d1 = across - halfAcross, d2 = across + halfAcross;
  const V lo = along - halfAlong, hi = along + halfAlong, foot(0.0f);
  const auto beyond = along > halfAlong;
  const auto split = footSplits<Real>(along, halfAlong);

  EdgePair<V> edges(d1, d2, select(beyond, lo, foot), hi);
  integrate(edges, f, rule);
  ComplexPair<V> sum = edges.difference(beyond | split);
  if (any(split)) {
    EdgePair<V> rest(d1, d2, select(split, lo, foot), foot);
    integrate(rest, f, rule);
    sum = select(split, sum + rest.difference(), sum);
  }
  return sum;
}

/// The complex pressure at (x, y, z) of the piston in the plane z = 0, with the time factor
/// exp(+iωt). z keeps its sign: the field is that of the formula, which has no mirror symmetry in
/// z. Returns 0 where single precision has lost the phase: farther than some 4·10⁶ wavelengths to
/// the side or behind.
template <template <class> class IntegrandOf, class V, class Real>
PISTONFIELD_HOST_DEVICE inline ComplexPair<V> pointPressure(V x, V y, V z, Real halfWidth,
                                                            Real halfHeight, Real k,
                                                            const SymmetricRule<Real>& rule) {
  using Integrand = IntegrandOf<V>;
  const V u = Integrand::distance(x), v = Integrand::distance(y);
  const Integrand f(z, typename Integrand::Wave(k));
  const V halfX(halfWidth), halfY(halfHeight);
  const ComplexPair<V> sumY = edgeSum(f, rule, u, halfX, v, halfY);
  const ComplexPair<V> sumX = edgeSum(f, rule, v, halfY, u, halfX);
  // A negative side is as long as a positive one.
  return f.zeroIfPhaseIsLost(f.complete(sumY + sumX), u + Integrand::distance(halfX),
                             v + Integrand::distance(halfY));
}

}  // namespace pistonfield
