#pragma once

#include <cstddef>
#include <type_traits>

#include "FastNearfield/PointPressure.h"
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

/// `ModerateSet` evaluates packs of points whose numbers are moderate: as `secondQuotient` wants
/// them.
template <class Set, class ModerateSet>
class PackEvaluation {
 public:
  /// As many points as are looked at together.
  static constexpr int capacity = 2048;

  PackEvaluation(const float* positions, Complex* pressures, int count, float a, float b, float k,
                 const SymmetricRule<float>& rule)
      : positions_(positions),
        pressures_(pressures),
        count_(count),
        a_(a),
        b_(b),
        k_(k),
        rule_(rule),
        moderateReach_(moderateReach(a, b, k, rule)) {}

  void run() {
    int first = 0;
    for (; first + Pack::count <= count_; first += Pack::count) {
      const Points points = load(point(first));
      const Cases cases = casesOf(points);
      if (cases.alike())
        evaluate(points, pressures_ + first);
      else
        collect(points, cases, first, allLanes);
    }
    if (first < count_) collectRest(first);
    evaluateCollected();
  }

 private:
  using Pack = emulation::Lanes<Set>;
  static constexpr unsigned allLanes = ~0u >> (32 - Pack::count);

  struct Points {
    Pack x, y, z;
  };

  /// Points with the places of their pressures. Whole registers are written, so there is room for
  /// one more pack.
  template <int most>
  struct Collected {
    static constexpr int room = most + Pack::count;

    Points pack(int n) const { return {Pack::load(x + n), Pack::load(y + n), Pack::load(z + n)}; }

    void append(const Points& points, Pack from, unsigned lanes) {
      Set::storeChosen(x + count, lanes, points.x.value);
      Set::storeChosen(y + count, lanes, points.y.value);
      Set::storeChosen(z + count, lanes, points.z.value);
      Set::storeChosen(places + count, lanes, from.value);
      count += __builtin_popcount(lanes);
    }

    /// The lanes of the last pack that have no point get the origin.
    void close() {
      const Pack zero(0.0f);
      zero.store(x + count);
      zero.store(y + count);
      zero.store(z + count);
    }

    float x[room], y[room], z[room], places[room];
    int count = 0;
  };

  /// The lanes that take two integrals, for the edges along each direction.
  struct Cases {
    unsigned u, v;
    bool alike() const { return (u == 0 || u == allLanes) && (v == 0 || v == allLanes); }
  };

  static Points load(const float* positions) {
    Points points;
    Set::loadTriples(positions, points.x.value, points.y.value, points.z.value);
    return points;
  }

  const float* point(std::ptrdiff_t n) const { return positions_ + 3 * n; }

  Cases casesOf(const Points& points) const {
    return {footSplits<float>(absolute(points.x), Pack(a_)).bits(),
            footSplits<float>(absolute(points.y), Pack(b_)).bits()};
  }

  void evaluate(const Points& points, Complex* pressures) const {
    if constexpr (!std::is_same_v<Set, ModerateSet>)
      if (moderate(points)) return evaluateWith<emulation::Lanes<ModerateSet>>(points, pressures);
    evaluateWith<Pack>(points, pressures);
  }

  template <class Lane>
  void evaluateWith(const Points& points, Complex* pressures) const {
    const ComplexPair<Lane> p =
        pointPressure<HalfAngleIntegrand>(Lane::of(points.x.value), Lane::of(points.y.value),
                                          Lane::of(points.z.value), a_, b_, k_, rule_);
    Set::storePairs(&pressures->re, p.re.value, p.im.value);
  }

  // Points are moderate that lie neither in the planes through the edges nor too far from the
  // piston for its phase, in a unit in which |k| is at least 2^-10 and lengths go up to 2^20:
  // metres or millimetres, say. Then a node's D is at least the square of `besidePlanes`, and R − z
  // at least 2^-61. The sine of half its phase is 0 or at least 2^-72: below half a turn since R −
  // z is so long, and above since no product of two floats up to 2^22 half turns is so near to a
  // whole one.

