#pragma once

#include <cstddef>

#include "FastNearfield/PackedPressure.h"
#include "emulation/Lanes.h"

// Evaluates points in packs of lanes.
//
// For a pair of edges a point takes one integral beyond their ends and two between them, and a pack
// takes two as soon as one of its lanes does. Neighbours are mostly alike, and are evaluated where
// they stand; points of packs whose lanes differ are first collected by their case.
//
// Nothing here may be a function that other files share: theirs could become this file's, with
// instructions that not every machine has.

namespace pistonfield {

/// `ModerateSet` evaluates packs of points of one case whose numbers are moderate: as
/// `secondQuotient` wants them.
template <class Set, class ModerateSet>
class PackEvaluation {
 public:
  PackEvaluation(const float* positions, Complex* pressures, int count, float a, float b, float k,
                 const SymmetricRule<float>& rule)
      : positions_(positions),
        pressures_(pressures),
        count_(count),
        a_(a),
        b_(b),
        k_(k),
        wave_(k),
        moderateReach_(moderateReach(a, b, k, rule)),
        rule_(rule) {}

  void run() {
    const int packed = count_ - count_ % Pack::count;
    for (int first = 0, last = 0; first < packed; first = last) {
      last = packed - first < block ? packed : first + block;
      for (int n = first; n < last; n += Pack::count) {
        const Points points = load(point(n));
        const Cases cases = casesOf(points);
        if (cases.alike())
          evaluate(cases.index(), points, pressures_ + n);
        else
          collect(points, cases, n, allLanes);
      }
      for (int index = 0; index < 4; ++index) evaluateCollected(index);
    }
    if (packed < count_) collectRest(packed);
    evaluateRests();
  }

 private:
  using Pack = emulation::Lanes<Set>;
  using ModeratePack = emulation::Lanes<ModerateSet>;
  using Mask = emulation::LaneMask<Set>;
  static constexpr unsigned allLanes = ~0u >> (32 - Pack::count);

  /// After so many points those that were collected are evaluated, while they are in the cache.
  static constexpr int block = 2048;

  /// A SymmetricRule with its distances from the ends computed: a register is filled with a number
  /// from memory at no cost, but not with a sum. Its own function for them is one that files share.
  struct Rule {
    explicit Rule(const SymmetricRule<float>& rule) : w(rule.w), N(rule.N) {
      for (int i = 0; i < N / 2; ++i) fromEnds[i] = 1 + rule.x[i];
    }
    float fromEnd(int i) const { return fromEnds[i]; }

    const float* w;
    int N;
    float fromEnds[mostPackedNodes / 2];
  };

  /// Points mirrored to where x and y are not negative.
  struct Points {
    Pack u, v, z;
  };

  /// Points with the places of their pressures. Whole registers are written, so there is room for
  /// one more pack.
  template <int most>
  struct Collected {
    static constexpr int room = most + Pack::count;

    Points pack(int n) const { return {Pack::load(u + n), Pack::load(v + n), Pack::load(z + n)}; }

    /// Some lanes of points that stand at `first` and after.
    void append(const Points& points, int first, unsigned lanes) {
      const auto choice = Set::choice(lanes);
      Set::storeChosen(u + count, choice, points.u.value);
      Set::storeChosen(v + count, choice, points.v.value);
      Set::storeChosen(z + count, choice, points.z.value);
      Set::storePlaces(places + count, choice, first);
      count += __builtin_popcount(lanes);
    }

    template <int other>
    void append(const Collected<other>& points) {
      for (int n = 0; n < points.count; ++n, ++count) {
        u[count] = points.u[n];
        v[count] = points.v[n];
        z[count] = points.z[n];
        places[count] = points.places[n];
      }
    }

    /// Leaves those from `first` on, a pack at most.
    void dropBefore(int first) {
      if (first == 0) return;
      for (float* const values : {u, v, z})
        __builtin_memcpy(values, values + first, sizeof(float) * Pack::count);
      __builtin_memcpy(places, places + first, sizeof(int) * Pack::count);
      count -= first;
    }

    /// The lanes of the last pack that have no point get the origin.
    void close() {
      for (float* const values : {u, v, z}) Pack(0.0f).store(values + count);
    }

    float u[room], v[room], z[room];
    int places[room];
    int count = 0;
  };

  using CollectedOfCase = Collected<block + Pack::count>;

  /// The lanes that take two integrals, for the edges along each direction.
  struct Cases {
    unsigned x, y;
    bool alike() const { return (x == 0 || x == allLanes) && (y == 0 || y == allLanes); }
    /// Of lanes that are alike.
    int index() const { return static_cast<int>((x & 1) + 2 * (y & 1)); }
  };

  const float* point(std::ptrdiff_t n) const { return positions_ + 3 * n; }

  static Points load(const float* positions) {
    Pack x, y, z;
    Set::loadTriples(positions, x.value, y.value, z.value);
    return {absolute(x), absolute(y), z};
  }

  Mask splitX(const Points& points) const { return footSplits<float>(points.u, Pack(a_)); }
  Mask splitY(const Points& points) const { return footSplits<float>(points.v, Pack(b_)); }
  Cases casesOf(const Points& points) const {
    return {splitX(points).bits(), splitY(points).bits()};
  }

