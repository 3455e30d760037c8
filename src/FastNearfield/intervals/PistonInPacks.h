#pragma once

#include "FastNearfield/intervals/IntervalOrder.h"
#include "FastNearfield/intervals/IntervalSum.h"
#include "FastNearfield/intervals/PistonOnPoints.h"
#include "FastNearfield/intervals/ProductRule.h"
#include "FastNearfield/intervals/Wide.h"

namespace pistonfield {

/// The fraction of a number of half turns, from −1/2 to 1/2.
template <class Set>
PISTONFIELD_HOST_DEVICE Wide<Set> fractionOf(Wide<Set> halfTurns) {
  return Wide<Set>::mapped([](auto part) { return fractionOf(part); }, halfTurns);
}

/// Adds the field of a piston at points. Every interval of an edge has its own order and precision,
/// those that the point in greatest need requires.
///
/// The intervals of a group of packs are planned first and evaluated then: what is planned decides
/// how long loops are, and a processor that had to wait for it would stand still.
///
/// A GPU's thread runs the same code for packs of one point (lanes/OneLane.h).
template <class Set>
class PistonInPacks {
 public:
  PISTONFIELD_HOST_DEVICE PistonInPacks(const WeightedPiston& piston, Used& used)
      : piston_(piston),
        used_(used),
        halfSides_{piston.halfWidth, piston.halfHeight},
        tolerance_(static_cast<float>(piston.tolerance * 2 * pi / mostIntervals)) {}

  PISTONFIELD_HOST_DEVICE void add(const double* x, const double* y, const double* z, int count,
                                   double* re, double* im) {
    if (piston_.order == 0 && tolerance_ < leastTolerance) {
      used_.excess = 1e300;
      return;
    }
    constexpr int group = packs * Single::lanes;
    for (int first = 0; first < count; first += group) {
      const int last = first + group < count ? first + group : count;
      const int loaded = (last - first) / Single::lanes;
      for (int i = first, n = 0; i < last; i += Single::lanes, ++n) load(n, x + i, y + i, z + i);
      if (piston_.order == 0) planProducts(loaded);
      for (int n = 0; n < loaded; ++n) {
        if (isProduct_[n]) continue;
        planEdges(n, 0);
        planEdges(n, 1);
      }
      decide();
      evaluateIntervals();
      for (int i = first, n = 0; i < last; i += Single::lanes, ++n) addPressure(n, re + i, im + i);
    }
    used_.positionError += static_cast<double>(positionError_) * piston_.weightMagnitude;
  }

 private:
  using W = Wide<Set>;
  using Single = Pack<Set>;
  static constexpr double pi = 3.14159265358979323846;
  // Of the tolerance of an integral.
  // The bound of the rounding error is too small by a factor of up to 2.1, and the order of a rule
  // by one of up to 1.13 in the error, in the worst cases that were found.
  static constexpr float roundingShare = 0.25f, quadratureShare = 0.6f;
  static constexpr float leastNearness = 1e-3f;    // for a product rule
  static constexpr float leastSingleD = 1e-12f;    // above 0, of which a float has the square
  static constexpr float mostTurns = 0x1p20f;      // of which a float still has a fraction
  static constexpr float negligibleShare = 0.01f;  // for what it takes long to bound better
  static constexpr float leastTolerance = 1e-32f;  // so that no float underflows
  static constexpr int mostIntervals = 8;          // of a point
  static constexpr int mostSimpleOrder = 17;       // above, bounds at each point pay
  // A GPU's thread, whose pack is one point, evaluates it alone.
  static constexpr int packs = Single::lanes > 1 ? 16 : 1;
  static constexpr int mostUndivided = packs * mostIntervals;  // of a group
  static constexpr int mostProposals = packs > 1 ? Single::lanes : mostIntervals;
  static constexpr int mostPending = 32;