  static constexpr float besidePlanes = 0x1p-20f;

  bool moderate(const Points& points) const {
    const Pack u = absolute(points.x), v = absolute(points.y), z = absolute(points.z);
    const auto lanes = (Pack(besidePlanes) <= absolute(u - absolute(Pack(a_)))) &
                       (Pack(besidePlanes) <= absolute(v - absolute(Pack(b_)))) &
                       (u + v + (z + z) <= Pack(moderateReach_));
    return lanes.bits() == allLanes;
  }

  /// How far |x| + |y| + 2·|z| may go: less than 0 for a piston or a rule of no moderate numbers.
  static float moderateReach(float a, float b, float k, const SymmetricRule<float>& rule) {
    for (int i = 0; i < rule.N / 2; ++i)
      if (!(-1 <= rule.x[i] && rule.x[i] <= 1)) return -1;
    const float wavenumber = k < 0 ? -k : k, sides = (a < 0 ? -a : a) + (b < 0 ? -b : b);
    if (!(wavenumber >= 0x1p-10f)) return -1;
    const float reach = 0x1p21f / wavenumber;
    return (reach < 0x1p20f ? reach : 0x1p20f) - sides;
  }

  /// Collects points that stand at `first` and after.
  void collect(const Points& points, Cases cases, int first, unsigned lanes) {
    static constexpr float steps[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    const Pack places = Pack(static_cast<float>(first)) + Pack::load(steps);
    collected_[0].append(points, places, ~cases.u & ~cases.v & lanes);
    collected_[1].append(points, places, cases.u & ~cases.v & lanes);
    collected_[2].append(points, places, ~cases.u & cases.v & lanes);
    collected_[3].append(points, places, cases.u & cases.v & lanes);
  }

  /// The points that fill no pack.
  void collectRest(int first) {
    float positions[3 * Pack::count] = {};
    const int count = count_ - first;
    __builtin_memcpy(positions, point(first), 3 * sizeof(float) * unsigned(count));
    const Points points = load(positions);
    collect(points, casesOf(points), first, allLanes >> (Pack::count - count));
  }

  void evaluateCollected() {
    Collected<4 * Pack::count> rests;
    for (auto& points : collected_) {
      points.close();
      const int rest = points.count % Pack::count, packed = points.count - rest;
      evaluateCollected(points, packed);
      rests.append(points.pack(packed), Pack::load(points.places + packed), (1u << rest) - 1);
    }
    rests.close();
    evaluateCollected(rests, rests.count);
  }

  template <int most>
  void evaluateCollected(const Collected<most>& points, int count) const {
    for (int n = 0; n < count; n += Pack::count) {
      Complex pressures[Pack::count];
      evaluate(points.pack(n), pressures);
      const int lanes = count - n < Pack::count ? count - n : Pack::count;
      for (int lane = 0; lane < lanes; ++lane)
        pressures_[static_cast<int>(points.places[n + lane])] = pressures[lane];
    }
  }

  const float* const positions_;
  Complex* const pressures_;
  const int count_;
  const float a_, b_, k_;
  const SymmetricRule<float>& rule_;
  const float moderateReach_;
  Collected<capacity> collected_[4];
};

template <class Set, class ModerateSet = Set>
void evaluatePacks(const float* positions, Complex* pressures, int count, float a, float b, float k,
                   const SymmetricRule<float>& rule) {
  using Evaluation = PackEvaluation<Set, ModerateSet>;
  constexpr std::ptrdiff_t most = Evaluation::capacity;
  for (; count > 0; positions += 3 * most, pressures += most, count -= int{most})
    Evaluation(positions, pressures, count < most ? count : int{most}, a, b, k, rule).run();
}

}  // namespace pistonfield
