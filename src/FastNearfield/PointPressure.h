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

  /// How far the pair i lies from the ends of [−1, 1].
  __host__ __device__ Real fromEnd(int i) const { return Real(1) + x[i]; }
};

// All that a point takes is inlined, always: called, it would hand registers over through memory,
// for a tenth of the time at low orders.
#define PISTONFIELD_INLINED __host__ __device__ __attribute__((always_inline)) inline

// An integrand is made of z and of what it wants of k, a `Wave`. It gives (exp(−ikR) − exp(−ikz))/D
// at D = d² + σ² up to a factor that all nodes share, which `complete` multiplies into the sum
// together with −i/(2π), in two steps: `path(D)`, with the roots and quotients that take long, and
// `at(D, path)`. It gives the distance of a coordinate from 0; and `ifTold` puts 0 for the
// pressures of points whose phase is lost, given how far the piston reaches from them.

/// In single precision, in the half-angle form
///
///     exp(−ikR) − E0 = −2·E0·sin(δ/2)·(sin(δ/2) + i·cos(δ/2)),   δ = k(R − z),  E0 = exp(−ikz).
///
/// For z ≥ 0, R − z = D/(R + z) loses no digits, where the difference of the exponentials would
/// lose most of them near the axis and far away. The shared factor is −2·E0.
template <class Lane>
class HalfAngleIntegrand {
 public:
  using Wave = HalfPhase<Lane>;

  PISTONFIELD_INLINED HalfAngleIntegrand(Lane z, Wave half)
      : HalfAngleIntegrand(z, half, half.ofAny(z)) {}

  PISTONFIELD_INLINED static Lane distance(Lane x) { return absolute(x); }

  /// R − z.
  PISTONFIELD_INLINED Lane path(Lane D) const {
    const Lane sum = squareRoot(zz_ + D) + absZ_;
    return select(z_ < Lane(0.0f), sum, quotient(D, sum));
  }

  PISTONFIELD_INLINED ComplexPair<Lane> at(Lane D, Lane path) const {
    const auto [sine, cosine] = half_(path);
    const Lane scale = secondQuotient(sine, D);
    return {scale * sine, scale * cosine};
  }

  PISTONFIELD_INLINED ComplexPair<Lane> complete(ComplexPair<Lane> sum) const {
    return {multiplyAdd(shared_.re, sum.re, -(shared_.im * sum.im)),
            multiplyAdd(shared_.re, sum.im, shared_.im * sum.re)};
  }

  /// Where R − z can have more turns than floats count, a point has no phase.
  PISTONFIELD_INLINED ComplexPair<Lane> ifTold(ComplexPair<Lane> p, Lane across, Lane along) const {
    if (!any(half_.mayBeLost(across + along + Lane(2.0f) * absZ_))) return p;
    const auto lost = half_.lost(path(across * across + along * along));
    return {select(lost, Lane(0.0f), p.re), select(lost, Lane(0.0f), p.im)};
  }

 protected:
  using SineCosine = typename Wave::SineCosine;

  PISTONFIELD_INLINED HalfAngleIntegrand(Lane z, Wave half, SineCosine halfKz)
      : z_(z), zz_(z * z), absZ_(absolute(z)), half_(half), shared_(shared(halfKz)) {}

 private:
  /// −i/(2π)·(−2·E0)
  PISTONFIELD_INLINED static ComplexPair<Lane> shared(SineCosine halfKz) {
    constexpr float inversePi = 0.31830987f;
    const auto [sine, cosine] = halfKz;
    return {Lane(2 * inversePi) * (sine * cosine),
            Lane(inversePi) * multiplyAdd(cosine, cosine, -(sine * sine))};
  }

  Lane z_, zz_, absZ_;
  Wave half_;
  ComplexPair<Lane> shared_;
};

/// The same for points so near that their phase cannot be lost.
template <class Lane>
class NearHalfAngleIntegrand : public HalfAngleIntegrand<Lane> {
 public:
  PISTONFIELD_INLINED NearHalfAngleIntegrand(Lane z, HalfPhase<Lane> half)
      : HalfAngleIntegrand<Lane>(z, half, half(z)) {}

