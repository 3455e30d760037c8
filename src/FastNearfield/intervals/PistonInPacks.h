#pragma once

#include "FastNearfield/intervals/IntervalOrder.h"
#include "FastNearfield/intervals/IntervalSum.h"
#include "FastNearfield/intervals/PistonOnPoints.h"
#include "FastNearfield/intervals/ProductRule.h"

namespace pistonfield {

/// A pack in double precision: its lower and its upper half.
template <class Set>
struct Wide {
  using Half = Pack<typename Set::Double>;

  Wide() = default;
  explicit Wide(double everywhere) : low(everywhere), high(low) {}
  Wide(Half lowHalf, Half highHalf) : low(lowHalf), high(highHalf) {}
  explicit Wide(Pack<Set> x)
      : low(Half::of(Set::lower(x.value))), high(Half::of(Set::upper(x.value))) {}

  static Wide load(const double* from) {
    return {Half::load(from), Half::load(from + Half::lanes)};
  }
  void store(double* to) const {
    low.store(to);
    high.store(to + Half::lanes);
  }

  Pack<Set> rounded() const { return Pack<Set>::of(Set::joined(low.value, high.value)); }

  Half low, high;
};

template <class Set>
Wide<Set> operator+(Wide<Set> x, Wide<Set> y) {
  return {x.low + y.low, x.high + y.high};
}
template <class Set>
Wide<Set> operator-(Wide<Set> x, Wide<Set> y) {
  return {x.low - y.low, x.high - y.high};
}
template <class Set>
Wide<Set> operator*(Wide<Set> x, Wide<Set> y) {
  return {x.low * y.low, x.high * y.high};
}
template <class Set>
Wide<Set> absolute(Wide<Set> x) {
  return {absolute(x.low), absolute(x.high)};
}
template <class Set>
Wide<Set> larger(Wide<Set> x, Wide<Set> y) {
  return {larger(x.low, y.low), larger(x.high, y.high)};
}
template <class Set>
bool anyLess(Wide<Set> x, Wide<Set> y) {
  return any(x.low < y.low) || any(x.high < y.high);
}
/// 1 where x < y, 1/2 where x = y, 0 elsewhere.
template <class Set>
Wide<Set> step(Wide<Set> x, Wide<Set> y) {
  const auto half = [](auto a, auto b) {
    using H = decltype(a);
    return select(a < b, H(1.0), select(a == b, H(0.5), H(0.0)));
  };
  return {half(x.low, y.low), half(x.high, y.high)};
}

/// Adds the field of a piston at points. Every interval of an edge has its own order and precision,
/// those that the point in greatest need requires.
///
/// The intervals of a group of packs are planned first and evaluated then: what is planned decides
/// how long loops are, and a processor that had to wait for it would stand still.
template <class Set>
class PistonInPacks {
 public:
  PistonInPacks(const WeightedPiston& piston, Used& used)
      : piston_(piston),
        used_(used),
        halfSides_{piston.halfWidth, piston.halfHeight},
        tolerance_(static_cast<float>(piston.tolerance * 2 * pi / mostIntervals)) {}