  /// The parts of an edge that are integrated: all of it; or from the foot of the perpendicular, or
  /// from its nearer end, to its farther end, and from the foot to its nearer end.
  enum class Part { WHOLE, AHEAD, BEHIND };

  /// An interval of an edge for a pack of points, which counts `times` times.
  struct Interval {
    int pack;
    int across;  ///< 0: an edge along y, at the distance halfWidth ± |x|; 1: along x
    int side;    ///< +1 for the farther of the two edges, −1 for the nearer one
    Part part;
    double first, last;  ///< what is integrated of the part, from 0 to 1
    int times, order;
  };

  /// A part of an interval on which addDifficult has to decide.
  struct Pending {
    double first, last;
    Part part;
    float tolerance;
  };

  struct Ends {
    W from, to;
  };

  PISTONFIELD_HOST_DEVICE W distance(const Interval& interval) const {
    return W(halfSides_[interval.across]) +
           W(static_cast<double>(interval.side)) * lateral_[interval.across][interval.pack];
  }

  PISTONFIELD_HOST_DEVICE Ends endsOf(const Interval& interval) const {
    const W along = lateral_[1 - interval.across][interval.pack],
            half(halfSides_[1 - interval.across]), foot(0.0);
    Ends ends{along - half, along + half};
    if (interval.part == Part::AHEAD) ends.from = larger(ends.from, foot);
    if (interval.part == Part::BEHIND) ends = {foot, larger(foot - ends.from, foot)};
    const W length = ends.to - ends.from;
    if (interval.last < 1) ends.to = ends.from + length * W(interval.last);
    if (interval.first > 0) ends.from = ends.from + length * W(interval.first);
    return ends;
  }

  PISTONFIELD_HOST_DEVICE void load(int n, const double* x, const double* y, const double* z) {
    const double(*axes)[3] = piston_.axes;
    const W dx = W::load(x) - W(piston_.centre[0]), dy = W::load(y) - W(piston_.centre[1]),
            dz = W::load(z) - W(piston_.centre[2]);
    const auto along = [&](const double* axis) {
      return W(axis[0]) * dx + (W(axis[1]) * dy + W(axis[2]) * dz);
    };
    lateral_[0][n] = absolute(along(axes[0]));
    lateral_[1][n] = absolute(along(axes[1]));
    signedZ_[n] = along(axes[2]);
    z_[n] = absolute(signedZ_[n]);
    delay_[n] = z_[n];
    singleZ_[n] = z_[n].rounded();
    isProduct_[n] = false;
    sum_[n] = {Single(0.0f), Single(0.0f)};
    hasPrecise_[n] = false;
    singleRounding_[n] = preciseRounding_[n] = 0;
    for (int axis = 0; axis < 2; ++axis) {
      const Single lateral = lateral_[axis][n].rounded();
      least_[axis][n] = smallest(lateral);
      most_[axis][n] = largest(lateral);
    }
    leastZ_[n] = smallest(singleZ_[n]);
  }

  /// Evaluates packs by a product of rules where that takes the least time.
  PISTONFIELD_HOST_DEVICE void planProducts(int loaded) {
    const auto a = static_cast<float>(halfSides_[0]), b = static_cast<float>(halfSides_[1]);
    const float tolerance = tolerance_ * static_cast<float>(mostIntervals / (2 * pi));
    for (int first = 0; first < loaded; first += Single::lanes) {
      const auto all = [&](const float* values) { return Single::load(values + first); };
      const ProductNeeds<Set> needs(
          Single(a), Single(b),
          {all(least_[0]), all(most_[0]), all(least_[1]), all(most_[1]), all(leastZ_)},
          Single(tolerance));
      float orderX[Single::lanes], orderY[Single::lanes], rounding[Single::lanes],
          nearest[Single::lanes];
      needs.orderX.store(orderX);
      needs.orderY.store(orderY);
      needs.rounding.store(rounding);
      needs.nearest.store(nearest);
      for (int lane = 0; lane < Single::lanes && first + lane < loaded; ++lane) {
        const int n = first + lane;
        if (!(rounding[lane] * 0x1p-24f <= ProductNeeds<Set>::roundingShare * tolerance)) continue;
        // At the piston R is the root of a difference of nearly equal numbers.
        if (nearest[lane] < leastNearness * (a + most_[0][n] + b + most_[1][n])) continue;
        if (!(orderX[lane] < mostIntervalOrder && orderY[lane] < mostIntervalOrder)) continue;
        const HalvedRule<Set> ruleX{{piston_.rules, orderOf(orderX[lane])}, most_[0][n] == 0},
            ruleY{{piston_.rules, orderOf(orderY[lane])}, most_[1][n] == 0};
        if (isFaster(n, ruleX, ruleY)) addProduct(n, ruleX, ruleY);
      }
    }
  }