  /// For packs of one case. What is known before needs no masks, and makes a branch less.
  void evaluate(int index, const Points& points, Complex* pressures) const {
    if (!moderate(points)) return evaluateAny(points, pressures);
    using All = AllLanes<ModeratePack>;
    using None = NoLane<ModeratePack>;
    switch (index) {
      case 0:
        return evaluateAlike<None, None>(points, pressures);
      case 1:
        return evaluateAlike<All, None>(points, pressures);
      case 2:
        return evaluateAlike<None, All>(points, pressures);
      default:
        return evaluateAlike<All, All>(points, pressures);
    }
  }

  template <class SplitX, class SplitY>
  __attribute__((noinline)) void evaluateAlike(const Points& points, Complex* pressures) const {
    using Lane = ModeratePack;
    const MirroredPoint<Lane, SplitX, SplitY> point{
        Lane::of(points.u.value), Lane::of(points.v.value), Lane::of(points.z.value), {}, {}};
    const ComplexPair<Lane> p = pointPressure<NearHalfAngleIntegrand>(point, a_, b_, wave_, rule_);
    Set::storePairs(&pressures->re, p.re.value, p.im.value);
  }

  /// For any pack.
  __attribute__((noinline)) void evaluateAny(const Points& points, Complex* pressures) const {
    const MirroredPoint<Pack, Mask, Mask> point{points.u, points.v, points.z, splitX(points),
                                                splitY(points)};
    const ComplexPair<Pack> p =
        pointPressure<HalfAngleIntegrand>(point, a_, b_, HalfPhase<Pack>(k_), rule_);
    Set::storePairs(&pressures->re, p.re.value, p.im.value);
  }

  // Points are moderate that lie neither in the planes through the edges nor too far from the
  // piston for its phase, in a unit in which |k| is at least 2^-10 and lengths go up to 2^20:
  // metres or millimetres, say. Then a node's D is at least the square of the point's distance from
  // those planes, and R − z at least 2^-61. The sine of half its phase is 0 or at least 2^-72:
  // below half a turn since R − z is so long, and above since no phase of so few turns is so near
  // to a whole number of half turns.

  bool moderate(const Points& points) const {
    const Pack nearX = points.u - Pack(a_), nearY = points.v - Pack(b_), least(0x1p-40f);
    const Pack length = multiplyAdd(Pack(2.0f), absolute(points.z), points.u + points.v);
    const auto lanes =
        (length <= Pack(moderateReach_)) & (least <= nearX * nearX) & (least <= nearY * nearY);
    return lanes.bits() == allLanes;
  }

  /// How far |x| + |y| + 2·|z| may go: less than 0 for a piston or a rule of no moderate numbers.
  static float moderateReach(float a, float b, float k, const SymmetricRule<float>& rule) {
    for (int i = 0; i < rule.N / 2; ++i)
      if (!(-1 <= rule.x[i] && rule.x[i] <= 1)) return -1;
    const float wavenumber = k < 0 ? -k : k;
    if (!(a >= 0 && b >= 0 && wavenumber >= 0x1p-10f)) return -1;
    const float reach = 0x1p21f / wavenumber;
    return (reach < 0x1p20f ? reach : 0x1p20f) - (a + b);
  }

  /// Collects points that stand at `first` and after.
  void collect(const Points& points, Cases cases, int first, unsigned lanes) {
    collected_[0].append(points, first, ~cases.x & ~cases.y & lanes);
    collected_[1].append(points, first, cases.x & ~cases.y & lanes);
    collected_[2].append(points, first, ~cases.x & cases.y & lanes);
    collected_[3].append(points, first, cases.x & cases.y & lanes);
  }

  /// The points that fill no pack.
  void collectRest(int first) {
    float positions[3 * Pack::count] = {};
    const int count = count_ - first;
    __builtin_memcpy(positions, point(first), 3 * sizeof(float) * unsigned(count));
    const Points points = load(positions);
    collect(points, casesOf(points), first, allLanes >> (Pack::count - count));
  }

  /// All of a case but those that fill no pack yet.
  void evaluateCollected(int index) {
    auto& points = collected_[index];
    int n = 0;
    for (; n + Pack::count <= points.count; n += Pack::count) {
      Complex pressures[Pack::count];
      evaluate(index, points.pack(n), pressures);
      scatter(pressures, points.places + n, Pack::count);
    }
    points.dropBefore(n);
  }

  /// Those that fill no pack of their case.
  void evaluateRests() {
    Collected<4 * Pack::count> rests;
    for (int index = 0; index < 4; ++index) {
      evaluateCollected(index);
      rests.append(collected_[index]);
    }
    rests.close();
    for (int n = 0; n < rests.count; n += Pack::count) {
      Complex pressures[Pack::count];
      evaluateAny(rests.pack(n), pressures);
      const int left = rests.count - n;
      scatter(pressures, rests.places + n, left < Pack::count ? left : Pack::count);
    }
  }

  void scatter(const Complex* pressures, const int* places, int count) const {
    for (int n = 0; n < count; ++n) pressures_[places[n]] = pressures[n];
  }

  const float* const positions_;
  Complex* const pressures_;
  const int count_;
  const float a_, b_, k_;
  const HalfPhase<ModeratePack> wave_;
  const float moderateReach_;
  const Rule rule_;
  CollectedOfCase collected_[4];
};

template <class Set, class ModerateSet = Set>
void evaluatePacks(const float* positions, Complex* pressures, int count, float a, float b, float k,
                   const SymmetricRule<float>& rule) {
  PackEvaluation<Set, ModerateSet>(positions, pressures, count, a, b, k, rule).run();
}

}  // namespace pistonfield
