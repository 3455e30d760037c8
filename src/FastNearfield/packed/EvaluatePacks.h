#pragma once

#include <cstddef>

#include "FastNearfield/PointPressure.h"
#include "FastNearfield/packed/LanePlaces.h"
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

template <class Set>
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
        rule_(rule) {}

  void run() {
    int first = 0;
    for (; first + Pack::count <= count_; first += Pack::count) {
      const Points points = load(point(first));
      const Cases cases = casesOf(points);
      if (cases.alike())
        evaluate(points, pressures_ + first);
      else
        collect(cases, first, Pack::count);
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

  /// The lanes that take two integrals, for the edges along each direction.
  struct Cases {
    unsigned u, v;
    bool alike() const { return (u == 0 || u == allLanes) && (v == 0 || v == allLanes); }
  };

  static Points load(const float* positions) {
    float x[Pack::count], y[Pack::count], z[Pack::count];
    for (std::ptrdiff_t lane = 0; lane < Pack::count; ++lane) {
      x[lane] = positions[3 * lane];
      y[lane] = positions[3 * lane + 1];
      z[lane] = positions[3 * lane + 2];
    }
    return {Pack::load(x), Pack::load(y), Pack::load(z)};
  }

  const float* point(std::ptrdiff_t n) const { return positions_ + 3 * n; }

  Cases casesOf(const Points& points) const {
    return {footSplits<float>(absolute(points.x), Pack(a_)).bits(),
            footSplits<float>(absolute(points.y), Pack(b_)).bits()};
  }

  void evaluate(const Points& points, Complex* pressures) const {
    const ComplexPair<Pack> p =
        pointPressure<HalfAngleIntegrand>(points.x, points.y, points.z, a_, b_, k_, rule_);
    float re[Pack::count], im[Pack::count];
    p.re.store(re);
    p.im.store(im);
    for (int lane = 0; lane < Pack::count; ++lane) pressures[lane] = {re[lane], im[lane]};
  }

  void collect(const Cases& cases, int first, int count) {
    const unsigned lanes = allLanes >> (Pack::count - count);
    append(0, ~cases.u & ~cases.v & lanes, first);
    append(1, cases.u & ~cases.v & lanes, first);
    append(2, ~cases.u & cases.v & lanes, first);
    append(3, cases.u & cases.v & lanes, first);
  }

  void append(int which, unsigned lanes, int first) {
    for (int group = 0; group < Pack::count; group += 8) {
      const unsigned eight = lanes >> group & 255;
      const auto points = lanePlaces<Set>.of[eight] + static_cast<short>(first + group);
      __builtin_memcpy(collected_[which] + counts_[which], &points, sizeof points);
      counts_[which] += __builtin_popcount(eight);
    }
  }

  /// The points that fill no pack.
  void collectRest(int first) {
    float positions[3 * Pack::count] = {};
    const int count = count_ - first;
    __builtin_memcpy(positions, point(first), 3 * sizeof(float) * unsigned(count));
    collect(casesOf(load(positions)), first, count);
  }

  /// Case after case, without a gap between them.
  void evaluateCollected() const {
    float positions[3 * (capacity + Pack::count)];
    Complex pressures[capacity + Pack::count];
    float* end = positions;
    for (int which = 0; which < 4; ++which)
      for (int n = 0; n < counts_[which]; ++n, end += 3)
        __builtin_memcpy(end, point(collected_[which][n]), 3 * sizeof(float));
    if (end == positions) return;
    // The last pack's idle lanes repeat the first point.
    for (std::ptrdiff_t lane = 0; lane < Pack::count; ++lane)
      __builtin_memcpy(end + 3 * lane, positions, 3 * sizeof(float));

    Complex* pressure = pressures;
    for (const float* p = positions; p < end; p += 3 * Pack::count, pressure += Pack::count)
      evaluate(load(p), pressure);

    pressure = pressures;
    for (int which = 0; which < 4; ++which)
      for (int n = 0; n < counts_[which]; ++n) pressures_[collected_[which][n]] = *pressure++;
  }

  const float* const positions_;
  Complex* const pressures_;
  const int count_;
  const float a_, b_, k_;
  const SymmetricRule<float>& rule_;
  short collected_[4][capacity + 8];  // entries are written eight at a time
  int counts_[4] = {};
};

template <class Set>
void evaluatePacks(const float* positions, Complex* pressures, int count, float a, float b, float k,
                   const SymmetricRule<float>& rule) {
  constexpr std::ptrdiff_t most = PackEvaluation<Set>::capacity;
  for (; count > 0; positions += 3 * most, pressures += most, count -= int{most})
    PackEvaluation<Set>(positions, pressures, count < most ? count : int{most}, a, b, k, rule)
        .run();
}

}  // namespace pistonfield