  /// Whether the product rule is faster than the integrals along the edges, which have about the
  /// same orders.
  PISTONFIELD_HOST_DEVICE bool isFaster(int n, const HalvedRule<Set>& ruleX,
                                        const HalvedRule<Set>& ruleY) const {
    const auto a = static_cast<float>(halfSides_[0]), b = static_cast<float>(halfSides_[1]);
    const int edgesAlongX = ruleY.halves ? 1 : 2, edgesAlongY = ruleX.halves ? 1 : 2;
    auto nodes = static_cast<float>(edgesAlongX * ruleX.nodes() + edgesAlongY * ruleY.nodes());
    // The integrals nearly cancel each other; a quarter of their rounding errors.
    const float rounding = (a + most_[0][n]) * b + (b + most_[1][n]) * a;
    if (rounding * 40 * 0x1p-24f > leastZ_[n] * roundingShare * tolerance_ * mostIntervals)
      nodes *= 4;
    return static_cast<float>(ruleX.nodes() * ruleY.nodes()) < nodes + 4;
  }

  PISTONFIELD_HOST_DEVICE void addProduct(int n, const HalvedRule<Set>& ruleX,
                                          const HalvedRule<Set>& ruleY) {
    isProduct_[n] = true;
    used_.single = true;
    noteOrder(ruleX.rule.order);
    noteOrder(ruleY.rule.order);
    used_.nodes += ruleX.nodes() * ruleY.nodes() * Single::lanes;
    const W x = lateral_[0][n], y = lateral_[1][n], z = z_[n], square = x * x + (y * y + z * z);
    delay_[n] = squareRoot(square);
    const auto value =
        productSum<Set>(static_cast<float>(halfSides_[0]), static_cast<float>(halfSides_[1]),
                        x.rounded(), y.rounded(), delay_[n].rounded(), ruleX, ruleY);
    // `pressure` multiplies by −i/π.
    const Single factor(static_cast<float>(pi));
    sum_[n] = {-factor * value.im, factor * value.re};
  }

  /// The range of a magnitude among the points of a pack.
  struct Range {
    float least, most;
  };

  /// Plans two parallel edges (Interval::across). Near edges on which the foot of the perpendicular
  /// lies are divided there, where the integrand is steepest.
  PISTONFIELD_HOST_DEVICE void planEdges(int n, int across) {
    const Range u{least_[across][n], most_[across][n]},
        v{least_[1 - across][n], most_[1 - across][n]};
    const auto a = static_cast<float>(halfSides_[across]),
               b = static_cast<float>(halfSides_[1 - across]);
    const float rounding = 1e-6f;
    const float beside =
        u.least - a > a - u.most ? u.least - a : a - u.most;  // from the nearer edge's line
    const Range far{a + u.least, a + u.most};
    const Range near{beside - rounding * a > 0 ? beside - rounding * a : 0,
                     (u.most - a > a - u.least ? u.most - a : a - u.least) + rounding * a};
    const int times = u.most > 0 ? 1 : 2;  // both edges are equal
    planEdge({n, across, 1, Part::WHOLE, 0, 1, times, 0}, far, v, b);
    if (times == 1) planEdge({n, across, -1, Part::WHOLE, 0, 1, times, 0}, near, v, b);
  }

