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
        wave_{static_cast<float>(piston.decay),
              static_cast<float>(std::sqrt(4 * pi * pi + piston.decay * piston.decay))},
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
      boundDecays(loaded);
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

  /// What is in the lanes.
  struct LaneValues {
    PISTONFIELD_HOST_DEVICE explicit LaneValues(Single pack) { pack.store(values); }
    PISTONFIELD_HOST_DEVICE float operator[](int lane) const { return values[lane]; }
    float values[Single::lanes];
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
    delay_[n] = decayPath_[n] = z_[n];
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

  /// Bounds how much waves decay on their way to each pack, at least: those of the integrals along
  /// the edges by their distance from the plane of the piston.
  PISTONFIELD_HOST_DEVICE void boundDecays(int loaded) {
    for (int first = 0; first < loaded; first += Single::lanes) {
      const LaneValues decayed(decayAbove(Single::load(leastZ_ + first), wave_));
      for (int lane = 0; lane < Single::lanes && first + lane < loaded; ++lane)
        setDecay(first + lane, decayed[lane]);
    }
  }

  /// Pressures at a pack are at most this part of what they are without loss.
  PISTONFIELD_HOST_DEVICE void setDecay(int n, float decayed) {
    decayed_[n] = decayed;
    tolerances_[n] = tolerance_ / decayed;
  }

  /// Evaluates packs by a product of rules where that takes the least time.
  PISTONFIELD_HOST_DEVICE void planProducts(int loaded) {
    if (isLossy())
      for (int n = 0; n < loaded; ++n) planLossyProduct(n);
    else
      planLosslessProducts(loaded);
  }

  /// The tolerance of a pressure.
  PISTONFIELD_HOST_DEVICE float pressureTolerance() const {
    return tolerance_ * static_cast<float>(mostIntervals / (2 * pi));
  }

  PISTONFIELD_HOST_DEVICE void planLosslessProducts(int loaded) {
    const auto a = static_cast<float>(halfSides_[0]), b = static_cast<float>(halfSides_[1]);
    const float tolerance = pressureTolerance(),
                mostRounding = ProductNeeds<Set>::roundingShare * tolerance;
    for (int first = 0; first < loaded; first += Single::lanes) {
      const auto all = [&](const float* values) { return Single::load(values + first); };
      const ProductNeeds<Set> needs(
          Single(a), Single(b),
          {all(least_[0]), all(most_[0]), all(least_[1]), all(most_[1]), all(leastZ_)},
          Single(tolerance));
      const LaneValues orderX(needs.orderX), orderY(needs.orderY), rounding(needs.rounding),
          nearest(needs.nearest);
      for (int lane = 0; lane < Single::lanes && first + lane < loaded; ++lane)
        if (rounding[lane] * 0x1p-24f <= mostRounding)
          considerProduct(first + lane, orderX[lane], orderY[lane], {nearest[lane], 1, true});
    }
  }

  /// From each point's own distance: waves may not have decayed alike, at some points completely.
  PISTONFIELD_HOST_DEVICE void planLossyProduct(int n) {
    const auto a = static_cast<float>(halfSides_[0]), b = static_cast<float>(halfSides_[1]);
    const float tolerance = pressureTolerance(),
                mostRounding = ProductNeeds<Set>::roundingShare * tolerance;
    const Single x = lateral_[0][n].rounded(), y = lateral_[1][n].rounded(), zero(0.0f),
                 distance = nearestOf(x, y, singleZ_[n]), decayed = decayAbove(distance, wave_),
                 magnitude = Single(4 * a * b) * inverseEstimate(distance) * decayed;
    const auto most = [&](Single bound) {
      return largest(select(magnitude < Single(0.25f * tolerance), zero, bound));
    };
    if (most(magnitude) == 0) return leaveOut(n, largest(decayed));
    const ProductNeeds<Set> needs(Single(a), Single(b), {x, x, y, y, singleZ_[n]},
                                  Single(tolerance) * inverseEstimate(decayed), wave_);
    const float rounding = most(needs.rounding * decayed);
    const bool single = rounding * 0x1p-24f <= mostRounding;
    if (single || rounding * 0x1p-53f <= mostRounding)
      considerProduct(n, most(needs.orderX), most(needs.orderY),
                      {smallest(needs.nearest), largest(decayed), single});
  }

  /// Sets the pressures at a pack to 0, where waves have decayed below the tolerance.
  PISTONFIELD_HOST_DEVICE void leaveOut(int n, float decayed) {
    isProduct_[n] = true;
    setDecay(n, decayed);
  }

  /// A lower bound of points' distance from the piston.
  PISTONFIELD_HOST_DEVICE Single nearestOf(Single x, Single y, Single z) const {
    const Single zero(0.0f),
        besideX = larger(x - Single(static_cast<float>(halfSides_[0])), zero),
        besideY = larger(y - Single(static_cast<float>(halfSides_[1])), zero),
        square = multiplyAdd(besideX, besideX, multiplyAdd(besideY, besideY, z * z));
    return rootEstimate(larger(square, Single(1e-30f))) * Single(1 - 0x1p-10f);
  }

  /// For the points of a pack.
  struct ProductBounds {
    float nearest;  ///< of the distances from the piston
    float decayed;  ///< of the decays (setDecay)
    bool single;    ///< whether the rule may be evaluated in single precision
  };

  /// Evaluates a pack by products of rules of these orders if that takes the least time.
  PISTONFIELD_HOST_DEVICE void considerProduct(int n, float orderX, float orderY,
                                               const ProductBounds& bounds) {
    const auto a = static_cast<float>(halfSides_[0]), b = static_cast<float>(halfSides_[1]);
    // At the piston R is the root of a difference of nearly equal numbers.
    if (bounds.nearest < leastNearness * (a + most_[0][n] + b + most_[1][n])) return;
    if (!(orderX < mostIntervalOrder && orderY < mostIntervalOrder)) return;
    const Product product{orderOf(orderX), orderOf(orderY), bounds.single};
    if (!isFaster(n, product, bounds.nearest)) return;
    setDecay(n, bounds.decayed);
    addProduct(n, product);
  }

  /// A product of rules, and whether it is evaluated in single precision.
  struct Product {
    int orderX, orderY;
    bool single;
  };

  /// The rules of a product. Both halves of a side are equal if all points are on the other axis.
  template <class S>
  PISTONFIELD_HOST_DEVICE HalvedRule<S> ruleAlong(int axis, GaussRuleTable<typename S::Value> rules,
                                                  int n, int order) const {
    return {{rules, order}, most_[axis][n] == 0};
  }

  /// Whether the product rule is faster than the integrals along the edges, which have about the
  /// same orders.
  PISTONFIELD_HOST_DEVICE bool isFaster(int n, const Product& product, float nearest) const {
    const auto ruleX = ruleAlong<Set>(0, piston_.rules, n, product.orderX),
               ruleY = ruleAlong<Set>(1, piston_.rules, n, product.orderY);
    const auto a = static_cast<float>(halfSides_[0]), b = static_cast<float>(halfSides_[1]);
    const int edgesAlongX = ruleY.halves ? 1 : 2, edgesAlongY = ruleX.halves ? 1 : 2;
    auto nodes = static_cast<float>(edgesAlongX * ruleX.nodes() + edgesAlongY * ruleY.nodes());
    // The integrals nearly cancel each other; a quarter of their rounding errors.
    const float rounding = 40 * ((a + most_[0][n]) * b + (b + most_[1][n]) * a),
                mostRounding = roundingShare * tolerances_[n] * mostIntervals;
    if (product.single && rounding * 0x1p-24f > leastZ_[n] * mostRounding) nodes *= 4;
    // To the side in a lossy medium they cancel completely: each of them decays as exp(−αz) only.
    if (isLossy() && 16 * rounding * 0x1p-53f > nearest * mostRounding) return true;
    return static_cast<float>(ruleX.nodes() * ruleY.nodes()) < nodes + 4;
  }

  PISTONFIELD_HOST_DEVICE void addProduct(int n, const Product& product) {
    isProduct_[n] = true;
    noteOrder(product.orderX);
    noteOrder(product.orderY);
    const W x = lateral_[0][n], y = lateral_[1][n], z = z_[n], square = x * x + (y * y + z * z);
    delay_[n] = squareRoot(square);
    decayPath_[n] = W(nearestOf(x.rounded(), y.rounded(), singleZ_[n]));
    const W beyond = delay_[n] - decayPath_[n];
    if (product.single) {
      used_.single = true;
      sum_[n] = productAt<Set>(n, product, piston_.rules, x.rounded(), y.rounded(),
                               delay_[n].rounded(), beyond.rounded());
    } else {
      used_.precise = hasPrecise_[n] = true;
      preciseSum_[n] = W::mappedToPairs(
          [&](auto atX, auto atY, auto C, auto beyondC) {
            return productAt<typename Set::Double>(n, product, piston_.preciseRules, atX, atY, C,
                                                   beyondC);
          },
          x, y, delay_[n], beyond);
    }
  }

  /// In the scale of the sums.
  template <class S>
  PISTONFIELD_HOST_DEVICE ComplexPair<Pack<S>> productAt(int n, const Product& product,
                                                         GaussRuleTable<typename S::Value> rules,
                                                         Pack<S> x, Pack<S> y, Pack<S> C,
                                                         Pack<S> beyond) {
    using Value = typename S::Value;
    const auto ruleX = ruleAlong<S>(0, rules, n, product.orderX),
               ruleY = ruleAlong<S>(1, rules, n, product.orderY);
    used_.nodes += ruleX.nodes() * ruleY.nodes() * Pack<S>::lanes;
    const auto a = static_cast<Value>(halfSides_[0]), b = static_cast<Value>(halfSides_[1]);
    // `pressure` multiplies by −i/π.
    const Pack<S> factor(static_cast<Value>(pi));
    if (!isLossy()) {
      const auto value = productSum<S>(a, b, x, y, C, ruleX, ruleY);
      return {-factor * value.im, factor * value.re};
    }
    const auto decay = static_cast<Value>(piston_.decay);
    const auto value = productSum<S, true>(a, b, x, y, C, ruleX, ruleY, decay, beyond);
    // k/2π = 1 − i·decay/2π
    const Pack<S> factorIm(decay / 2);
    return {-factor * value.im + factorIm * value.re, factor * value.re + factorIm * value.im};
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
    shares_[proposals_] = quadratureShare * tolerances_[interval.pack];
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
          all(shares_), wave_);
      float magnitude[Single::lanes], nodes[Single::lanes], rounding[Single::lanes];
      needs.magnitude.store(magnitude);
      needs.order.store(nodes);
      (needs.rounding + needs.ends).store(rounding);
      for (int n = 0; n < Single::lanes && first + n < proposals_; ++n) {
        const Interval& interval = proposed_[first + n];
        if (magnitude[n] <= tolerances_[interval.pack]) continue;
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
    if (!(singleRounding_[interval.pack] + error <= 0.5f * mostRounding(interval.pack)))
      return false;
    singleRounding_[interval.pack] += error;
    return true;
  }

  /// The largest rounding error of the sum at a point of a pack.
  PISTONFIELD_HOST_DEVICE float mostRounding(int n) const {
    return roundingShare * tolerances_[n] * mostIntervals;
  }

  PISTONFIELD_HOST_DEVICE static int orderOf(float need) {
    return static_cast<int>(need + 0.9999f);
  }

  /// Decides on an interval from its bounds at each point. If it needs too many nodes, it is
  /// divided; where a branch point is the reason, so that the part next to it is short.
  PISTONFIELD_HOST_DEVICE void addDifficult(Interval interval) {
    Pending pending[mostPending];
    float tolerance = tolerances_[interval.pack];
    // By how much more than elsewhere waves have decayed at each point of the pack.
    const Single more = isLossy() ? Single(decayed_[interval.pack]) *
                                        inverseEstimate(decayAbove(singleZ_[interval.pack], wave_))
                                  : Single(1.0f);
    for (int left = 0;;) {
      const Ends ends = endsOf(interval);
      const Single d = absolute(distance(interval).rounded()), from = ends.from.rounded(),
                   to = ends.to.rounded(), length = (ends.to - ends.from).rounded();
      const IntervalNeeds<Set> needs({d, d, singleZ_[interval.pack], from, to, length},
                                     Single(quadratureShare * tolerance) * more, wave_);
      // In a lossy wave, waves at some points of a pack may have decayed completely.
      const auto most = [&](Single bound) {
        if (!isLossy()) return largest(bound);
        const Single zero(0.0f);
        return largest(select(needs.magnitude <= Single(0.5f * tolerance) * more, zero, bound));
      };
      const float oscillation = most(needs.oscillation), need = most(needs.order);
      const bool steep = need > mostSimpleOrder && need > 1.5f * oscillation;
      if (most(needs.magnitude) <= tolerance) {
        // It is left out.
      } else if (!steep && need <= mostIntervalOrder - 1) {
        const bool isBesideEdge = any((Single(0.0f) < d) & (d < Single(leastSingleD)));
        const bool single = !isBesideEdge && mayRound(interval, most(needs.rounding + needs.ends));
        // In double precision, neighbouring intervals share their ends.
        if (!single)
          preciseRounding_[interval.pack] +=
              static_cast<float>(interval.times) * most(needs.rounding) * 0x1p-53f;
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
      const auto value = sumOf(distance(part).rounded(), singleZ_[part.pack], ends.from.rounded(),
                               ends.to.rounded(), IntervalRule<Set>(piston_.rules, part.order));
      sum_[part.pack] = multiplyAdd(Single(static_cast<float>(part.times)), value, sum_[part.pack]);
    }
    for (int i = 0; i < precises_; ++i) {
      const Interval& part = precise_[i];
      const Ends ends = endsOf(part);
      const W d = distance(part), z = z_[part.pack], times(static_cast<double>(part.times));
      const IntervalRule<typename Set::Double> rule(piston_.preciseRules, part.order);
      const ComplexPair<W> value = W::mappedToPairs(
          [&](auto dOf, auto zOf, auto from, auto to) { return sumOf(dOf, zOf, from, to, rule); },
          d, z, ends.from, ends.to);
      ComplexPair<W>& sum = preciseSum_[part.pack];
      if (!hasPrecise_[part.pack]) sum = {W(0.0), W(0.0)};
      hasPrecise_[part.pack] = true;
      sum = {sum.re + times * value.re, sum.im + times * value.im};
    }
    singles_ = precises_ = 0;
  }

  template <class V, class Rule>
  PISTONFIELD_HOST_DEVICE ComplexPair<V> sumOf(V d, V z, V from, V to, const Rule& rule) const {
    return isLossy() ? intervalSum<true>(d, z, from, to, rule, V(decayOf<V>()))
                     : intervalSum(d, z, from, to, rule);
  }

  template <class V>
  PISTONFIELD_HOST_DEVICE typename V::Value decayOf() const {
    return static_cast<typename V::Value>(piston_.decay);
  }

  PISTONFIELD_HOST_DEVICE bool isLossy() const { return piston_.decay > 0; }

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
    const ComplexPair<W> p = withoutDecay(n);
    if (!isLossy()) return p;
    const W decayed = exponential(W(-piston_.decay) * decayPath_[n]);
    return {decayed * p.re, decayed * p.im};
  }

  PISTONFIELD_HOST_DEVICE static W exponential(W x) {
    return W::mapped([](auto part) { return exponentialOf(part); }, x);
  }
  template <class DoubleSet>
  PISTONFIELD_HOST_DEVICE static Pack<DoubleSet> exponentialOf(Pack<DoubleSet> x) {
    return Exponential<DoubleSet>(x).value();
  }

  PISTONFIELD_HOST_DEVICE ComplexPair<W> withoutDecay(int n) const {
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
    Single error = Single(wave_.waveNumber) * magnitude * shift;
    // Below this, it does not matter where the edges are: an integral is at most 2·ln(1 +
    // length/R).
    constexpr float mostOfEdges = 600;
    const float roughly = mostOfEdges * largest(shift) * decayed_[n];
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
    return smaller(ratio, Single(2 * ln2) * log2Above(Single(1.0f) + ratio)) * Single(1.01f) *
           decayAbove(distance, wave_);
  }

  PISTONFIELD_HOST_DEVICE void addPressure(int n, double* re, double* im) {
    if (piston_.order == 0) {
      const auto excess =
          static_cast<double>((singleRounding_[n] + preciseRounding_[n]) / mostRounding(n));
      if (excess > used_.excess) used_.excess = excess;
    }
    ComplexPair<W> p = pressure(n);
    Single magnitude = absolute(p.re.rounded()) + absolute(p.im.rounded());
    if (anyLess(signedZ_[n], W(0.0))) {
      const W share = shareBehind(n);
      if (isLossy()) {
        if (anyLess(W(0.0), share * step(W(mostGrowth), W(piston_.decay) * z_[n])))
          used_.excess = 1e300;
        const ComplexPair<W> wave = growingWave(n);
        p = {p.re + share * wave.re, p.im + share * wave.im};
        magnitude = magnitude + (share * (absolute(wave.re) + absolute(wave.im))).rounded();
      } else {
        p.re = p.re + share * planeWave(n);
        magnitude = magnitude + Single(2.0f) * share.rounded();
      }
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

  /// The same with a complex k: 2·(sin(k|z|)·cosh(α|z|) − i·cos(k|z|)·sinh(α|z|)).
  PISTONFIELD_HOST_DEVICE ComplexPair<W> growingWave(int n) const {
    const W path = W(piston_.decay) * z_[n], grown = exponential(path),
            decayed = exponential(W(0.0) - path), phase = fractionOf(z_[n]);
    const auto [sine, cosine] = W::mappedToPairs(
        [](auto part) {
          const auto half = sineCosine(part);
          using V = decltype(part);
          return ComplexPair<V>{V(2.0) * half.sine * half.cosine,
                                half.cosine * half.cosine - half.sine * half.sine};
        },
        phase);
    return {sine * (grown + decayed), cosine * (decayed - grown)};
  }

  const WeightedPiston& piston_;
  Used& used_;
  const double halfSides_[2];
  const Wave wave_;
  const float tolerance_;  // of an integral I of IntervalOrder.h: p = i/2π·Σ I
  float positionError_ = 0;
  int proposals_ = 0, singles_ = 0, precises_ = 0;

  // The points of a group of packs in the piston's own axes, and their sums.
  W lateral_[2][packs];  // |x| and |y|
  W signedZ_[packs], z_[packs];
  // Lengths: the paths by which the sums are delayed, and on which they decay.
  W delay_[packs], decayPath_[packs];
  ComplexPair<W> preciseSum_[packs];
  Single singleZ_[packs];
  ComplexPair<Single> sum_[packs];
  float least_[2][packs] = {}, most_[2][packs] = {}, leastZ_[packs] = {};
  float decayed_[packs] = {}, tolerances_[packs] = {};  // setDecay
  // Bounds of the rounding errors of a pack's intervals.
  float singleRounding_[packs] = {}, preciseRounding_[packs] = {};
  bool isProduct_[packs] = {}, hasPrecise_[packs] = {};

  // Intervals that are decided on together, with their bounds.
  float leastD_[mostProposals] = {}, mostD_[mostProposals] = {}, zs_[mostProposals] = {},
        leastFrom_[mostProposals] = {}, mostTo_[mostProposals] = {}, length_[mostProposals] = {},
        shares_[mostProposals] = {};
  Interval proposed_[mostProposals];

  // Intervals to evaluate in single and in double precision.
  Interval single_[2 * mostUndivided], precise_[mostUndivided];
};

}  // namespace pistonfield
