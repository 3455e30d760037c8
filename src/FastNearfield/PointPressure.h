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
// that take long, and `at(D, path)`. It gives the distance of a coordinate from 0; and `ifTold`
// puts 0 for the pressures of points whose phase is lost, given how far the piston reaches from
// them.

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
      : z_(z), zz_(z * z), absZ_(absolute(z)), half_(k), shared_(minusTwoE0(half_.ofAny(z))) {}

  __host__ __device__ static Lane distance(Lane x) { return absolute(x); }

  /// R − z.
  __host__ __device__ Lane path(Lane D) const {
    const Lane sum = squareRoot(zz_ + D) + absZ_;
    return select(z_ < Lane(0.0f), sum, quotient(D, sum));
  }

  __host__ __device__ ComplexPair<Lane> at(Lane D, Lane path) const {
    const auto [sine, cosine] = half_(path);
    const Lane scale = secondQuotient(sine, D);
    return {scale * sine, scale * cosine};
  }

  __host__ __device__ ComplexPair<Lane> complete(ComplexPair<Lane> sum) const {
    return {shared_.re * sum.re - shared_.im * sum.im, shared_.re * sum.im + shared_.im * sum.re};
  }

  /// Where R − z can have more turns than floats count, a point has no phase.
  __host__ __device__ ComplexPair<Lane> ifTold(ComplexPair<Lane> p, Lane across, Lane along) const {
    if (!any(half_.mayBeLost(across + along + Lane(2.0f) * absZ_))) return p;
    const auto lost = half_.lost(path(across * across + along * along));
    return {select(lost, Lane(0.0f), p.re), select(lost, Lane(0.0f), p.im)};
  }

 private:
  using SineCosine = typename HalfPhase<Lane>::SineCosine;

  __host__ __device__ static ComplexPair<Lane> minusTwoE0(SineCosine halfKz) {
    const auto [sine, cosine] = halfKz;
    return {Lane(2.0f) * multiplyAdd(sine, sine, -(cosine * cosine)), Lane(4.0f) * (sine * cosine)};
  }

  Lane z_, zz_, absZ_;
  HalfPhase<Lane> half_;
  ComplexPair<Lane> shared_;
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

  __host__ __device__ static ComplexPair<Lane> complete(ComplexPair<Lane> sum) { return sum; }

  __host__ __device__ static ComplexPair<Lane> ifTold(ComplexPair<Lane> p, Lane /*across*/,
                                                      Lane /*along*/) {
    return p;
  }

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

/// A pair of nodes, of a rule's abscissas ±x, on two parallel edges: four D, and what has been
/// started of the integrand there.
template <class Lane>
struct Nodes {
  Lane D[4], path[4];
};

/// The integrals F along the two parallel edges of a pair over one interval, in the making.
template <class Lane, class Real>
class EdgePair {
 public:
  /// Over [lo, hi], along the edges at the signed distances d1 and d2.
  __host__ __device__ EdgePair(Lane d1, Lane d2, Lane lo, Lane hi)
      : d1_(d1),
        d2_(d2),
        dd1_(d1 * d1),
        dd2_(d2 * d2),
        lo_(lo),
        hi_(hi),
        h_((hi - lo) * Lane(static_cast<Real>(0.5))) {}

  /// The nodes of the abscissas ±x; their integrand is not started.
  __host__ __device__ Nodes<Lane> nodes(Real x) const {
    // c ± x·h, counted from the ends: next to the foot of the perpendicular, which is one of the
    // ends, c + x·h would lose most of its digits.
    const Lane fromEnd = Lane(Real(1)) + Lane(x);
    const Lane plus = multiplyAdd(fromEnd, h_, lo_);
    const Lane minus = multiplyAdd(fromEnd, -h_, hi_);
    const Lane plus2 = plus * plus, minus2 = minus * minus;
    Nodes<Lane> nodes;
    nodes.D[0] = dd1_ + plus2;
    nodes.D[1] = dd1_ + minus2;
    nodes.D[2] = dd2_ + plus2;
    nodes.D[3] = dd2_ + minus2;
    return nodes;
  }

