#pragma once

#include "FastNearfield/PackedPressure.h"
#include "FastNearfield/PointPressure.h"
#include "emulation/Lanes.h"

namespace pistonfield {

/// Evaluates a batch of points in packs of lanes.
///
/// For a pair of edges a point takes one integral beyond their ends and two between them, and a
/// pack takes two as soon as one of its lanes does. Neighbours are mostly alike, and are evaluated
/// where they stand; points of packs whose lanes differ are first collected by their case.
///
/// Nothing here may be a function that other files share: theirs could become this file's, with
/// instructions that not every machine has.
template <class Set>
class PackEvaluation {
 public:
  PackEvaluation(PointBatch& batch, float a, float b, float k, const SymmetricRule<float>& rule)
      : batch_(batch), a_(a), b_(b), k_(k), rule_(rule) {}

  void run() {
    int first = 0;
    for (; first + Pack::count <= batch_.count; first += Pack::count) {
      const Pack x = Pack::load(batch_.x + first);
      const Pack y = Pack::load(batch_.y + first);
      const Cases cases = casesOf(x, y);
      if (cases.alike())
        evaluate(x, y, Pack::load(batch_.z + first), batch_.re + first, batch_.im + first);
      else
        collect(cases, first, Pack::count);
    }
    if (first < batch_.count) collectRest(first);
    evaluateCollected();
  }

 private:
  using Pack = emulation::Lanes<Set>;
  static constexpr unsigned allLanes = ~0u >> (32 - Pack::count);

  /// The lanes that take two integrals, for the edges along each direction.
  struct Cases {
    unsigned u, v;
    bool alike() const { return (u == 0 || u == allLanes) && (v == 0 || v == allLanes); }
  };

  Cases casesOf(Pack x, Pack y) const {
    return {footSplits<float>(absolute(x), Pack(a_)).bits(),
            footSplits<float>(absolute(y), Pack(b_)).bits()};
  }

  void evaluate(Pack x, Pack y, Pack z, float* re, float* im) const {
    const ComplexPair<Pack> p = pointPressure<HalfAngleIntegrand>(x, y, z, a_, b_, k_, rule_);
    p.re.store(re);
    p.im.store(im);
  }

  void collect(const Cases& cases, int first, int count) {
    const unsigned lanes = allLanes >> (Pack::count - count);
    append(0, ~cases.u & ~cases.v & lanes, first);
    append(1, cases.u & ~cases.v & lanes, first);
    append(2, ~cases.u & cases.v & lanes, first);
    append(3, cases.u & cases.v & lanes, first);
  }

  void append(int which, unsigned lanes, int first) {
    for (; lanes != 0; lanes &= lanes - 1)
      collected_[which][counts_[which]++] = static_cast<short>(first + __builtin_ctz(lanes));
  }

  /// The points that fill no pack.
  void collectRest(int first) {
    const int count = batch_.count - first;
    float x[Pack::count] = {}, y[Pack::count] = {};
    for (int lane = 0; lane < count; ++lane) {
      x[lane] = batch_.x[first + lane];
      y[lane] = batch_.y[first + lane];
    }
    collect(casesOf(Pack::load(x), Pack::load(y)), first, count);
  }

  /// Case after case, without a gap between them.
  void evaluateCollected() const {
    short pending[Pack::count];
    int count = 0;
    for (int which = 0; which < 4; ++which)
      for (int n = 0; n < counts_[which]; ++n) {
        pending[count++] = collected_[which][n];
        if (count == Pack::count) {
          evaluateGathered(pending, count);
          count = 0;
        }
      }
    if (count > 0) evaluateGathered(pending, count);
  }

  void evaluateGathered(const short* points, int count) const {
    float x[Pack::count], y[Pack::count], z[Pack::count], re[Pack::count], im[Pack::count];
    for (int lane = 0; lane < Pack::count; ++lane) {
      const int point = points[lane < count ? lane : 0];
      x[lane] = batch_.x[point];
      y[lane] = batch_.y[point];
      z[lane] = batch_.z[point];
    }
    evaluate(Pack::load(x), Pack::load(y), Pack::load(z), re, im);
    for (int lane = 0; lane < count; ++lane) {
      batch_.re[points[lane]] = re[lane];
      batch_.im[points[lane]] = im[lane];
    }
  }

  PointBatch& batch_;
  const float a_, b_, k_;
  const SymmetricRule<float>& rule_;
  short collected_[4][PointBatch::capacity];
  int counts_[4] = {};
};

}  // namespace pistonfield
