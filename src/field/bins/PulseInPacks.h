#pragma once

#include <cstddef>

#include "field/bins/BinsInPacks.h"
#include "field/bins/PulseNeeds.h"

namespace pistonfield {

/// Adds a piston to the bins of a group of points. Every interval of an edge has its own order,
/// that which the point in greatest need requires.
template <class Set>
class TimedPistonInPacks {
 public:
  TimedPistonInPacks(const PulseOrders& orders, const TimedPiston& piston, const Bins& bins,
                     Arrivals& arrivals)
      : orders_(orders),
        piston_(piston),
        bins_(bins),
        arrivals_(arrivals),
        halfSides_{piston.halfWidth, piston.halfHeight} {}

  void add(const double* x, const double* y, const double* z) {
    load(x, y, z);
    if (!arrives()) return;
    planEdges(0);
    planEdges(1);
    decide();
    addPlaneWaves();
  }

 private:
  using Single = Pack<Set>;
  using Double = typename Set::Double;
  using V = Pack<Double>;
  static constexpr double pi = 3.14159265358979323846;
  static constexpr int mostOrder = 64;        // of the rules; intervals that need more are divided
  static constexpr int mostSimpleOrder = 17;  // above, bounds at each point pay
  static constexpr int mostPending = 48;

  /// The parts of an edge that are integrated: all of it; or from the foot of the perpendicular, or
  /// from its nearer end, to its farther end, and from the foot to its nearer end.
  enum class Part { WHOLE, AHEAD, BEHIND };

  struct Interval {
    double first, last;  ///< what is integrated of the part, from 0 to 1
    int across;          ///< 0: an edge along y, at the distance halfWidth ± |x|; 1: along x
    int side;            ///< +1 for the farther of the two edges, −1 for the nearer one
    Part part;
    float tolerance;
  };

  struct Ends {
    V from, to;
  };

  struct Range {
    float least, most;
  };

  static V larger0(V x) { return larger(x, V(0.0)); }

  void load(const double* x, const double* y, const double* z) {
    for (int n = 0; n < pulsePoints; n += V::lanes) {
      const V dx = V::load(x + n) - V(piston_.centre[0]),
              dy = V::load(y + n) - V(piston_.centre[1]),
              dz = V::load(z + n) - V(piston_.centre[2]);
      const auto along = [&](const double* axis) {
        return V(axis[0]) * dx + (V(axis[1]) * dy + V(axis[2]) * dz);
      };
      const V u = absolute(along(piston_.axes[0])), v = absolute(along(piston_.axes[1])),
              w = along(piston_.axes[2]), depth = absolute(w), zz = depth * depth;
      const V besideU = larger0(u - V(halfSides_[0])), besideV = larger0(v - V(halfSides_[1])),
              farU = u + V(halfSides_[0]), farV = v + V(halfSides_[1]);
      const V delay = V(piston_.delay);
      const V near = squareRoot(besideU * besideU + (besideV * besideV + zz)),
              far = squareRoot(farU * farU + (farV * farV + zz));
      u.store(lateral_[0] + n);
      v.store(lateral_[1] + n);
      depth.store(z_ + n);
      w.store(signedZ_ + n);
      near.store(near_ + n);
      far.store(far_ + n);
      (delay - V(bins_.origin) + depth).store(base_ + n);
      V(0.0).store(plane_ + n);
    }
    for (int axis = 0; axis < 2; ++axis) ranges_[axis] = rangeOf(lateral_[axis]);
    leastZ_ = rangeOf(z_).least;
  }

  static Range rangeOf(const double* values) {
    double least = values[0], most = values[0];
    for (int n = 1; n < pulsePoints; ++n) {
      least = values[n] < least ? values[n] : least;
      most = values[n] > most ? values[n] : most;
    }
    return {static_cast<float>(least), static_cast<float>(most)};
  }

