#pragma once

#include <cstddef>
#include <utility>

#include "FastNearfield/packs/ModeratePoints.h"
#include "FastNearfield/packs/PackedPressure.h"
#include "FastNearfield/point/HalfAngleIntegrand.h"
#include "lanes/Pack.h"

// Evaluates points in packs.
//
// For a pair of edges, a point takes two integrals if the foot of its perpendicular on the edges
// splits the interval, otherwise one. A pack takes two if any of its lanes does. Points are
// therefore sorted by case first, and then evaluated case by case, pack after pack. The schedule of
// a case of moderate points (ModeratePoints.h) is one loop of steps. Each step adds the values of
// four nodes, whose roots and quotients the previous step has started, and starts those of the next
// step. The processor executes both at the same time.
//
// This header must not define functions that other files share: the linker could give those files
// the functions compiled here, with instructions that not every machine has.

namespace pistonfield {

/// Moderate points are evaluated with ModerateSet. It may be Avx512SlowDivision, whose quotient is
/// right only in the SecondQuotientRange; every other point with Set. Both have the same registers.
template <class Set, class ModerateSet = Set>
class PackEvaluation {
 public:
  PackEvaluation(const float* positions, Complex* pressures, int count, float halfWidth,
                 float halfHeight, float k, const SymmetricRule<float>& rule,
                 const CallersDoubles& callers)
      : positions_(positions),
        pressures_(pressures),
        count_(count),
        halfWidth_(halfWidth),
        halfHeight_(halfHeight),
        k_(k),
        wave_(k),
        moderate_(halfWidth, halfHeight, k, rule),
        rule_(rule),
        callers_(callers) {
    // 1 + x is computed here, since broadcasting a number from memory costs nothing. The entry
    // after the last pair repeats the first, for the pack that follows. With a rule of one node no
    // point is moderate.
    for (int i = 0; i < rule.N / 2; ++i) fromEnds_[i] = 1 + rule.x[i];
    if (rule.N > 1) fromEnds_[rule.N / 2] = fromEnds_[0];
  }

  void run() {
    for (int first = 0, last = 0; first < count_; first = last) {
      last = count_ - first < block ? count_ : first + block;
      for (int n = first; n < last; n += Single::lanes) sort(n);
      if (last == count_)
        for (Indices& indices : ofCase_) indices.fillPack();
      nextBlock_ = {point(last), point(count_)};
      evaluateModerate<false, false>(ofCase_[notSplit]);
      evaluateModerate<true, false>(ofCase_[splitInX]);
      evaluateModerate<false, true>(ofCase_[splitInY]);
      evaluateModerate<true, true>(ofCase_[splitInX | splitInY]);
      evaluateOthers(ofCase_[notModerate]);
      for (Indices& indices : ofCase_) indices.dropWhole();
    }
  }

 private:
  using Single = Pack<Set>;
  using V = Pack<ModerateSet>;
  using Integrand = HalfAngleIntegrand<V>;
  using Edges = EdgePair<V>;

  /// The number of points that are sorted and then evaluated while they are in the cache. Their
  /// indices take 21 kB of the stack; a thread may have as little as 64 kB.
  static constexpr int block = 1024;

  /// The cases: moderate points by the directions in which they are split, and all others.
  static constexpr unsigned notSplit = 0, splitInX = 1, splitInY = 2, notModerate = 4, cases = 5;

  /// A pack of points, mirrored to where x and y are not negative.
  struct Mirrored {
    Single u, v, z;
  };

  /// Indices of points in the list.
  struct Indices {
    /// Appends first + n for each n whose bit is set in `lanes`.
    void append(int first, unsigned lanes) {
      Set::storeIndices(of + count, lanes, first);
      count += __builtin_popcount(lanes);
    }

    /// Repeats the last index until there are only whole packs.
    void fillPack() {
      while (count != whole()) {
        of[count] = of[count - 1];
        ++count;
      }
    }

    /// The number of indices in whole packs.
    int whole() const { return count - count % Single::lanes; }

    void dropWhole() {
      const int first = whole();
      if (first == 0) return;
      __builtin_memcpy(of, of + first, sizeof(int) * Single::lanes);
      count -= first;
    }

    // The previous block leaves less than a pack, and `append` writes a whole register.
    int of[block + 2 * Single::lanes];
    int count = 0;
  };

