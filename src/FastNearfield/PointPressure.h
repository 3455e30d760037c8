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

// An integrand is made of z and of what it wants of k, a `Wave`. It gives (exp(−ikR) − exp(−ikz))/D
// at D = d² + σ² up to a factor that all nodes share, which `complete` multiplies into the sum
// together with −i/(2π), in two steps: `path(D)`, with the roots and quotients that take long, and
// `at(D, path)`, or `addTo(sum, D, path)` for a sum with it. It gives the distance of a coordinate
// from 0; and `ifTold` puts 0 for the pressures of points whose phase is lost, given how far the
// piston reaches from them.

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
    return select(Lane(0.0f) <= z_, quotient(D, sum), sum);
  }

  PISTONFIELD_INLINED ComplexPair<Lane> at(Lane D, Lane path) const {
    const auto [sine, cosine] = half_(path);
    const Lane scale = secondQuotient(sine, D);
    return {scale * sine, scale * cosine};
  }

  PISTONFIELD_INLINED ComplexPair<Lane> addTo(ComplexPair<Lane> sum, Lane D, Lane path) const {
    const auto [sine, cosine] = half_(path);
    const Lane scale = secondQuotient(sine, D);
    return multiplyAdd(scale, ComplexPair<Lane>{sine, cosine}, sum);
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

  PISTONFIELD_INLINED ComplexPair<Lane> addTo(ComplexPair<Lane> sum, Lane D, Lane path) const {
    return sum + at(D, path);
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
    Nodes<Lane> nodes;
    nodes.D[0] = multiplyAdd(plus, plus, dd1_);
    nodes.D[1] = multiplyAdd(minus, minus, dd1_);
    nodes.D[2] = multiplyAdd(plus, plus, dd2_);
    nodes.D[3] = multiplyAdd(minus, minus, dd2_);
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
    F1_ = multiplyAdd(weight, f.addTo(plus1, at.D[1], at.path[1]), F1_);
    meanwhile(2);
    const ComplexPair<Lane> plus2 = f.at(at.D[2], at.path[2]);
    meanwhile(3);
    F2_ = multiplyAdd(weight, f.addTo(plus2, at.D[3], at.path[3]), F2_);
  }

  /// Adds the integrand at the node 0, of weight w.
  template <class Integrand>
  PISTONFIELD_INLINED void addMiddle(const Integrand& f, Real w) {
    const Lane weight(w);
    const Lane c = (lo_ + hi_) * Lane(static_cast<Real>(0.5));
    const Lane D1 = multiplyAdd(c, c, dd1_), D2 = multiplyAdd(c, c, dd2_);
    F1_ = multiplyAdd(weight, f.at(D1, f.path(D1)), F1_);
    F2_ = multiplyAdd(weight, f.at(D2, f.path(D2)), F2_);
  }

  /// d1·F(d1) − d2·F(d2).
  PISTONFIELD_INLINED ComplexPair<Lane> difference() const { return difference(h_); }

  /// The same, twice where `once` does not hold.
  template <class Mask>
  PISTONFIELD_INLINED ComplexPair<Lane> difference(Mask once) const {
    return difference(select(once, h_, h_ + h_));
  }

  /// The difference, or 0 for an empty interval: also where the integrand has no value, above a
  /// corner.
  PISTONFIELD_INLINED ComplexPair<Lane> unlessEmpty(ComplexPair<Lane> difference) const {
    const Lane none(Real(0));
    return select(lo_ == hi_, ComplexPair<Lane>{none, none}, difference);
  }

 private:
  PISTONFIELD_INLINED ComplexPair<Lane> difference(Lane h) const {
    return {h * multiplyAdd(d1_, F1_.re, -(d2_ * F2_.re)),
            h * multiplyAdd(d1_, F1_.im, -(d2_ * F2_.im))};
  }

  Lane d1_, d2_, dd1_, dd2_, lo_, hi_, h_;
  // over h
  ComplexPair<Lane> F1_{Lane(Real(0)), Lane(Real(0))}, F2_ = F1_;
};

/// Adds a rule's nodes to integrals, always with the roots of the next nodes on their way while the
/// present ones are summed: a processor does both at once.
template <class Integrand, class Lane, class Real, class Rule>
class EdgeQuadrature {
 public:
  using Edges = EdgePair<Lane, Real>;

  PISTONFIELD_INLINED EdgeQuadrature(const Integrand& f, const Rule& rule)
      : f_(f), rule_(rule), pairs_(rule.N / 2) {}

  /// With the first nodes of a pair of edges started elsewhere.
  PISTONFIELD_INLINED EdgeQuadrature(const Integrand& f, const Rule& rule,
                                     const Nodes<Lane>& started)
      : f_(f), rule_(rule), pairs_(rule.N / 2), nodes_(started) {}

  /// The first nodes of the edges that are integrated next. Where a rule has no pair, what is
  /// started is not added.
  PISTONFIELD_INLINED void start(const Edges& edges) {
    nodes_ = edges.nodes(pairs_ > 0 ? rule_.fromEnd(0) : Real(0));
    for (int n = 0; n < 4; ++n) nodes_.path[n] = f_.path(nodes_.D[n]);
  }