  void add(const double* x, const double* y, const double* z, int count, double* re, double* im) {
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
  using Half = typename W::Half;
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
  static constexpr int packs = 16, mostIntervals = 8, queueLength = 128;

  /// The parts of an edge that are integrated: all of it; or from the foot of the perpendicular, or
  /// from its nearer end, to its farther end, and from the foot to its nearer end.
  enum class Part { WHOLE, AHEAD, BEHIND };

  /// An interval of an edge for a pack of points, which counts `times` times.
  struct Interval {
    int pack;
    int across;   ///< 0: an edge along y, at the distance halfWidth ± |x|; 1: along x
    double side;  ///< +1 for the farther of the two edges, −1 for the nearer one
    Part part;
    double first, last;  ///< what is integrated of the part, from 0 to 1
    int times, order;
  };

  struct Ends {
    W from, to;
  };

  W distance(const Interval& interval) const {
    return W(halfSides_[interval.across]) +
           W(interval.side) * lateral_[interval.across][interval.pack];
  }

  Ends endsOf(const Interval& interval) const {
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

  void load(int n, const double* x, const double* y, const double* z) {
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
    phase_[n] = z_[n];
    singleZ_[n] = z_[n].rounded();
    isProduct_[n] = false;
    sum_[n] = {Single(0.0f), Single(0.0f)};
    hasPrecise_[n] = false;
    singleRounding_[n] = preciseRounding_[n] = 0;
    for (int axis : {0, 1}) {
      const Single lateral = lateral_[axis][n].rounded();
      least_[axis][n] = smallest(lateral);
      most_[axis][n] = largest(lateral);
    }
    leastZ_[n] = smallest(singleZ_[n]);
  }

  /// Evaluates packs by a product of rules where that takes the least time.
  void planProducts(int loaded) {
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
  bool isFaster(int n, const HalvedRule<Set>& ruleX, const HalvedRule<Set>& ruleY) const {
    const auto a = static_cast<float>(halfSides_[0]), b = static_cast<float>(halfSides_[1]);
    const int edgesAlongX = ruleY.halves ? 1 : 2, edgesAlongY = ruleX.halves ? 1 : 2;
    auto nodes = static_cast<float>(edgesAlongX * ruleX.nodes() + edgesAlongY * ruleY.nodes());
    // The integrals nearly cancel each other; a quarter of their rounding errors.
    const float rounding = (a + most_[0][n]) * b + (b + most_[1][n]) * a;
    if (rounding * 40 * 0x1p-24f > leastZ_[n] * roundingShare * tolerance_ * mostIntervals)
      nodes *= 4;
    return static_cast<float>(ruleX.nodes() * ruleY.nodes()) < nodes + 4;
  }

  void addProduct(int n, const HalvedRule<Set>& ruleX, const HalvedRule<Set>& ruleY) {
    isProduct_[n] = true;
    used_.single = true;
    for (const HalvedRule<Set>* rule : {&ruleX, &ruleY}) {
      used_.leastOrder = rule->rule.order < used_.leastOrder ? rule->rule.order : used_.leastOrder;
      used_.mostOrder = rule->rule.order > used_.mostOrder ? rule->rule.order : used_.mostOrder;
    }
    used_.nodes += ruleX.nodes() * ruleY.nodes() * Single::lanes;
    const W x = lateral_[0][n], y = lateral_[1][n], z = z_[n], square = x * x + (y * y + z * z);
    phase_[n] = W(squareRoot(square.low), squareRoot(square.high));
    const auto value =
        productSum<Set>(static_cast<float>(halfSides_[0]), static_cast<float>(halfSides_[1]),
                        x.rounded(), y.rounded(), phase_[n].rounded(), ruleX, ruleY);
    // `pressure` multiplies by −i/π.
    const Single factor(static_cast<float>(pi));
    sum_[n] = {-factor * value.im, factor * value.re};
  }

  /// The range of a magnitude among the points of a pack.
  struct Range {
    float least, most;
  };

  /// Plans two parallel edges. Near edges on which the foot of the perpendicular lies are divided
  /// there, where the integrand is steepest.
  void planEdges(int n, int across) {
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

  void planEdge(Interval edge, Range d, Range v, float b) {
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
  bool isFar(int n, float d, float length, float end) const {
    const float rho2 = d * d + leastZ_[n] * leastZ_[n];
    const float changeTimesR = length * end;  // of the phase along the interval, in turns, at most
    return rho2 >= 0.14f * length * length && 2 * rho2 >= changeTimesR * changeTimesR;
  }

  void propose(const Interval& interval, Range d, Range ends, float length) {
    if (piston_.order > 0) return keep(interval, piston_.order, d.most + ends.most < mostTurns);
    leastD_[proposals_] = d.least;
    mostD_[proposals_] = d.most;
    zs_[proposals_] = leastZ_[interval.pack];
    leastFrom_[proposals_] = ends.least;
    mostTo_[proposals_] = ends.most;
    length_[proposals_] = length;
    proposed_[proposals_++] = interval;
    if (proposals_ == Single::lanes) decide();
  }

  /// Decides on the proposed intervals, one a lane.
  void decide() {
    const auto all = [](const float* values) { return Single::load(values); };
    const IntervalNeeds<Set> needs(
        {all(leastD_), all(mostD_), all(zs_), all(leastFrom_), all(mostTo_), all(length_)},
        Single(quadratureShare * tolerance_));
    float magnitude[Single::lanes], nodes[Single::lanes], rounding[Single::lanes];
    needs.magnitude.store(magnitude);
    needs.order.store(nodes);
    (needs.rounding + needs.ends).store(rounding);
    for (int n = 0; n < proposals_; ++n) {
      if (magnitude[n] <= tolerance_) continue;
      const bool isBesideEdge = leastD_[n] < leastSingleD;
      if (nodes[n] <= 17 && !isBesideEdge && mayRound(proposed_[n], rounding[n]))
        keep(proposed_[n], orderOf(nodes[n]), true);
      else
        addDifficult(proposed_[n], tolerance_);
    }
    proposals_ = 0;
  }

  /// Whether an interval may be evaluated in single precision, with this rounding error in its
  /// units. If so, it is added to those of the pack: they may take half of the share together.
  bool mayRound(const Interval& interval, float rounding) {
    const float error = static_cast<float>(interval.times) * rounding * 0x1p-24f;
    if (!(singleRounding_[interval.pack] + error <= 0.5f * mostRounding())) return false;
    singleRounding_[interval.pack] += error;
    return true;
  }

  /// The largest rounding error of the sum at a point.
  float mostRounding() const { return roundingShare * tolerance_ * mostIntervals; }

  static int orderOf(float need) { return static_cast<int>(need + 0.9999f); }

  /// Decides on an interval from its bounds at each point. If it needs too many nodes, it is
  /// divided; where a branch point is the reason, so that the part next to it is short.
  void addDifficult(const Interval& interval, float tolerance) {
    const Ends ends = endsOf(interval);
    const Single d = absolute(distance(interval).rounded()), from = ends.from.rounded(),
                 to = ends.to.rounded(), length = (ends.to - ends.from).rounded();
    const IntervalNeeds<Set> needs({d, d, singleZ_[interval.pack], from, to, length},
                                   Single(quadratureShare * tolerance));
    if (largest(needs.magnitude) <= tolerance) return;
    const float oscillation = largest(needs.oscillation), need = largest(needs.order);
    const bool steep = need > 17 && need > 1.5f * oscillation;
    if (steep || need > mostIntervalOrder - 1) {
      Interval first = interval, rest = interval;
      if (interval.part == Part::WHOLE && smallest(from) < 0) {
        first.part = Part::AHEAD;
        rest.part = Part::BEHIND;
      } else {
        first.last = rest.first =
            interval.first + (interval.last - interval.first) * (steep ? 0.25 : 0.5);
      }
      addDifficult(first, tolerance / 2);
      addDifficult(rest, tolerance / 2);
      return;
    }
    const bool isBesideEdge = any((Single(0.0f) < d) & (d < Single(leastSingleD)));
    const bool single = !isBesideEdge && mayRound(interval, largest(needs.rounding + needs.ends));
    // In double precision, neighbouring intervals share their ends.
    if (!single)
      preciseRounding_[interval.pack] +=
          static_cast<float>(interval.times) * largest(needs.rounding) * 0x1p-53f;
    keep(interval, orderOf(need), single);
  }

  void keep(const Interval& interval, int order, bool single) {
    if (order < used_.leastOrder) used_.leastOrder = order;
    if (order > used_.mostOrder) used_.mostOrder = order;
    used_.nodes += order * Single::lanes;
    if (singles_ == queueLength || precises_ == queueLength) evaluateIntervals();
    Interval& kept = single ? single_[singles_++] : precise_[precises_++];
    kept = interval;
    kept.order = order;
  }

  void evaluateIntervals() {
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
      const auto low = intervalSum(d.low, z.low, ends.from.low, ends.to.low, rule);
      const auto high = intervalSum(d.high, z.high, ends.from.high, ends.to.high, rule);
      ComplexPair<W>& sum = preciseSum_[part.pack];
      if (!hasPrecise_[part.pack]) sum = {W(0.0), W(0.0)};
      hasPrecise_[part.pack] = true;
      sum = {sum.re + times * W(low.re, high.re), sum.im + times * W(low.im, high.im)};
    }
    singles_ = precises_ = 0;
  }

  /// −i/π·exp(−ikz), by which the sum is multiplied, from z in wavelengths.
  template <class V>
  static ComplexPair<V> factor(V fractionOfZ) {
    using Value = typename V::Value;
    const auto [sine, cosine] = sineCosine(fractionOfZ);
    return {V(Value(-2 / pi)) * (sine * cosine),
            V(Value(-1 / pi)) * (cosine * cosine - sine * sine)};
  }

  ComplexPair<W> pressure(int n) const {
    const ComplexPair<Single>& single = sum_[n];
    const Half low = fractionOf(phase_[n].low), high = fractionOf(phase_[n].high);
    if (!hasPrecise_[n]) {
      const ComplexPair<Single> E = factor(W(low, high).rounded());
      return {W(E.re * single.re - E.im * single.im), W(E.re * single.im + E.im * single.re)};
    }
    const ComplexPair<Half> lowE = factor(low), highE = factor(high);
    const W re(lowE.re, highE.re), im(lowE.im, highE.im);
    const W sumRe = preciseSum_[n].re + W(single.re), sumIm = preciseSum_[n].im + W(single.im);
    return {re * sumRe - im * sumIm, re * sumIm + im * sumRe};
  }

  /// Notes how much a pressure of this magnitude is uncertain, since the coordinates in the
  /// piston's own axes are within some units of their last place. The error of all of them turns
  /// the phase. Besides, that of x changes the pressure by the integrals of 1/(λR) along the edges
  /// that are parallel to y, and that of y by those along the others.
  void notePositionError(int n, Single magnitude) {
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
  Single alongEdges(int n, int across, Single shift) const {
    const W lateral = lateral_[across][n], half(halfSides_[across]);
    return alongEdge(n, across, absolute(lateral - half).rounded(), shift) +
           alongEdge(n, across, (lateral + half).rounded(), shift);
  }

  Single alongEdge(int n, int across, Single aside, Single shift) const {
    const auto half = static_cast<float>(halfSides_[1 - across]);
    const Single beyond = larger(lateral_[1 - across][n].rounded() - Single(half), Single(0.0f));
    const Single square =
        multiplyAdd(aside, aside, multiplyAdd(beyond, beyond, singleZ_[n] * singleZ_[n]));
    const Single distance = larger(rootEstimate(larger(square, Single(1e-36f))), shift);
    const Single ratio = Single(2 * half) * inverseEstimate(larger(distance, Single(1e-18f)));
    constexpr float ln2 = 0.693148f;
    return smaller(ratio, Single(2 * ln2) * log2Above(Single(1.0f) + ratio)) * Single(1.01f);
  }

  void addPressure(int n, double* re, double* im) {
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

  /// The share of the plane around the foot that the piston covers, where z < 0.
  W shareBehind(int n) const {
    return step(lateral_[0][n], W(halfSides_[0])) * step(lateral_[1][n], W(halfSides_[1])) *
           step(signedZ_[n], W(0.0));
  }

  /// 2·sin(k|z|), which the field behind the piston has in addition.
  W planeWave(int n) const {
    const auto sine2 = [](Half z) {
      const auto [sine, cosine] = sineCosine(fractionOf(z));
      return Half(4.0) * (sine * cosine);
    };
    return W(sine2(z_[n].low), sine2(z_[n].high));
  }

  const WeightedPiston& piston_;
  Used& used_;
  const double halfSides_[2];
  const float tolerance_;  // of an integral
  float positionError_ = 0;
  int proposals_ = 0, singles_ = 0, precises_ = 0;

  // The points of a group of packs in the piston's own axes, and their sums.
  W lateral_[2][packs];  // |x| and |y|
  W signedZ_[packs], z_[packs];
  W phase_[packs];  // the path by which the sums are delayed
  ComplexPair<W> preciseSum_[packs];
  Single singleZ_[packs];
  ComplexPair<Single> sum_[packs];
  float least_[2][packs] = {}, most_[2][packs] = {}, leastZ_[packs] = {};
  // Bounds of the rounding errors of a pack's intervals.
  float singleRounding_[packs] = {}, preciseRounding_[packs] = {};
  bool isProduct_[packs] = {}, hasPrecise_[packs] = {};

  // Intervals that are decided on together, with their bounds.
  float leastD_[Single::lanes] = {}, mostD_[Single::lanes] = {}, zs_[Single::lanes] = {},
        leastFrom_[Single::lanes] = {}, mostTo_[Single::lanes] = {}, length_[Single::lanes] = {};
  Interval proposed_[Single::lanes] = {};

  // Intervals to evaluate in single and in double precision.
  Interval single_[queueLength] = {}, precise_[queueLength] = {};
};

}  // namespace pistonfield