  /// A pack of moderate points of one case: their integrals, in the order of the schedule.
  template <bool splitX, bool splitY>
  struct ModeratePack {
    void set(const Mirrored& points, float halfWidth, float halfHeight, HalfPhase<V> wave) {
      f = Integrand(V::of(points.z.value), wave);
      const V u = V::of(points.u.value), v = V::of(points.v.value);
      const V halfX(halfWidth), halfY(halfHeight), foot(0.0f);
      beyondX = u > halfX;
      beyondY = v > halfY;
      edges[0] =
          Edges(u - halfX, u + halfX, splitY ? foot : select(beyondY, v - halfY, foot), v + halfY);
      edges[1] =
          Edges(v - halfY, v + halfY, splitX ? foot : select(beyondX, u - halfX, foot), u + halfX);
      if constexpr (splitY) edges[2] = Edges(u - halfX, u + halfX, v - halfY, foot);
      if constexpr (splitX) edges[2 + splitY] = Edges(v - halfY, v + halfY, u - halfX, foot);
    }

    ComplexPair<V> pressure() const {
      ComplexPair<V> sumY, sumX;
      if constexpr (splitY)
        sumY = edges[0].difference() + edges[2].difference();
      else
        sumY = edges[0].difference(beyondY);
      if constexpr (splitX)
        sumX = edges[1].difference() + edges[2 + splitY].difference();
      else
        sumX = edges[1].difference(beyondX);
      return f.complete(sumY + sumX);
    }

    static constexpr int edgePairs = 2 + splitX + splitY;
    Integrand f;
    PackMask<ModerateSet> beyondX, beyondY;
    Edges edges[edgePairs];
  };

  const float* point(std::ptrdiff_t n) const { return positions_ + 3 * n; }

  static Mirrored load(const float* positions) {
    Single x, y, z;
    Set::loadTriples(positions, x.value, y.value, z.value);
    return {absolute(x), absolute(y), z};
  }
  /// Loads the points with the indices of one pack, which ascend.
  Mirrored gather(const int* indices) const {
    // gatherTriples may read one float past a point. Past the last point there is none.
    if (indices[Single::lanes - 1] == count_ - 1) return copy(indices);
    Single x, y, z;
    Set::gatherTriples(positions_, indices, x.value, y.value, z.value);
    return {absolute(x), absolute(y), z};
  }
  __attribute__((noinline)) Mirrored copy(const int* indices) const {
    float positions[3 * Single::lanes];
    for (int n = 0; n < Single::lanes; ++n)
      __builtin_memcpy(positions + 3 * n, point(indices[n]), 3 * sizeof(float));
    return load(positions);
  }

  /// Prefetches an array's numbers for one more pack of points.
  template <int perPoint, class T>
  static void fetch(UsedSoon<T>& array) {
    constexpr int numbers = perPoint * Single::lanes, cacheLine = 64 / sizeof(T);
    if (array.end - array.next < numbers) return;
    for (int n = 0; n < numbers; n += cacheLine) __builtin_prefetch(array.next + n);
    array.next += numbers;
  }
  /// Prefetches what sorting the next block reads, and what the caller uses after this list.
  void fetchAhead() {
    fetch<3>(nextBlock_);
    fetch<3>(callers_.points);
    fetch<1>(callers_.re);
    fetch<1>(callers_.im);
  }

  /// Sorts one pack of points from `first` on, or those that are left.
  void sort(int first) {
    const int left = count_ - first < Single::lanes ? count_ - first : Single::lanes;
    Mirrored points;
    if (left == Single::lanes) {
      points = load(point(first));
    } else {
      int indices[Single::lanes];
      for (int n = 0; n < Single::lanes; ++n) indices[n] = n < left ? first + n : count_ - 1;
      points = copy(indices);
    }
    const unsigned listed = ~0u >> (32 - left);
    const unsigned x = footSplits<float>(points.u, Single(halfWidth_)).bits();
    const unsigned y = footSplits<float>(points.v, Single(halfHeight_)).bits();
    const unsigned moderate = listed & moderate_(points.u, points.v, points.z).bits();
    ofCase_[notSplit].append(first, moderate & ~x & ~y);
    ofCase_[splitInX].append(first, moderate & x & ~y);
    ofCase_[splitInY].append(first, moderate & ~x & y);
    ofCase_[splitInX | splitInY].append(first, moderate & x & y);
    if (moderate != listed) ofCase_[notModerate].append(first, listed & ~moderate);
  }