  PISTONFIELD_INLINED static ComplexPair<Lane> ifTold(ComplexPair<Lane> p, Lane /*across*/,
                                                      Lane /*along*/) {
    return p;
  }
};

/// The same in double precision as it is written, but with the magnitude of a coordinate, the
/// square root and the sines and cosines in single precision: the accuracy that this precision has
/// always had on the device.
template <class Lane>
class SingleRootIntegrand {
 public:
  using Wave = Lane;

  PISTONFIELD_INLINED SingleRootIntegrand(Lane z, Wave k)
      : k_(k), zz_(z * z), E0_(turn(-(k * z))) {}

  PISTONFIELD_INLINED static Lane distance(Lane x) { return absolute(static_cast<float>(x)); }

  /// R.
  PISTONFIELD_INLINED Lane path(Lane D) const { return std::sqrt(static_cast<float>(zz_ + D)); }

  PISTONFIELD_INLINED ComplexPair<Lane> at(Lane D, Lane path) const {
    const ComplexPair<Lane> e = turn(-(k_ * path));
    const Lane inverse = Lane(1) / D;
    return {(e.re - E0_.re) * inverse, (e.im - E0_.im) * inverse};
  }

  PISTONFIELD_INLINED static ComplexPair<Lane> complete(ComplexPair<Lane> sum) {
    constexpr Lane inverse2Pi = 0.15915494309189535;
    return {sum.im * inverse2Pi, -sum.re * inverse2Pi};
  }

  PISTONFIELD_INLINED static ComplexPair<Lane> ifTold(ComplexPair<Lane> p, Lane /*across*/,
                                                      Lane /*along*/) {
    return p;
  }