  /// Adds the integrand at nodes of weight w. Between them it calls meanwhile(0) … meanwhile(3).
  template <class Integrand, class Meanwhile>
  __host__ __device__ void add(const Integrand& f, Real w, const Nodes<Lane>& at,
                               const Meanwhile& meanwhile) {
    const Lane weight(w);
    meanwhile(0);
    const ComplexPair<Lane> plus1 = f.at(at.D[0], at.path[0]);
    meanwhile(1);
    const ComplexPair<Lane> minus1 = f.at(at.D[1], at.path[1]);
    F1_ = multiplyAdd(weight, plus1 + minus1, F1_);
    meanwhile(2);
    const ComplexPair<Lane> plus2 = f.at(at.D[2], at.path[2]);
    meanwhile(3);
    const ComplexPair<Lane> minus2 = f.at(at.D[3], at.path[3]);
    F2_ = multiplyAdd(weight, plus2 + minus2, F2_);
  }

  /// Adds the integrand at the node 0, of weight w.
  template <class Integrand>
  __host__ __device__ void addMiddle(const Integrand& f, Real w) {
    const Lane weight(w);
    const Lane c = (lo_ + hi_) * Lane(static_cast<Real>(0.5));
    const Lane D1 = dd1_ + c * c, D2 = dd2_ + c * c;
    F1_ = multiplyAdd(weight, f.at(D1, f.path(D1)), F1_);
    F2_ = multiplyAdd(weight, f.at(D2, f.path(D2)), F2_);
  }

  /// d1·F(d1) − d2·F(d2). An empty interval gives 0, also where the integrand has no value: above a
  /// corner.
  __host__ __device__ ComplexPair<Lane> difference() const {
    const Lane zero(Real(0));
    const auto empty = lo_ == hi_;
    return {select(empty, zero, h_ * (d1_ * F1_.re - d2_ * F2_.re)),
            select(empty, zero, h_ * (d1_ * F1_.im - d2_ * F2_.im))};
  }

 private:
  Lane d1_, d2_, dd1_, dd2_, lo_, hi_, h_;
  // over h
  ComplexPair<Lane> F1_{Lane(Real(0)), Lane(Real(0))}, F2_ = F1_;
};

/// Adds a rule's nodes to integrals, always with the roots of the next nodes on their way while the
/// present ones are summed: a processor does both at once.
template <class Integrand, class Lane, class Real>
class Quadrature {
 public:
  using Edges = EdgePair<Lane, Real>;

  __host__ __device__ Quadrature(const Integrand& f, const SymmetricRule<Real>& rule)
      : f_(f), rule_(rule), pairs_(rule.N / 2) {}

  // Inlined always: as functions they would hand registers over through memory, for a tenth of the
  // time at low orders.

  __host__ __device__ __attribute__((always_inline)) void integrate(Edges& edges) {
    if (pairs_ > 0) {
      start(edges);
      for (int i = 1; i < pairs_; ++i) add(edges, i - 1, edges, i);
      addLast(edges);
    }
    addMiddle(edges);
  }

  /// Both in turns, for half as many starts.
  __host__ __device__ __attribute__((always_inline)) void integrate(Edges& one, Edges& other) {
    if (pairs_ > 0) {
      start(one);
      for (int i = 1; i < pairs_; ++i) {
        add(one, i - 1, other, i - 1);
        add(other, i - 1, one, i);
      }
      add(one, pairs_ - 1, other, pairs_ - 1);
      addLast(other);
    }
    addMiddle(one);
    addMiddle(other);
  }

 private:
  __host__ __device__ void start(const Edges& edges) {
    nodes_ = edges.nodes(rule_.x[0]);
    for (int n = 0; n < 4; ++n) nodes_.path[n] = f_.path(nodes_.D[n]);
  }