  /// How much of the plane wave there is in front of the piston or behind it: half on an edge.
  double coverage(int n) const {
    double covered = 1;
    for (int axis = 0; axis < 2; ++axis)
      covered *= lateral_[axis][n] < halfSides_[axis]    ? 1
                 : lateral_[axis][n] == halfSides_[axis] ? 0.5
                                                         : 0;
    return covered;
  }

  bool isBehind(int n) const { return signedZ_[n] < 0 && coverage(n) > 0; }

  /// Notes when waves arrive. Returns whether any wave arrives within the bins.
  bool arrives() {
    bool any = false;
    for (int n = 0; n < pulsePoints; ++n) {
      const double shift = base_[n] - z_[n], front = isBehind(n) ? signedZ_[n] : near_[n],
                   least = shift + (front < z_[n] ? front : z_[n]), most = shift + far_[n];
      if (most < -binsOfNode || least > bins_.count + binsOfNode) continue;
      any = true;
      const auto lower = [](double& to, double value) { to = value < to ? value : to; };
      const auto raise = [](double& to, double value) { to = value > to ? value : to; };
      lower(arrivals_.first[n], shift + front + bins_.origin);
      raise(arrivals_.last[n], most + bins_.origin);
      lower(arrivals_.least[n], least);
      raise(arrivals_.most[n], most);
    }
    return any;
  }

  Ends endsOf(const Interval& interval, int n) const {
    const V along = V::load(lateral_[1 - interval.across] + n),
            half(halfSides_[1 - interval.across]), foot(0.0);
    Ends ends{along - half, along + half};
    if (interval.part == Part::AHEAD) ends.from = larger(ends.from, foot);
    if (interval.part == Part::BEHIND) ends = {foot, larger(foot - ends.from, foot)};
    const V length = ends.to - ends.from;
    if (interval.last < 1) ends.to = ends.from + length * V(interval.last);
    if (interval.first > 0) ends.from = ends.from + length * V(interval.first);
    return ends;
  }

  V distance(const Interval& interval, int n) const {
    return V(halfSides_[interval.across]) +
           V(static_cast<double>(interval.side)) * V::load(lateral_[interval.across] + n);
  }

  /// Plans two parallel edges. Near edges on which the foot of the perpendicular lies are divided
  /// there, where the integrand is steepest.
  void planEdges(int across) {
    const Range u = ranges_[across], v = ranges_[1 - across];
    const auto a = static_cast<float>(halfSides_[across]),
               b = static_cast<float>(halfSides_[1 - across]);
    const float rounding = 1e-6f * a;
    const float beside = u.least - a > a - u.most ? u.least - a : a - u.most,
                beyond = u.most - a > a - u.least ? u.most - a : a - u.least;
    planEdge({0, 1, across, 1, Part::WHOLE, piston_.tolerance}, {a + u.least, a + u.most}, v, b);
    planEdge({0, 1, across, -1, Part::WHOLE, piston_.tolerance},
             {beside > rounding ? beside - rounding : 0, beyond + rounding}, v, b);
  }

  void planEdge(Interval edge, Range d, Range v, float b) {
    const float least = v.least - b, most = v.most + b;
    if (least >= 0 || isFar(d.least, 2 * b, most)) return propose(edge, d, {least, most}, 2 * b);
    edge.part = Part::AHEAD;
    propose(edge, d, {least > 0 ? least : 0, most}, most < 2 * b ? most : 2 * b);
    edge.part = Part::BEHIND;
    propose(edge, d, {0, b - v.least}, b - v.least);
  }

  /// Whether an interval is short enough, compared with its distance and the waves, not to be
  /// divided at the foot.
  bool isFar(float d, float length, float end) const {
    const float rho2 = d * d + leastZ_ * leastZ_;
    // of the phase along the interval at the mean frequency, in turns, at most
    const float changeTimesR = length * end * 0.16f * orders_.slope / orders_.mass;
    return rho2 >= 0.14f * length * length && 2 * rho2 >= changeTimesR * changeTimesR;
  }

