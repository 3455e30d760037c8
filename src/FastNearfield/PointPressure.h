#pragma once

#include <cmath>

#include "FastNearfield/Complex.h"
#include "FastNearfield/HalfPhase.h"
#include "core/LaneFunctions.h"

// The pressure of a rectangular piston at one point (or at one point a lane), by the fast
// near-field method: four single integrals, one for each edge,
//
//     p = −i/(2π)·( Σ± ∓(u ± a)·F(u ± a; v − b, v + b)  +  Σ± ∓(v ± b)·F(v ± b; u − a, u + a) )
//
//     F(d; lo, hi) = ∫ (exp(−ikR) − exp(−ikz)) / (d² + σ²) dσ,   R = √(z² + d² + σ²),
//
// where (u, v) = (|x|, |y|), and a and b are half the piston's sides along x and y. All lengths,
// and 1/k, are in one unit.

namespace pistonfield {

/// The half of a symmetric quadrature rule of N nodes: x[i] < 0 and w[i] for i < N/2 stand for the
/// pair ±x[i]; for odd N, w[N/2] belongs to the node 0. x[N/2] is never read.
template <class Real>
struct SymmetricRule {
  const Real* x;
  const Real* w;
  int N;
};

// An integrand gives (exp(−ikR) − exp(−ikz))/D at D = d² + σ² up to a factor that all nodes share,
// which `complete` multiplies into the sum, in two steps: `path(D)`, with the roots and quotients
// that take long, and `at(D, path)`. And it gives the distance of a coordinate from 0.

/// In single precision, in the half-angle form
///
///     exp(−ikR) − E0 = −2·E0·sin(δ/2)·(sin(δ/2) + i·cos(δ/2)),   δ = k(R − z),  E0 = exp(−ikz).
///
/// For z ≥ 0, R − z = D/(R + z) loses no digits, where the difference of the exponentials would
/// lose most of them near the axis and far away. The shared factor is −2·E0.
template <class Lane>
class HalfAngleIntegrand {
 public:
  __host__ __device__ HalfAngleIntegrand(Lane z, float k)
      : z_(z), zz_(z * z), absZ_(absolute(z)), half_(k) {}

  __host__ __device__ static Lane distance(Lane x) { return absolute(x); }

  /// R − z.
  __host__ __device__ Lane path(Lane D) const {
    const Lane sum = squareRoot(zz_ + D) + absZ_;
    return select(z_ < Lane(0.0f), sum, quotient(D, sum));
  }

  __host__ __device__ ComplexPair<Lane> at(Lane D, Lane path) const {
    const auto [sine, cosine] = half_(path);
    const Lane scale = quotient(sine, D);
    return {scale * sine, scale * cosine};
  }

  /// Whether R − z, for this or a smaller D, can have more turns than floats count.
  __host__ __device__ auto losesPhase(Lane D) const { return half_.lost(path(D)); }

  __host__ __device__ ComplexPair<Lane> complete(ComplexPair<Lane> sum) const {
    const auto [sine, cosine] = half_.ofAny(z_);
    const Lane re = Lane(2.0f) * multiplyAdd(sine, sine, -(cosine * cosine));
    const Lane im = Lane(4.0f) * (sine * cosine);
    return {re * sum.re - im * sum.im, re * sum.im + im * sum.re};
  }

 private:
  Lane z_, zz_, absZ_;
  HalfPhase<Lane> half_;
};

/// The same in double precision as it is written, but with the magnitude of a coordinate, the
/// square root and the sines and cosines in single precision: the accuracy that this precision has
/// always had on the device.
template <class Lane>
class SingleRootIntegrand {
 public:
  __host__ __device__ SingleRootIntegrand(Lane z, Lane k)
      : k_(k), zz_(z * z), E0_(turn(-(k * z))) {}

  __host__ __device__ static Lane distance(Lane x) { return absolute(static_cast<float>(x)); }

  /// R.
  __host__ __device__ Lane path(Lane D) const { return std::sqrt(static_cast<float>(zz_ + D)); }

  __host__ __device__ ComplexPair<Lane> at(Lane D, Lane path) const {
    const ComplexPair<Lane> e = turn(-(k_ * path));
    const Lane inverse = Lane(1) / D;
    return {(e.re - E0_.re) * inverse, (e.im - E0_.im) * inverse};
  }