  PISTONFIELD_HOST_DEVICE void planEdge(Interval edge, Range d, Range v, float b) {
    const float least = v.least - b, most = v.most + b;
    if (piston_.order > 0 ? v.least > b : (least >= 0 || isFar(edge.pack, d.least, 2 * b, most)))
      return propose(edge, d, {least, most}, 2 * b);
    const int times = edge.times;
    edge.part = Part::AHEAD;
    if (v.most == 0) edge.times = 2 * times;  // the other part is equal
    propose(edge, d, {least > 0 ? least : 0, most}, most < 2 * b ? most : 2 * b);
    if (v.most == 0) return;
    edge.part = Part::BEHIND;
    edge.times = times;
    propose(edge, d, {0, b - v.least}, b - v.least);
  }

  /// Whether an interval is short enough, compared with its distance and the wavelength, not to be
  /// divided at the foot.
  PISTONFIELD_HOST_DEVICE bool isFar(int n, float d, float length, float end) const {
    const float rho2 = d * d + leastZ_[n] * leastZ_[n];
    const float changeTimesR = length * end;  // of the phase along the interval, in turns, at most
    return rho2 >= 0.14f * length * length && 2 * rho2 >= changeTimesR * changeTimesR;
  }

  PISTONFIELD_HOST_DEVICE void propose(const Interval& interval, Range d, Range ends,
                                       float length) {
    leastD_[proposals_] = d.least;
    mostD_[proposals_] = d.most;
    zs_[proposals_] = leastZ_[interval.pack];
    leastFrom_[proposals_] = ends.least;
    mostTo_[proposals_] = ends.most;
    length_[proposals_] = length;
    proposed_[proposals_++] = interval;
    if constexpr (packs > 1)  // one point never has more
      if (proposals_ == mostProposals) decide();
  }

  /// Decides on the proposed intervals, one a lane.
  PISTONFIELD_HOST_DEVICE void decide() {
    for (int n = 0; n < proposals_ && piston_.order > 0; ++n)
      keep(proposed_[n], piston_.order, mostD_[n] + mostTo_[n] < mostTurns);
    for (int first = 0; first < proposals_ && piston_.order == 0; first += Single::lanes) {
      const auto all = [&](const float* values) { return Single::load(values + first); };
      const IntervalNeeds<Set> needs(
          {all(leastD_), all(mostD_), all(zs_), all(leastFrom_), all(mostTo_), all(length_)},
          Single(quadratureShare * tolerance_));
      float magnitude[Single::lanes], nodes[Single::lanes], rounding[Single::lanes];
      needs.magnitude.store(magnitude);
      needs.order.store(nodes);
      (needs.rounding + needs.ends).store(rounding);
      for (int n = 0; n < Single::lanes && first + n < proposals_; ++n) {
        const Interval& interval = proposed_[first + n];
        if (magnitude[n] <= tolerance_) continue;
        const bool isBesideEdge = leastD_[first + n] < leastSingleD;
        if (nodes[n] <= mostSimpleOrder && !isBesideEdge && mayRound(interval, rounding[n]))
          keep(interval, orderOf(nodes[n]), true);
        else
          addDifficult(interval);
      }
    }
    proposals_ = 0;
  }

  /// Whether an interval may be evaluated in single precision, with this rounding error in its
  /// units. If so, it is added to those of the pack: they may take half of the share together.
  PISTONFIELD_HOST_DEVICE bool mayRound(const Interval& interval, float rounding) {
    const float error = static_cast<float>(interval.times) * rounding * 0x1p-24f;
    if (!(singleRounding_[interval.pack] + error <= 0.5f * mostRounding())) return false;
    singleRounding_[interval.pack] += error;
    return true;
  }