  /// Adds the pair i, and starts the pair j of `next`.
  __host__ __device__ void add(Edges& edges, int i, const Edges& next, int j) {
    Nodes<Lane> following = next.nodes(rule_.x[j]);
    edges.add(f_, rule_.w[i], nodes_, [&](int n) { following.path[n] = f_.path(following.D[n]); });
    nodes_ = following;
  }

  __host__ __device__ void addLast(Edges& edges) {
    edges.add(f_, rule_.w[pairs_ - 1], nodes_, [](int) {});
  }

  __host__ __device__ void addMiddle(Edges& edges) {
    if (rule_.N > 2 * pairs_) edges.addMiddle(f_, rule_.w[pairs_]);
  }

  const Integrand& f_;
  const SymmetricRule<Real>& rule_;
  const int pairs_;
  Nodes<Lane> nodes_;
};

/// Whether the foot of the perpendicular lies between the ends of a pair of edges, and not in their
/// middle.
template <class Real, class Lane>
__host__ __device__ inline auto footSplits(Lane offset, Lane half) {
  return (offset > Lane(static_cast<Real>(1e-7))) & (offset <= half);
}

/// The complex pressure at (x, y, z) of the piston of half-width a along x and half-height b along
/// y, in the plane z = 0, with the time factor exp(+iωt). z keeps its sign: the field is that of
/// the formula, which no mirror symmetry in z holds for. 0 where single precision has lost the
/// phase altogether: farther than some 4·10⁶ wavelengths to the side or behind.
template <template <class> class IntegrandOf, class Lane, class Real>
__host__ __device__ inline ComplexPair<Lane> pointPressure(Lane x, Lane y, Lane z, Real a, Real b,
                                                           Real k,
                                                           const SymmetricRule<Real>& rule) {
  const IntegrandOf<Lane> f(z, k);
  const Lane none(Real(0)), A(a), B(b);
  const Lane u = IntegrandOf<Lane>::distance(x), v = IntegrandOf<Lane>::distance(y);
  const Lane nearX = u - A, farX = u + A, nearY = v - B, farY = v + B;
  // Three cases for the edges of a direction: beyond their ends one interval; between them two,
  // split at the foot of the perpendicular, where the integrand is sharpest; in the middle two
  // equal ones, so one is doubled.
  const auto outsideX = u > A, outsideY = v > B;
  const auto splitX = footSplits<Real>(u, A), splitY = footSplits<Real>(v, B);

  using Edges = EdgePair<Lane, Real>;
  Quadrature<IntegrandOf<Lane>, Lane, Real> quadrature(f, rule);
  Edges edgesAlongY(nearX, farX, select(outsideY, nearY, none), farY);
  Edges edgesAlongX(nearY, farY, select(outsideX, nearX, none), farX);
  quadrature.integrate(edgesAlongY, edgesAlongX);
  ComplexPair<Lane> alongY = edgesAlongY.difference(), alongX = edgesAlongX.difference();
  if (any(splitY)) {
    Edges rest(nearX, farX, select(splitY, nearY, none), none);
    quadrature.integrate(rest);
    alongY = select(splitY, alongY + rest.difference(), alongY);
  }
  if (any(splitX)) {
    Edges rest(nearY, farY, select(splitX, nearX, none), none);
    quadrature.integrate(rest);
    alongX = select(splitX, alongX + rest.difference(), alongX);
  }
  alongY = select(outsideY | splitY, alongY, alongY + alongY);
  alongX = select(outsideX | splitX, alongX, alongX + alongX);

  const ComplexPair<Lane> S = f.complete(alongY + alongX);
  const Lane inverse2Pi(static_cast<Real>(0.15915494309189535));
  // Negative sides are as long as positive ones.
  const Lane across = u + IntegrandOf<Lane>::distance(A),
             along = v + IntegrandOf<Lane>::distance(B);
  return f.ifTold({S.im * inverse2Pi, -S.re * inverse2Pi}, across, along);
}

}  // namespace pistonfield