  __host__ __device__ static bool losesPhase(Lane /*D*/) { return false; }

  __host__ __device__ ComplexPair<Lane> complete(ComplexPair<Lane> sum) const { return sum; }

 private:
  /// exp(iθ).
  __host__ __device__ static ComplexPair<Lane> turn(Lane theta) {
    const auto angle = static_cast<float>(theta);
#ifdef __CUDA_ARCH__
    float sine, cosine;
    sincosf(angle, &sine, &cosine);
    return {cosine, sine};
#else
    return {std::cos(angle), std::sin(angle)};
#endif
  }

  Lane k_, zz_;
  ComplexPair<Lane> E0_;
};

/// F of the two parallel edges of a pair.
template <class Lane>
struct EdgePair {
  ComplexPair<Lane> first, second;
};

template <class Lane>
__host__ __device__ inline ComplexPair<Lane> operator+(ComplexPair<Lane> p, ComplexPair<Lane> q) {
  return {p.re + q.re, p.im + q.im};
}

/// c·p + q
template <class Lane>
__host__ __device__ inline ComplexPair<Lane> multiplyAdd(Lane c, ComplexPair<Lane> p,
                                                         ComplexPair<Lane> q) {
  return {multiplyAdd(c, p.re, q.re), multiplyAdd(c, p.im, q.im)};
}

template <class Mask, class Lane>
__host__ __device__ inline ComplexPair<Lane> select(Mask mask, ComplexPair<Lane> yes,
                                                    ComplexPair<Lane> no) {
  return {select(mask, yes.re, no.re), select(mask, yes.im, no.im)};
}

/// A pair of nodes, of a rule's abscissas ±x, on two edges at once.
template <class Lane, class Integrand>
class NodePair {
 public:
  /// The squares of the edges' distances, and of the nodes' places along them.
  __host__ __device__ NodePair(const Integrand& f, Lane dd1, Lane dd2, Lane plus2, Lane minus2)
      : D_{dd1 + plus2, dd1 + minus2, dd2 + plus2, dd2 + minus2},
        path_{f.path(D_[0]), f.path(D_[1]), f.path(D_[2]), f.path(D_[3])} {}

  /// The sum of the integrand at both nodes.
  __host__ __device__ ComplexPair<Lane> first(const Integrand& f) const {
    return f.at(D_[0], path_[0]) + f.at(D_[1], path_[1]);
  }
  __host__ __device__ ComplexPair<Lane> second(const Integrand& f) const {
    return f.at(D_[2], path_[2]) + f.at(D_[3], path_[3]);
  }