 private:
  /// exp(iθ).
  PISTONFIELD_INLINED static ComplexPair<Lane> turn(Lane theta) {
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
PISTONFIELD_INLINED ComplexPair<Lane> operator+(ComplexPair<Lane> p, ComplexPair<Lane> q) {
  return {p.re + q.re, p.im + q.im};
}

/// c·p + q
template <class Lane>
PISTONFIELD_INLINED ComplexPair<Lane> multiplyAdd(Lane c, ComplexPair<Lane> p,
                                                  ComplexPair<Lane> q) {
  return {multiplyAdd(c, p.re, q.re), multiplyAdd(c, p.im, q.im)};
}

template <class Mask, class Lane>
PISTONFIELD_INLINED ComplexPair<Lane> select(Mask mask, ComplexPair<Lane> yes,
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
  PISTONFIELD_INLINED EdgePair(Lane d1, Lane d2, Lane lo, Lane hi)
      : d1_(d1),
        d2_(d2),
        dd1_(d1 * d1),
        dd2_(d2 * d2),
        lo_(lo),
        hi_(hi),
        h_((hi - lo) * Lane(static_cast<Real>(0.5))) {}

  /// The pair of nodes so far from the ends of the rule; their integrand is not started.
  PISTONFIELD_INLINED Nodes<Lane> nodes(Real fromEnd) const {
    // Next to the foot of the perpendicular, which is one of the ends, nodes counted from the
    // middle would lose most of their digits.
    const Lane part(fromEnd);
    const Lane plus = multiplyAdd(part, h_, lo_);
    const Lane minus = multiplyAdd(part, -h_, hi_);
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
  PISTONFIELD_INLINED void add(const Integrand& f, Real w, const Nodes<Lane>& at,
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
  PISTONFIELD_INLINED void addMiddle(const Integrand& f, Real w) {
    const Lane weight(w);
    const Lane c = (lo_ + hi_) * Lane(static_cast<Real>(0.5));
    const Lane D1 = dd1_ + c * c, D2 = dd2_ + c * c;
    F1_ = multiplyAdd(weight, f.at(D1, f.path(D1)), F1_);
    F2_ = multiplyAdd(weight, f.at(D2, f.path(D2)), F2_);
  }

  /// d1·F(d1) − d2·F(d2). An empty interval gives 0, also where the integrand has no value: above a
  /// corner.
  PISTONFIELD_INLINED ComplexPair<Lane> difference() const { return difference(h_); }

  /// The same, twice where `once` does not hold.
  template <class Mask>
  PISTONFIELD_INLINED ComplexPair<Lane> difference(Mask once) const {
    return difference(select(once, h_, h_ + h_));
  }

 private:
  PISTONFIELD_INLINED ComplexPair<Lane> difference(Lane h) const {
    const Lane zero(Real(0));
    const auto empty = lo_ == hi_;
    return {select(empty, zero, h * multiplyAdd(d1_, F1_.re, -(d2_ * F2_.re))),
            select(empty, zero, h * multiplyAdd(d1_, F1_.im, -(d2_ * F2_.im)))};
  }

  Lane d1_, d2_, dd1_, dd2_, lo_, hi_, h_;
  // over h
  ComplexPair<Lane> F1_{Lane(Real(0)), Lane(Real(0))}, F2_ = F1_;
};

/// Adds a rule's nodes to integrals, always with the roots of the next nodes on their way while the
/// present ones are summed: a processor does both at once.
template <class Integrand, class Lane, class Real, class Rule>
class Quadrature {
 public:
  using Edges = EdgePair<Lane, Real>;

  PISTONFIELD_INLINED Quadrature(const Integrand& f, const Rule& rule)
      : f_(f), rule_(rule), pairs_(rule.N / 2) {}

  /// The first pair of nodes of the edges that are integrated next. Where a rule has none, what is
  /// started is not added.
  PISTONFIELD_INLINED void start(const Edges& edges) {
    nodes_ = edges.nodes(pairs_ > 0 ? rule_.fromEnd(0) : Real(0));
    for (int n = 0; n < 4; ++n) nodes_.path[n] = f_.path(nodes_.D[n]);
  }

  /// Edges that have been started; starts the next ones.
  PISTONFIELD_INLINED void integrate(Edges& edges, const Edges& next) {
    if (pairs_ > 0) {
      addAllButLast(edges);
      add(edges, pairs_ - 1, next, 0);
    }
    addMiddle(edges);
  }

  /// Edges that have not been started, and starts none.
  PISTONFIELD_INLINED void integrate(Edges& edges) {
    start(edges);
    if (pairs_ > 0) {
      addAllButLast(edges);
      addLast(edges);
    }
    addMiddle(edges);
  }

  /// The last two, in turns. The first has been started.
  PISTONFIELD_INLINED void integrateLast(Edges& one, Edges& other) {
    if (pairs_ > 0) {
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
  /// Adds the pair i, and starts the pair j of `next`.
  PISTONFIELD_INLINED void add(Edges& edges, int i, const Edges& next, int j) {
    Nodes<Lane> following = next.nodes(rule_.fromEnd(j));
    edges.add(
        f_, rule_.w[i], nodes_, [&](int n) __attribute__((always_inline)) {
          following.path[n] = f_.path(following.D[n]);
        });
    nodes_ = following;
  }

  PISTONFIELD_INLINED void addAllButLast(Edges& edges) {
    for (int i = 1; i < pairs_; ++i) add(edges, i - 1, edges, i);
  }

  PISTONFIELD_INLINED void addLast(Edges& edges) {
    edges.add(f_, rule_.w[pairs_ - 1], nodes_, [](int) __attribute__((always_inline)){});
  }

  PISTONFIELD_INLINED void addMiddle(Edges& edges) {
    if (rule_.N > 2 * pairs_) edges.addMiddle(f_, rule_.w[pairs_]);
  }

  const Integrand& f_;
  const Rule& rule_;
  const int pairs_;
  Nodes<Lane> nodes_;
};

/// Whether the foot of the perpendicular lies between the ends of a pair of edges, and not in their
/// middle.
template <class Real, class Lane>
PISTONFIELD_INLINED auto footSplits(Lane offset, Lane half) {
  return (offset > Lane(static_cast<Real>(1e-7))) & (offset <= half);
}

/// A point mirrored to where x = u ≥ 0 and y = v ≥ 0, and whether the feet of its perpendiculars
/// split the edges along x and along y: as `footSplits` says, or one of the conditions that are
/// known before.
template <class Lane, class SplitX, class SplitY>
struct MirroredPoint {
  Lane u, v, z;
  SplitX splitX;
  SplitY splitY;
};

/// The complex pressure at a point of the piston of half-width a along x and half-height b along y,
/// in the plane z = 0, with the time factor exp(+iωt). z keeps its sign: the field is that of the
/// formula, which no mirror symmetry in z holds for. 0 where single precision has lost the phase
/// altogether: farther than some 4·10⁶ wavelengths to the side or behind. `Rule` has a
/// SymmetricRule's w, N and fromEnd.
template <template <class> class IntegrandOf, class Lane, class SplitX, class SplitY, class Real,
          class Rule>
PISTONFIELD_INLINED ComplexPair<Lane> pointPressure(
    const MirroredPoint<Lane, SplitX, SplitY>& point, Real a, Real b,
    typename IntegrandOf<Lane>::Wave wave, const Rule& rule) {
  const auto [u, v, z, splitX, splitY] = point;
  const IntegrandOf<Lane> f(z, wave);
  const Lane none(Real(0)), A(a), B(b);
  const Lane nearX = u - A, farX = u + A, nearY = v - B, farY = v + B;
  // Three cases for the edges of a direction: beyond their ends one interval; between them two,
  // split at the foot of the perpendicular, where the integrand is sharpest; in the middle two
  // equal ones, so one is doubled.
  const auto outsideX = u > A, outsideY = v > B;

  using Edges = EdgePair<Lane, Real>;
  Edges alongY(nearX, farX, select(outsideY, nearY, none), farY);
  Edges alongX(nearY, farY, select(outsideX, nearX, none), farX);
  Edges restAlongY(nearX, farX, select(splitY, nearY, none), none);
  Edges restAlongX(nearY, farY, select(splitX, nearX, none), none);

  // Where it is known before which intervals there are, each starts in the last nodes of another.
  Quadrature<IntegrandOf<Lane>, Lane, Real, Rule> quadrature(f, rule);
  constexpr bool known = IsKnown<SplitX>::value && IsKnown<SplitY>::value;
  if constexpr (known) {
    const Edges afterY = any(splitX) ? restAlongX : alongY;
    quadrature.start(any(splitY) ? restAlongY : afterY);
    if (any(splitY)) quadrature.integrate(restAlongY, afterY);
    if (any(splitX)) quadrature.integrate(restAlongX, alongY);
  } else {
    quadrature.start(alongY);
  }
  quadrature.integrateLast(alongY, alongX);
  ComplexPair<Lane> sumY = alongY.difference(outsideY | splitY);
  ComplexPair<Lane> sumX = alongX.difference(outsideX | splitX);
  if (any(splitY)) {
    if constexpr (!known) quadrature.integrate(restAlongY);
    sumY = select(splitY, sumY + restAlongY.difference(), sumY);
  }
  if (any(splitX)) {
    if constexpr (!known) quadrature.integrate(restAlongX);
    sumX = select(splitX, sumX + restAlongX.difference(), sumX);
  }

  // Negative sides are as long as positive ones.
  const Lane across = u + IntegrandOf<Lane>::distance(A),
             along = v + IntegrandOf<Lane>::distance(B);
  return f.ifTold(f.complete(sumY + sumX), across, along);
}

/// The same at (x, y, z).
template <template <class> class IntegrandOf, class Lane, class Real, class Rule>
__host__ __device__ inline ComplexPair<Lane> pointPressure(Lane x, Lane y, Lane z, Real a, Real b,
                                                           Real k, const Rule& rule) {
  const Lane u = IntegrandOf<Lane>::distance(x), v = IntegrandOf<Lane>::distance(y);
  const auto splitX = footSplits<Real>(u, Lane(a)), splitY = footSplits<Real>(v, Lane(b));
  return pointPressure<IntegrandOf>(
      MirroredPoint<Lane, decltype(splitX), decltype(splitY)>{u, v, z, splitX, splitY}, a, b,
      typename IntegrandOf<Lane>::Wave(k), rule);
}

#undef PISTONFIELD_INLINED

}  // namespace pistonfield