  /// The largest rounding error of the sum at a point.
  PISTONFIELD_HOST_DEVICE float mostRounding() const {
    return roundingShare * tolerance_ * mostIntervals;
  }

  PISTONFIELD_HOST_DEVICE static int orderOf(float need) {
    return static_cast<int>(need + 0.9999f);
  }

  /// Decides on an interval from its bounds at each point. If it needs too many nodes, it is
  /// divided; where a branch point is the reason, so that the part next to it is short.
  PISTONFIELD_HOST_DEVICE void addDifficult(Interval interval) {
    Pending pending[mostPending];
    float tolerance = tolerance_;
    for (int left = 0;;) {
      const Ends ends = endsOf(interval);
      const Single d = absolute(distance(interval).rounded()), from = ends.from.rounded(),
                   to = ends.to.rounded(), length = (ends.to - ends.from).rounded();
      const IntervalNeeds<Set> needs({d, d, singleZ_[interval.pack], from, to, length},
                                     Single(quadratureShare * tolerance));
      const float oscillation = largest(needs.oscillation), need = largest(needs.order);
      const bool steep = need > mostSimpleOrder && need > 1.5f * oscillation;
      if (largest(needs.magnitude) <= tolerance) {
        // It is left out.
      } else if (!steep && need <= mostIntervalOrder - 1) {
        const bool isBesideEdge = any((Single(0.0f) < d) & (d < Single(leastSingleD)));
        const bool single =
            !isBesideEdge && mayRound(interval, largest(needs.rounding + needs.ends));
        // In double precision, neighbouring intervals share their ends.
        if (!single)
          preciseRounding_[interval.pack] +=
              static_cast<float>(interval.times) * largest(needs.rounding) * 0x1p-53f;
        // Leaves room for all of a group that are not divided.
        if (singles_ >= mostUndivided || precises_ == mostUndivided) evaluateIntervals();
        keep(interval, orderOf(need), single);
      } else if (left == mostPending) {
        used_.excess = 1e300;
        return;
      } else {
        // The steep part is decided on last, so that few are pending however often it is divided.
        tolerance /= 2;
        Pending& first = pending[left++];
        first = {interval.first, interval.last, interval.part, tolerance};
        if (interval.part == Part::WHOLE && smallest(from) < 0) {
          first.part = Part::AHEAD;
          interval.part = Part::BEHIND;
        } else {
          interval.first += (interval.last - interval.first) * (steep ? 0.25 : 0.5);
          first.last = interval.first;
        }
        continue;
      }
      if (left == 0) return;
      const Pending& next = pending[--left];
      interval.first = next.first;
      interval.last = next.last;
      interval.part = next.part;
      tolerance = next.tolerance;
    }
  }

  PISTONFIELD_HOST_DEVICE void keep(const Interval& interval, int order, bool single) {
    noteOrder(order);
    used_.nodes += order * Single::lanes;
    Interval& kept = single ? single_[singles_++] : precise_[precises_++];
    kept = interval;
    kept.order = order;
  }

  PISTONFIELD_HOST_DEVICE void noteOrder(int order) {
    if (order < used_.leastOrder) used_.leastOrder = order;
    if (order > used_.mostOrder) used_.mostOrder = order;
  }

  PISTONFIELD_HOST_DEVICE void evaluateIntervals() {
    used_.single |= singles_ > 0;
    used_.precise |= precises_ > 0;
    for (int i = 0; i < singles_; ++i) {
      const Interval& part = single_[i];
      const Ends ends = endsOf(part);
      const auto value =
          intervalSum(distance(part).rounded(), singleZ_[part.pack], ends.from.rounded(),
                      ends.to.rounded(), IntervalRule<Set>(piston_.rules, part.order));
      sum_[part.pack] = multiplyAdd(Single(static_cast<float>(part.times)), value, sum_[part.pack]);
    }
    for (int i = 0; i < precises_; ++i) {
      const Interval& part = precise_[i];
      const Ends ends = endsOf(part);
      const W d = distance(part), z = z_[part.pack], times(static_cast<double>(part.times));
      const IntervalRule<typename Set::Double> rule(piston_.preciseRules, part.order);
      const ComplexPair<W> value =
          W::mappedToPairs([&](auto dOf, auto zOf, auto from,
                               auto to) { return intervalSum(dOf, zOf, from, to, rule); },
                           d, z, ends.from, ends.to);
      ComplexPair<W>& sum = preciseSum_[part.pack];
      if (!hasPrecise_[part.pack]) sum = {W(0.0), W(0.0)};
      hasPrecise_[part.pack] = true;
      sum = {sum.re + times * value.re, sum.im + times * value.im};
    }
    singles_ = precises_ = 0;
  }