  /// D and the integrand's paths at a pair of nodes on two edges.
  struct Started {
    typename Edges::Squares D;
    V plus1, minus1, plus2, minus2;
  };

  static Started start(const Edges& edges, const Integrand& f, float fromEnd) {
    const auto D = edges.squares(V(fromEnd));
    return {D, f.path(D.plus1), f.path(D.minus1), f.path(D.plus2), f.path(D.minus2)};
  }

  /// Adds the values of the started nodes and starts the nodes of `next`, alternately.
  __attribute__((always_inline)) static Started step(Edges& edges, const Integrand& f, float weight,
                                                     const Started& at, const Edges& next,
                                                     const Integrand& nextF, float fromEnd) {
    Started started;
    started.D = next.squares(V(fromEnd));
    started.plus1 = nextF.path(started.D.plus1);
    const auto plus1 = f.value(at.D.plus1, at.plus1);
    started.minus1 = nextF.path(started.D.minus1);
    edges.addFirst(V(weight), plus1 + f.value(at.D.minus1, at.minus1));
    started.plus2 = nextF.path(started.D.plus2);
    const auto plus2 = f.value(at.D.plus2, at.plus2);
    started.minus2 = nextF.path(started.D.minus2);
    edges.addSecond(V(weight), plus2 + f.value(at.D.minus2, at.minus2));
    return started;
  }

  /// Evaluates the packs of one case: for each pair of nodes, all pairs of edges. Each step starts
  /// the nodes of the next step, and the last step of a pack those of the next pack.
  template <bool splitX, bool splitY>
  __attribute__((noinline)) void evaluateModerate(const Indices& indices) {
    using Case = ModeratePack<splitX, splitY>;
    const int whole = indices.whole(), pairs = rule_.N / 2;
    if (whole == 0) return;
    Case packs[2], *present = &packs[0], *following = &packs[1];
    present->set(gather(indices.of), halfWidth_, halfHeight_, wave_);
    Started nodes = start(present->edges[0], present->f, fromEnds_[0]);
    for (int n = 0; n < whole; n += Single::lanes) {
      fetchAhead();
      const bool more = n + Single::lanes < whole;
      for (int i = 0; i < pairs; ++i) {
        // Halfway, since between steps that wait for roots it costs little.
        if (more && i == pairs / 2)
          following->set(gather(indices.of + n + Single::lanes), halfWidth_, halfHeight_, wave_);
        for (int e = 0; e < Case::edgePairs; ++e) {
          const bool around = e + 1 == Case::edgePairs;
          // After the last pack this starts nodes that are not used.
          const Case& next = around && i + 1 == pairs && more ? *following : *present;
          nodes = step(present->edges[e], present->f, rule_.w[i], nodes,
                       next.edges[around ? 0 : e + 1], next.f, fromEnds_[i + around]);
        }
      }
      if (rule_.N > 2 * pairs)
        for (Edges& edges : present->edges) edges.addMiddle(present->f, V(rule_.w[pairs]));
      const ComplexPair<V> p = present->pressure();
      scatter(p.re.value, p.im.value, indices.of + n);
      std::swap(present, following);
    }
  }

  __attribute__((noinline)) void evaluateOthers(const Indices& indices) {
    for (int n = 0; n < indices.whole(); n += Single::lanes) {
      const Mirrored points = gather(indices.of + n);
      const ComplexPair<Single> p = pointPressure<HalfAngleIntegrand>(
          points.u, points.v, points.z, halfWidth_, halfHeight_, k_, rule_);
      scatter(p.re.value, p.im.value, indices.of + n);
    }
  }

  void scatter(typename Set::Register re, typename Set::Register im, const int* indices) {
    Complex pressures[Single::lanes];
    Set::storePairs(&pressures->re, re, im);
    for (int n = 0; n < Single::lanes; ++n) pressures_[indices[n]] = pressures[n];
  }

  const float* const positions_;
  Complex* const pressures_;
  const int count_;
  const float halfWidth_, halfHeight_, k_;
  const HalfPhase<V> wave_;
  const ModeratePoints<Single> moderate_;
  const SymmetricRule<float> rule_;
  float fromEnds_[mostNodes / 2 + 1];
  Indices ofCase_[cases];
  UsedSoon<float> nextBlock_{};
  CallersDoubles callers_;
};

}  // namespace pistonfield