  void propose(const Interval& interval, Range d, Range ends, float length) {
    const int n = proposals_++;
    bounds_.leastD[n] = d.least;
    bounds_.mostD[n] = d.most;
    bounds_.leastZ[n] = leastZ_;
    bounds_.leastFrom[n] = ends.least;
    bounds_.mostTo[n] = ends.most;
    bounds_.mostLength[n] = length;
    proposed_[n] = interval;
  }

  /// Decides on the proposed intervals: there are at most eight.
  void decide() {
    for (int n = proposals_; n < PulseIntervals::most; ++n)
      bounds_.leastD[n] = bounds_.mostD[n] = bounds_.leastZ[n] = bounds_.leastFrom[n] =
          bounds_.mostTo[n] = bounds_.mostLength[n] = 1;
    const PulseNeeds<Set> needs(bounds_, proposals_, piston_.tolerance, orders_);
    for (int n = 0; n < proposals_; ++n) {
      if (needs.magnitude[n] <= piston_.tolerance) continue;
      if (needs.order[n] <= mostSimpleOrder)
        evaluate(proposed_[n], orderOf(needs.order[n]));
      else
        addDifficult(proposed_[n]);
    }
  }

  static int orderOf(float need) { return static_cast<int>(need + 0.9999f); }

  /// Decides on an interval from its bounds at each point. If it needs too many nodes, it is
  /// divided; where a branch point is the reason, so that the part next to it is short.
  void addDifficult(Interval interval) {
    Interval pending[mostPending];
    for (int left = 0;;) {
      setBounds(interval);
      const PulseNeeds<Set> needs(bounds_, pulsePoints, interval.tolerance, orders_);
      const float oscillation = mostOf(needs.oscillation), need = mostOf(needs.order);
      const bool steep = need > mostSimpleOrder && need > 1.5f * oscillation;
      if (mostOf(needs.magnitude) > interval.tolerance) {
        if (!steep && need <= mostOrder - 1) {
          evaluate(interval, orderOf(need));
        } else if (left == mostPending) {
          arrivals_.isLost = true;
          return;
        } else {
          // The steep part is decided on last, so that few are pending however often it is divided.
          interval.tolerance /= 2;
          const double middle =
              interval.first + (steep ? 0.25 : 0.5) * (interval.last - interval.first);
          pending[left] = interval;
          pending[left++].last = middle;
          interval.first = middle;
          continue;
        }
      }
      if (left == 0) return;
      interval = pending[--left];
    }
  }

  void setBounds(const Interval& interval) {
    alignas(64) double d[pulsePoints], from[pulsePoints], to[pulsePoints];
    for (int n = 0; n < pulsePoints; n += V::lanes) {
      const Ends ends = endsOf(interval, n);
      absolute(distance(interval, n)).store(d + n);
      ends.from.store(from + n);
      ends.to.store(to + n);
    }
    for (int n = 0; n < pulsePoints; ++n) {
      if (from[n] + to[n] < 0) {  // its mirror image, whose farther end is ahead
        const double farther = -from[n];
        from[n] = -to[n];
        to[n] = farther;
      }
      bounds_.leastD[n] = bounds_.mostD[n] = static_cast<float>(d[n]);
      bounds_.leastZ[n] = static_cast<float>(z_[n]);
      bounds_.leastFrom[n] = static_cast<float>(from[n]);
      bounds_.mostTo[n] = static_cast<float>(to[n]);
      bounds_.mostLength[n] = static_cast<float>(to[n] - from[n]);
    }
  }

  /// Infinite if one is not a number.
  static float mostOf(const float* values) {
    float most = 0;
    for (int n = 0; n < pulsePoints; ++n)
      if (!(values[n] <= most)) most = values[n] >= 0 ? values[n] : 3e38f;
    return most;
  }