  /// −i/π·exp(−ik·path), by which the sum is multiplied: of the path's fraction of a wavelength,
  /// from the sine and cosine of half the phase.
  template <class V>
  PISTONFIELD_HOST_DEVICE static ComplexPair<V> factor(V fractionOfPath) {
    using Value = typename V::Value;
    const auto [sine, cosine] = sineCosine(fractionOfPath);
    return {V(Value(-2 / pi)) * (sine * cosine),
            V(Value(-1 / pi)) * (cosine * cosine - sine * sine)};
  }

  PISTONFIELD_HOST_DEVICE ComplexPair<W> pressure(int n) const {
    const ComplexPair<Single>& single = sum_[n];
    const W phase = fractionOf(delay_[n]);
    if (!hasPrecise_[n]) {
      const ComplexPair<Single> E = factor(phase.rounded());
      return {W(E.re * single.re - E.im * single.im), W(E.re * single.im + E.im * single.re)};
    }
    const auto [re, im] = W::mappedToPairs([](auto part) { return factor(part); }, phase);
    const W sumRe = preciseSum_[n].re + W(single.re), sumIm = preciseSum_[n].im + W(single.im);
    return {re * sumRe - im * sumIm, re * sumIm + im * sumRe};
  }

  /// Notes how much a pressure of this magnitude is uncertain, since the coordinates in the
  /// piston's own axes are within some units of their last place. The error of all of them turns
  /// the phase. Besides, that of x changes the pressure by the integrals of 1/(λR) along the edges
  /// that are parallel to y, and that of y by those along the others.
  PISTONFIELD_HOST_DEVICE void notePositionError(int n, Single magnitude) {
    const Single x = lateral_[0][n].rounded(), y = lateral_[1][n].rounded(),
                 distance = singleZ_[n] + x + y,
                 relative(static_cast<float>(piston_.relativeShift)),
                 absolute(static_cast<float>(piston_.shift)),
                 shift = multiplyAdd(distance, relative, absolute);
    Single error = Single(static_cast<float>(2 * pi)) * magnitude * shift;
    // Below this, it does not matter where the edges are: an integral is at most 2·ln(1 +
    // length/R).
    constexpr float mostOfEdges = 600;
    const float roughly = mostOfEdges * largest(shift);
    if (roughly < negligibleShare * static_cast<float>(piston_.tolerance))
      error = error + Single(roughly);
    else
      for (int across : {0, 1}) {
        const Single along = piston_.isTurned ? distance
                             : across == 0    ? x
                                              : y,
                     shiftAcross = multiplyAdd(along, relative, absolute);
        error = multiplyAdd(shiftAcross, alongEdges(n, across, shiftAcross), error);
      }
    if (const float most = largest(error); most > positionError_) positionError_ = most;
  }

  /// A bound of ∫ dσ/R along two parallel edges, for points that are within `shift` of where they
  /// should be.
  PISTONFIELD_HOST_DEVICE Single alongEdges(int n, int across, Single shift) const {
    const W lateral = lateral_[across][n], half(halfSides_[across]);
    return alongEdge(n, across, absolute(lateral - half).rounded(), shift) +
           alongEdge(n, across, (lateral + half).rounded(), shift);
  }