 private:
  Lane D_[4], path_[4];
};

/// F over [lo, hi] for the two edges at squared distances dd1 and dd2. An empty interval gives 0,
/// also where the integrand has no value: above a corner.
///
/// Inlined always, as is its caller: as functions they would hand registers over through memory,
/// for a tenth of the time at low orders.
template <class Lane, class Integrand, class Real>
__host__ __device__ inline __attribute__((always_inline)) EdgePair<Lane> integrate(
    const Integrand& f, Lane dd1, Lane dd2, Lane lo, Lane hi, const SymmetricRule<Real>& rule) {
  const Lane half(static_cast<Real>(0.5));
  const Lane h = (hi - lo) * half;
  const ComplexPair<Lane> zero{Lane(Real(0)), Lane(Real(0))};
  EdgePair<Lane> sum{zero, zero};
  const int n = rule.N / 2;
  // The nodes c ± x·h, counted from the ends: next to the foot of the perpendicular, which is one
  // of the ends, c + x·h would lose most of its digits.
  const auto nodes = [&](int i) {
    const Lane fromEnd(Real(1) + rule.x[i]);
    const Lane plus = multiplyAdd(fromEnd, h, lo);
    const Lane minus = multiplyAdd(-fromEnd, h, hi);
    return NodePair<Lane, Integrand>(f, dd1, dd2, plus * plus, minus * minus);
  };
  const auto add = [&](int i, const NodePair<Lane, Integrand>& pair) {
    const Lane weight = Lane(rule.w[i]) * h;
    sum.first = multiplyAdd(weight, pair.first(f), sum.first);
    sum.second = multiplyAdd(weight, pair.second(f), sum.second);
  };
  if (n > 0) {
    // The next pair's paths are on their way while this one is summed.
    NodePair<Lane, Integrand> pair = nodes(0);
    for (int i = 1; i < n; ++i) {
      const NodePair<Lane, Integrand> next = nodes(i);
      add(i - 1, pair);
      pair = next;
    }
    add(n - 1, pair);
  }
  if (rule.N > 2 * n) {
    const Lane weight = Lane(rule.w[n]) * h;
    const Lane c = (lo + hi) * half;
    const Lane D1 = dd1 + c * c, D2 = dd2 + c * c;
    sum.first = multiplyAdd(weight, f.at(D1, f.path(D1)), sum.first);
    sum.second = multiplyAdd(weight, f.at(D2, f.path(D2)), sum.second);
  }
  const auto empty = lo == hi;
  return {select(empty, zero, sum.first), select(empty, zero, sum.second)};
}

/// Whether the foot of the perpendicular lies between the ends of a pair of edges, and not in their
/// middle.
template <class Real, class Lane>
__host__ __device__ inline auto footSplits(Lane offset, Lane half) {
  return (offset > Lane(static_cast<Real>(1e-7))) & (offset <= half);
}

/// d1·F(d1) − d2·F(d2) for the pair of edges at the signed distances d1 and d2 from the point's
/// projection, which run along the direction in which the projection is `offset` ≥ 0 from the
/// middle and the edges reach from −half to +half.
///
/// Three cases: beyond the edges' ends one interval; between them two, split at the foot of the
/// perpendicular, where the integrand is sharpest; in the middle two equal ones, so one is doubled.
template <class Lane, class Integrand, class Real>
__host__ __device__ inline __attribute__((always_inline)) ComplexPair<Lane> edgePairSum(
    const Integrand& f, Lane d1, Lane d2, Lane offset, Lane half, const SymmetricRule<Real>& rule) {
  const Lane zero(Real(0));
  const auto outside = offset > half;
  const auto split = footSplits<Real>(offset, half);
  const Lane lo = offset - half;
  const Lane hi = offset + half;
  const Lane dd1 = d1 * d1;
  const Lane dd2 = d2 * d2;

  EdgePair<Lane> F = integrate(f, dd1, dd2, select(outside, lo, zero), hi, rule);
  if (any(split)) {
    const EdgePair<Lane> rest = integrate(f, dd1, dd2, select(split, lo, zero), zero, rule);
    F = {select(split, F.first + rest.first, F.first),
         select(split, F.second + rest.second, F.second)};
  }
  const Lane multiplicity = select(outside | split, Lane(Real(1)), Lane(Real(2)));
  return {multiplicity * (d1 * F.first.re - d2 * F.second.re),
          multiplicity * (d1 * F.first.im - d2 * F.second.im)};
}

/// The complex pressure at (x, y, z) of the piston of half-width a along x and half-height b along
/// y, in the plane z = 0, with the time factor exp(+iωt). z keeps its sign: the field is that of
/// the formula, which no mirror symmetry in z holds for. 0 where single precision has lost the
/// phase altogether: farther than some 10⁷ wavelengths to the side or behind.
template <template <class> class IntegrandOf, class Lane, class Real>
__host__ __device__ inline ComplexPair<Lane> pointPressure(Lane x, Lane y, Lane z, Real a, Real b,
                                                           Real k,
                                                           const SymmetricRule<Real>& rule) {
  const IntegrandOf<Lane> f(z, k);
  const Lane u = IntegrandOf<Lane>::distance(x);
  const Lane v = IntegrandOf<Lane>::distance(y);
  const ComplexPair<Lane> alongY = edgePairSum(f, u - Lane(a), u + Lane(a), v, Lane(b), rule);
  const ComplexPair<Lane> alongX = edgePairSum(f, v - Lane(b), v + Lane(b), u, Lane(a), rule);
  const ComplexPair<Lane> S = f.complete(alongY + alongX);
  const Lane inverse2Pi(static_cast<Real>(0.15915494309189535));
  const Lane zero(Real(0));
  const Lane acrossMost = u + Lane(a), alongMost = v + Lane(b);
  return select(f.losesPhase(acrossMost * acrossMost + alongMost * alongMost),
                ComplexPair<Lane>{zero, zero},
                ComplexPair<Lane>{S.im * inverse2Pi, -S.re * inverse2Pi});
}

}  // namespace pistonfield