  /// Adds the nodes of the rule of so many nodes. R − z = D/(R + z) loses no digits.
  void evaluate(const Interval& interval, int order) {
    const int least = orders_.rules.least, first = (order * (order - 1) - least * (least - 1)) / 2;
    const double *const fromStart = orders_.rules.fromStart + first, *const weights =
                                                                         orders_.rules.w + first;
    const double factor = -piston_.weight / (2 * pi);
    for (int n = 0; n < pulsePoints; n += V::lanes) {
      const Ends ends = endsOf(interval, n);
      const V d = distance(interval, n), h = (ends.to - ends.from) * V(0.5), z = V::load(z_ + n),
              zz = z * z, dd = larger(d * d, V(1e-200)), dh = V(factor) * d * h,
              base = V::load(base_ + n) - V(0.5);
      V plane = V::load(plane_ + n);
      for (int j = 0; j < order; ++j) {
        const V sigma = multiplyAdd(V(fromStart[j]), h, ends.from),
                D = multiplyAdd(sigma, sigma, dd);
        const V beyond = squareRoot(zz + D) + z, inverse = quotient(V(1.0), D * beyond);
        const V weight = dh * V(weights[j]) * (beyond * inverse);
        plane = plane - weight;
        addNodes(n, multiplyAdd(D, D * inverse, base), weight);
      }
      plane.store(plane_ + n);
    }
    arrivals_.nodes += order * pulsePoints;
  }

  /// Adds a node to the bins of each point of a pack. A time x is given as x − 1/2.
  void addNodes(int n, V time, V weight) {
    constexpr double integers = 0x1.8p52;  // so large that a sum with it is an integer
    const V bin = (time + V(integers)) - V(integers), place = time - bin + V(0.5);
    alignas(64) double bins[V::lanes], places[V::lanes], weights[V::lanes];
    bin.store(bins);
    place.store(places);
    weight.store(weights);
    for (int lane = 0; lane < V::lanes; ++lane)
      addNodeTo(n + lane, bins[lane], places[lane], weights[lane]);
  }

  void addNodeTo(int n, double bin, double place, double weight) {
    if (!(bin >= binsOfNode && bin < bins_.count - binsOfNode)) return;
    addNode<Double>(place, weight,
                    bins_.values + std::ptrdiff_t{n} * bins_.count + static_cast<int>(bin) - 3);
  }

  void addPlaneWaves() {
    for (int n = 0; n < pulsePoints; ++n) {
      const double shift = base_[n] - z_[n];
      double weight = plane_[n];
      if (isBehind(n)) {
        const double jump = piston_.weight * coverage(n);
        addAt(n, shift + signedZ_[n], jump);
        weight -= jump;
      }
      addAt(n, base_[n], weight);
    }
  }

  void addAt(int n, double time, double weight) {
    if (!(time >= 0 && time < bins_.count)) return;
    const int bin = static_cast<int>(time);
    addNodeTo(n, bin, time - bin, weight);
  }

  /// Of the points: |x| and |y|, |z| and z in the piston's axes; the nearest and the farthest
  /// distance of the piston; the bin of a wave from the foot of the point; the plane wave's weight.
  alignas(64) double lateral_[2][pulsePoints], z_[pulsePoints], signedZ_[pulsePoints],
      near_[pulsePoints], far_[pulsePoints], base_[pulsePoints], plane_[pulsePoints];
  PulseIntervals bounds_;
  Interval proposed_[PulseIntervals::most];
  const PulseOrders& orders_;
  const TimedPiston& piston_;
  const Bins& bins_;
  Arrivals& arrivals_;
  const double halfSides_[2];
  Range ranges_[2];
  float leastZ_;
  int proposals_ = 0;
};

template <class Set>
void addTimedPiston(const PulseOrders& orders, const TimedPiston& piston, const double* x,
                    const double* y, const double* z, const Bins& bins, Arrivals& arrivals) {
  TimedPistonInPacks<Set>(orders, piston, bins, arrivals).add(x, y, z);
}

template <class Set>
constexpr PulseFunctions pulseFunctionsOf = {addTimedPiston<Set>,
                                             convolvePulse<typename Set::Double>};

}  // namespace pistonfield