  /// Edges that have not been started, and starts none.
  PISTONFIELD_INLINED void integrate(Edges& edges) {
    start(edges);
    if (pairs_ > 0) {
      addAllButLast(edges);
      addLast(edges, [](int) __attribute__((always_inline)){});
    }
    addMiddle(edges);
  }

  /// Two in turns, the first of which has been started; starts none.
  PISTONFIELD_INLINED void integrate(Edges& one, Edges& other) {
    if (pairs_ > 0) {
      addInTurns(one, other);
      addLast(other, [](int) __attribute__((always_inline)){});
    }
    addMiddle(one);
    addMiddle(other);
  }

  // With a rule of at least one pair, the last nodes can start others.

  /// Edges that have been started; starts the next ones.
  PISTONFIELD_INLINED void integrateBefore(const Edges& next, Edges& edges) {
    addAllButLast(edges);
    add(edges, pairs_ - 1, next, 0);
    addMiddle(edges);
  }

  /// Two in turns, the first of which has been started. Returns the first nodes, started, of the
  /// PointIntegrals that `next` returns.
  template <class Next>
  PISTONFIELD_INLINED Nodes<Lane> integrateBeforePoint(const Next& next, Edges& one, Edges& other) {
    addInTurns(one, other);
    const auto follower = next();
    Nodes<Lane> following = follower.firstNodes(rule_);
    addLast(
        other, [&](int n) __attribute__((always_inline)) { follower.start(following, n); });
    addMiddle(one);
    addMiddle(other);
    return following;
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

  /// All but the last of the other one.
  PISTONFIELD_INLINED void addInTurns(Edges& one, Edges& other) {
    for (int i = 1; i < pairs_; ++i) {
      add(one, i - 1, other, i - 1);
      add(other, i - 1, one, i);
    }
    add(one, pairs_ - 1, other, pairs_ - 1);
  }

  template <class Meanwhile>
  PISTONFIELD_INLINED void addLast(Edges& edges, const Meanwhile& meanwhile) {
    edges.add(f_, rule_.w[pairs_ - 1], nodes_, meanwhile);
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

/// Whether a point lies beyond the ends of a pair of edges, where it is not known that its foot
/// splits them.
template <class Split, class Lane>
PISTONFIELD_INLINED auto liesBeyond(Split /*splits*/, Lane offset, Lane half) {
  return offset > half;
}
template <class Lane>
PISTONFIELD_INLINED NoLane<Lane> liesBeyond(AllLanes<Lane> /*splits*/, Lane /*offset*/,
                                            Lane /*half*/) {
  return {};
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

/// The integrals of a point, for a piston of half-width a along x and half-height b along y. `Rule`
/// has a SymmetricRule's w, N and fromEnd.
template <template <class> class IntegrandOf, class Lane, class SplitX, class SplitY, class Real>
class PointIntegrals {
 public:
  using Wave = typename IntegrandOf<Lane>::Wave;

  PISTONFIELD_INLINED PointIntegrals(const MirroredPoint<Lane, SplitX, SplitY>& point, Real a,
                                     Real b, Wave wave)
      : PointIntegrals(point, Lane(a), Lane(b), Lane(Real(0)), wave) {}

  /// The pressure of any point.
  template <class Rule>
  PISTONFIELD_INLINED ComplexPair<Lane> pressure(const Rule& rule) {
    EdgeQuadrature<IntegrandOf<Lane>, Lane, Real, Rule> quadrature(f_, rule);
    quadrature.start(alongY_);
    quadrature.integrate(alongY_, alongX_);
    const auto onceY = outsideY_ | point_.splitY, onceX = outsideX_ | point_.splitX;
    ComplexPair<Lane> sumY = alongY_.unlessEmpty(alongY_.difference(onceY));
    ComplexPair<Lane> sumX = alongX_.unlessEmpty(alongX_.difference(onceX));
    if (any(point_.splitY)) {
      quadrature.integrate(restAlongY_);
      const ComplexPair<Lane> rest = restAlongY_.unlessEmpty(restAlongY_.difference());
      sumY = select(point_.splitY, sumY + rest, sumY);
    }
    if (any(point_.splitX)) {
      quadrature.integrate(restAlongX_);
      const ComplexPair<Lane> rest = restAlongX_.unlessEmpty(restAlongX_.difference());
      sumX = select(point_.splitX, sumX + rest, sumX);
    }
    // Negative sides are as long as positive ones.
    const Lane across = point_.u + IntegrandOf<Lane>::distance(a_),
               along = point_.v + IntegrandOf<Lane>::distance(b_);
    return f_.ifTold(f_.complete(sumY + sumX), across, along);
  }

  // Where it is known before which intervals there are, each is started in the last nodes of
  // another one. For points of which no interval is empty and no phase can be lost, and rules of at
  // least one pair of nodes.

  template <class Rule>
  PISTONFIELD_INLINED ComplexPair<Lane> pressureOfKnown(const Rule& rule) {
    EdgeQuadrature<IntegrandOf<Lane>, Lane, Real, Rule> quadrature(f_, rule);
    quadrature.start(first());
    integrateRests(quadrature);
    quadrature.integrate(alongY_, alongX_);
    return sumOfKnown();
  }

  /// Of points that follow one another. `nodes` are the first ones, started; and then those of the
  /// PointIntegrals that `next` returns.
  template <class Rule, class Next>
  PISTONFIELD_INLINED ComplexPair<Lane> pressureOfKnown(const Rule& rule, Nodes<Lane>& nodes,
                                                        const Next& next) {
    EdgeQuadrature<IntegrandOf<Lane>, Lane, Real, Rule> quadrature(f_, rule, nodes);
    integrateRests(quadrature);
    nodes = quadrature.integrateBeforePoint(next, alongY_, alongX_);
    return sumOfKnown();
  }

  template <class Rule>
  PISTONFIELD_INLINED Nodes<Lane> firstNodes(const Rule& rule) const {
    return first().nodes(rule.fromEnd(0));
  }

  template <class Rule>
  PISTONFIELD_INLINED Nodes<Lane> startedNodes(const Rule& rule) const {
    Nodes<Lane> nodes = firstNodes(rule);
    for (int n = 0; n < 4; ++n) start(nodes, n);
    return nodes;
  }

  /// Starts the n-th of the first nodes.
  PISTONFIELD_INLINED void start(Nodes<Lane>& nodes, int n) const {
    nodes.path[n] = f_.path(nodes.D[n]);
  }

 private:
  using Edges = EdgePair<Lane, Real>;
  template <class Split>
  using Beyond = decltype(liesBeyond(Split(), Lane(), Lane()));

  // Three cases for the edges of a direction: beyond their ends one interval; between them two,
  // split at the foot of the perpendicular, where the integrand is sharpest; in the middle two
  // equal ones, so one is doubled.
  PISTONFIELD_INLINED PointIntegrals(const MirroredPoint<Lane, SplitX, SplitY>& point, Lane a,
                                     Lane b, Lane none, Wave wave)
      : point_(point),
        a_(a),
        b_(b),
        f_(point.z, wave),
        outsideX_(liesBeyond(point.splitX, point.u, a)),
        outsideY_(liesBeyond(point.splitY, point.v, b)),
        alongY_(point.u - a, point.u + a, select(outsideY_, point.v - b, none), point.v + b),
        alongX_(point.v - b, point.v + b, select(outsideX_, point.u - a, none), point.u + a),
        restAlongY_(point.u - a, point.u + a, select(point.splitY, point.v - b, none), none),
        restAlongX_(point.v - b, point.v + b, select(point.splitX, point.u - a, none), none) {}

  PISTONFIELD_INLINED const Edges& first() const {
    return any(point_.splitY) ? restAlongY_ : afterRestAlongY();
  }
  PISTONFIELD_INLINED const Edges& afterRestAlongY() const {
    return any(point_.splitX) ? restAlongX_ : alongY_;
  }

  template <class Quadrature>
  PISTONFIELD_INLINED void integrateRests(Quadrature& quadrature) {
    if (any(point_.splitY)) quadrature.integrateBefore(afterRestAlongY(), restAlongY_);
    if (any(point_.splitX)) quadrature.integrateBefore(alongY_, restAlongX_);
  }

  PISTONFIELD_INLINED ComplexPair<Lane> sumOfKnown() const {
    ComplexPair<Lane> sumY = alongY_.difference(outsideY_ | point_.splitY);
    ComplexPair<Lane> sumX = alongX_.difference(outsideX_ | point_.splitX);
    if (any(point_.splitY)) sumY = sumY + restAlongY_.difference();
    if (any(point_.splitX)) sumX = sumX + restAlongX_.difference();
    return f_.complete(sumY + sumX);
  }

  MirroredPoint<Lane, SplitX, SplitY> point_;
  Lane a_, b_;
  IntegrandOf<Lane> f_;
  Beyond<SplitX> outsideX_;
  Beyond<SplitY> outsideY_;
  Edges alongY_, alongX_, restAlongY_, restAlongX_;
};

/// The complex pressure at (x, y, z) of the piston in the plane z = 0, with the time factor
/// exp(+iωt). z keeps its sign: the field is that of the formula, which no mirror symmetry in z
/// holds for. 0 where single precision has lost the phase altogether: farther than some 4·10⁶
/// wavelengths to the side or behind.
template <template <class> class IntegrandOf, class Lane, class Real, class Rule>
__host__ __device__ inline ComplexPair<Lane> pointPressure(Lane x, Lane y, Lane z, Real a, Real b,
                                                           Real k, const Rule& rule) {
  const Lane u = IntegrandOf<Lane>::distance(x), v = IntegrandOf<Lane>::distance(y);
  const auto splitX = footSplits<Real>(u, Lane(a)), splitY = footSplits<Real>(v, Lane(b));
  using Split = decltype(splitX);
  return PointIntegrals<IntegrandOf, Lane, Split, Split, Real>({u, v, z, splitX, splitY}, a, b,
                                                               typename IntegrandOf<Lane>::Wave(k))
      .pressure(rule);
}

#undef PISTONFIELD_INLINED

}  // namespace pistonfield