  PISTONFIELD_HOST_DEVICE Single alongEdge(int n, int across, Single aside, Single shift) const {
    const auto half = static_cast<float>(halfSides_[1 - across]);
    const Single beyond = larger(lateral_[1 - across][n].rounded() - Single(half), Single(0.0f));
    const Single square =
        multiplyAdd(aside, aside, multiplyAdd(beyond, beyond, singleZ_[n] * singleZ_[n]));
    const Single distance = larger(rootEstimate(larger(square, Single(1e-36f))), shift);
    const Single ratio = Single(2 * half) * inverseEstimate(larger(distance, Single(1e-18f)));
    constexpr float ln2 = 0.693148f;
    return smaller(ratio, Single(2 * ln2) * log2Above(Single(1.0f) + ratio)) * Single(1.01f);
  }

  PISTONFIELD_HOST_DEVICE void addPressure(int n, double* re, double* im) {
    if (piston_.order == 0) {
      const auto excess =
          static_cast<double>((singleRounding_[n] + preciseRounding_[n]) / mostRounding());
      if (excess > used_.excess) used_.excess = excess;
    }
    ComplexPair<W> p = pressure(n);
    Single magnitude = absolute(p.re.rounded()) + absolute(p.im.rounded());
    if (anyLess(signedZ_[n], W(0.0))) {
      const W share = shareBehind(n);
      p.re = p.re + share * planeWave(n);
      magnitude = magnitude + Single(2.0f) * share.rounded();
    }
    notePositionError(n, magnitude);
    const W weightRe(piston_.weightRe), weightIm(piston_.weightIm);
    (W::load(re) + (weightRe * p.re - weightIm * p.im)).store(re);
    (W::load(im) + (weightRe * p.im + weightIm * p.re)).store(im);
  }

  /// The share of the plane around the point's projection that the piston covers, where z < 0.
  PISTONFIELD_HOST_DEVICE W shareBehind(int n) const {
    return step(lateral_[0][n], W(halfSides_[0])) * step(lateral_[1][n], W(halfSides_[1])) *
           step(signedZ_[n], W(0.0));
  }

  /// 2·sin(k|z|), which the field behind the piston has in addition.
  PISTONFIELD_HOST_DEVICE W planeWave(int n) const {
    return W::mapped(
        [](auto phase) {
          const auto [sine, cosine] = sineCosine(phase);
          return decltype(phase)(4.0) * (sine * cosine);
        },
        fractionOf(z_[n]));
  }

  const WeightedPiston& piston_;
  Used& used_;
  const double halfSides_[2];
  const float tolerance_;  // of an integral I of IntervalOrder.h: p = i/2π·Σ I
  float positionError_ = 0;
  int proposals_ = 0, singles_ = 0, precises_ = 0;

  // The points of a group of packs in the piston's own axes, and their sums.
  W lateral_[2][packs];  // |x| and |y|
  W signedZ_[packs], z_[packs];
  W delay_[packs];  // a length: the path by which the sums are delayed
  ComplexPair<W> preciseSum_[packs];
  Single singleZ_[packs];
  ComplexPair<Single> sum_[packs];
  float least_[2][packs] = {}, most_[2][packs] = {}, leastZ_[packs] = {};
  // Bounds of the rounding errors of a pack's intervals.
  float singleRounding_[packs] = {}, preciseRounding_[packs] = {};
  bool isProduct_[packs] = {}, hasPrecise_[packs] = {};

  // Intervals that are decided on together, with their bounds.
  float leastD_[mostProposals] = {}, mostD_[mostProposals] = {}, zs_[mostProposals] = {},
        leastFrom_[mostProposals] = {}, mostTo_[mostProposals] = {}, length_[mostProposals] = {};
  Interval proposed_[mostProposals];

  // Intervals to evaluate in single and in double precision.
  Interval single_[2 * mostUndivided], precise_[mostUndivided];
};

}  // namespace pistonfield
