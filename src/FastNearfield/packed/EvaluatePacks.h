#pragma once

#include <cstddef>

#include "FastNearfield/PackedPressure.h"
#include "emulation/Lanes.h"

// Evaluates points in packs of lanes.
//
// For a pair of edges a point takes one integral beyond their ends and two between them, and a pack
// takes two as soon as one of its lanes does. So points are first sorted by their case, and then
// evaluated case by case, in chains of packs, each started in the last nodes of the one before.
// Where chains do not pay, neighbours that are alike are evaluated where they stand, and the others
// pack by pack.
//
// Nothing here may be a function that other files share: theirs could become this file's, with
// instructions that not every machine has.

namespace pistonfield {

/// `ModerateSet` evaluates points whose numbers are moderate: as `secondQuotient` wants them.
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
    if (count_ <= 0) return;
    // A pack is gathered by reading a number more than a point has. There is none after the last
    // one: its pack is not gathered.
    int rest = (count_ - 1) / Pack::count * Pack::count;
    for (int first = 0, last = 0; first < rest; first = last) {
      last = rest - first < block ? rest : first + block;
      for (int n = first; n < last; n += Pack::count) evaluateOrSort(n);
      ahead_ = last;
      evaluateSorted();
    }
    if (count_ - rest == Pack::count) {
      evaluateOrSort(rest);
      rest = count_;
    }
    for (const Places& places : ofCase_) others_.append(places);
    for (; rest < count_; ++rest) others_.append(rest);
    evaluateOthers(others_.count);
  }

 private:
  using Pack = emulation::Lanes<Set>;
  using ModeratePack = emulation::Lanes<ModerateSet>;
  using Mask = emulation::LaneMask<Set>;
  static constexpr unsigned allLanes = ~0u >> (32 - Pack::count);

  /// After so many points those that were sorted are evaluated, while they are in the cache. Their
  /// places take 21 kB of a stack of 64 kB, which is the least that a thread may have.
  static constexpr int block = 1024;

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

  /// Where points stand in the list.
  struct Places {
    /// Of lanes, given as bits, of the points that stand at `first` and after.
    void append(int first, unsigned lanes) {
      Set::storePlaces(of + count, lanes, first);
      count += __builtin_popcount(lanes);
    }
    void append(int place) { of[count++] = place; }
    void append(const Places& places) {
      for (int n = 0; n < places.count; ++n) append(places.of[n]);
    }

    int whole() const { return count - count % Pack::count; }

    /// Leaves what is no whole pack.
    void dropWhole() {
      const int first = whole();
      if (first == 0) return;
      __builtin_memcpy(of, of + first, sizeof(int) * Pack::count);
      count -= first;
    }

    // Less than a pack is left of the block before, and a whole register is written.
    int of[block + 2 * Pack::count];
    int count = 0;
  };

  const float* point(std::ptrdiff_t n) const { return positions_ + 3 * n; }

  static Points load(const float* positions) {
    Pack x, y, z;
    Set::loadTriples(positions, x.value, y.value, z.value);
    return {absolute(x), absolute(y), z};
  }
  Points gather(const int* places) const {
    Pack x, y, z;
    Set::gatherTriples(positions_, places, x.value, y.value, z.value);
    return {absolute(x), absolute(y), z};
  }

  /// Fetches one more pack of the next block, so that sorting that need not wait for memory.
  void fetchAhead() {
    if (ahead_ > count_ - Pack::count) return;
    constexpr int floatsACacheLine = 16;
    for (int n = 0; n < 3 * Pack::count; n += floatsACacheLine)
      __builtin_prefetch(point(ahead_) + n);
    ahead_ += Pack::count;
  }

  Mask splitX(const Points& points) const { return footSplits<float>(points.u, Pack(a_)); }
  Mask splitY(const Points& points) const { return footSplits<float>(points.v, Pack(b_)); }

  /// A pack of points that stand at `first` and after.
  void evaluateOrSort(int first) {
    const Points points = load(point(first));
    const unsigned x = splitX(points).bits(), y = splitY(points).bits();
    const unsigned known = moderate(points).bits();
    const bool alike = (x == 0 || x == allLanes) && (y == 0 || y == allLanes);
    if (!Set::chainsPay && alike && known == allLanes)
      return evaluateAlike((x & 1) + (y & 2), points, pressures_ + first);
    ofCase_[0].append(first, known & ~x & ~y);
    ofCase_[1].append(first, known & x & ~y);
    ofCase_[2].append(first, known & ~x & y);
    ofCase_[3].append(first, known & x & y);
    if (known != allLanes) others_.append(first, allLanes & ~known);
  }

  // Points are moderate that lie neither in the planes through the edges nor too far from the
  // piston for its phase, nor for its sides, in a unit in which |k| is at least 2^-10 and lengths
  // go up to 2^20: metres or millimetres, say. Then no interval is empty, a node's D is at least
  // the square of the point's distance from those planes, and R − z at least 2^-61. The sine of
  // half its phase is 0 or at least 2^-72: below half a turn since R − z is so long; above, no
  // phase of so few turns has been met that comes nearer to a whole number of half turns.

  Mask moderate(const Points& points) const {
    const Pack nearX = points.u - Pack(a_), nearY = points.v - Pack(b_), least(0x1p-40f);
    const Pack length = multiplyAdd(Pack(2.0f), absolute(points.z), points.u + points.v);
    return (length <= Pack(moderateReach_)) & (least <= nearX * nearX) & (least <= nearY * nearY);
  }

  /// How far |x| + |y| + 2·|z| may go: at most 0 for a piston or a rule of no moderate numbers.
  static float moderateReach(float a, float b, float k, const SymmetricRule<float>& rule) {
    if (rule.N < 2) return -1;
    for (int i = 0; i < rule.N / 2; ++i)
      if (!(-1 <= rule.x[i] && rule.x[i] <= 1)) return -1;
    const float wavenumber = k < 0 ? -k : k;
    if (!(a >= 0 && b >= 0 && wavenumber >= 0x1p-10f)) return -1;
    const float ofPhase = 0x1p21f / wavenumber, ofSides = 0x1p22f * (a < b ? a : b);
    const float reach = ofPhase < ofSides ? ofPhase : ofSides;
    return (reach < 0x1p20f ? reach : 0x1p20f) - (a + b);
  }

  // What is known of a case needs no masks, and no branches.
  using Lane = ModeratePack;
  using All = AllLanes<Lane>;
  using None = NoLane<Lane>;
  template <class SplitX, class SplitY>
  using Integrals = PointIntegrals<NearHalfAngleIntegrand, Lane, SplitX, SplitY, float>;

  template <class SplitX, class SplitY>
  __attribute__((always_inline)) Integrals<SplitX, SplitY> integralsOf(const Points& points) const {
    return {{Lane::of(points.u.value), Lane::of(points.v.value), Lane::of(points.z.value), {}, {}},
            a_,
            b_,
            wave_};
  }

  void evaluateAlike(unsigned index, const Points& points, Complex* pressures) const {
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
    const ComplexPair<Lane> p = integralsOf<SplitX, SplitY>(points).pressureOfKnown(rule_);
    Set::storePairs(&pressures->re, p.re.value, p.im.value);
  }

  /// Whole packs only.
  void evaluateSorted() {
    evaluateCase<None, None>(ofCase_[0]);
    evaluateCase<All, None>(ofCase_[1]);
    evaluateCase<None, All>(ofCase_[2]);
    evaluateCase<All, All>(ofCase_[3]);
    evaluateOthers(others_.whole());
    for (Places& places : ofCase_) places.dropWhole();
    others_.dropWhole();
  }

  template <class SplitX, class SplitY>
  __attribute__((noinline)) void evaluateCase(const Places& places) {
    const int whole = places.whole();
    if (whole == 0) return;
    if constexpr (Set::chainsPay)
      evaluateChain<SplitX, SplitY>(places.of, whole);
    else
      evaluateEach<SplitX, SplitY>(places.of, whole);
  }

  template <class SplitX, class SplitY>
  __attribute__((always_inline)) void evaluateEach(const int* places, int count) {
    for (int n = 0; n < count; n += Pack::count) {
      fetchAhead();
      const ComplexPair<Lane> p =
          integralsOf<SplitX, SplitY>(gather(places + n)).pressureOfKnown(rule_);
      scatter(p.re.value, p.im.value, places + n, Pack::count);
    }
  }

  template <class SplitX, class SplitY>
  __attribute__((always_inline)) void evaluateChain(const int* places, int count) {
    Points points = gather(places);
    Nodes<Lane> nodes = integralsOf<SplitX, SplitY>(points).startedNodes(rule_);
    for (int n = 0; n < count; n += Pack::count) {
      fetchAhead();
      auto integrals = integralsOf<SplitX, SplitY>(points);
      // The last one starts itself again, in vain: cheaper than a second copy of all this.
      const int next = n + Pack::count < count ? n + Pack::count : n;
      const ComplexPair<Lane> p = integrals.pressureOfKnown(
          rule_, nodes, [&]() __attribute__((always_inline)) {
            points = gather(places + next);
            return integralsOf<SplitX, SplitY>(points);
          });
      scatter(p.re.value, p.im.value, places + n, Pack::count);
    }
  }

  /// Those of no case, and what is left of each case.
  __attribute__((noinline)) void evaluateOthers(int count) const {
    for (int first = 0; first < count; first += Pack::count) {
      const int left = count - first < Pack::count ? count - first : Pack::count;
      float positions[3 * Pack::count] = {};
      for (int n = 0; n < left; ++n)
        __builtin_memcpy(positions + 3 * n, point(others_.of[first + n]), 3 * sizeof(float));
      const Points points = load(positions);
      const MirroredPoint<Pack, Mask, Mask> mixed{points.u, points.v, points.z, splitX(points),
                                                  splitY(points)};
      const ComplexPair<Pack> p = PointIntegrals<HalfAngleIntegrand, Pack, Mask, Mask, float>(
                                      mixed, a_, b_, HalfPhase<Pack>(k_))
                                      .pressure(rule_);
      scatter(p.re.value, p.im.value, others_.of + first, left);
    }
  }

  void scatter(typename Set::Register re, typename Set::Register im, const int* places,
               int count) const {
    Complex pressures[Pack::count];
    Set::storePairs(&pressures->re, re, im);
    for (int n = 0; n < count; ++n) pressures_[places[n]] = pressures[n];
  }

  const float* const positions_;
  Complex* const pressures_;
  const int count_;
  const float a_, b_, k_;
  const HalfPhase<ModeratePack> wave_;
  const float moderateReach_;
  const Rule rule_;
  Places ofCase_[4], others_;
  int ahead_ = 0;  // the first point that has not been fetched
};

template <class Set, class ModerateSet = Set>
void evaluatePacks(const float* positions, Complex* pressures, int count, float a, float b, float k,
                   const SymmetricRule<float>& rule) {
  PackEvaluation<Set, ModerateSet>(positions, pressures, count, a, b, k, rule).run();
}

}  // namespace pistonfield
