#pragma once

#include <algorithm>
#include <cstdint>

#include "FastNearfield/PackedPressure.h"

// The threads of the emulation device: it calls a kernel once for a run of them.

namespace pistonfield {

/// Calls body(first, last) for those threads of this run that have a point.
template <class Body>
void forThreadsWithPoint(int count, const Body& body) {
  const emulation::ThreadRun run = emulation::threadRun;
  const auto points = static_cast<std::uint64_t>(std::max(count, 0));
  if (run.first < points)
    body(static_cast<unsigned>(run.first), static_cast<unsigned>(std::min(run.last, points)));
}

/// In double precision one by one.
template <class Points, class Results>
void evaluate(const Piston<double>& piston, const Points& points, const Results& results) {
  forThreadsWithPoint(points.count(), [&](unsigned n, unsigned last) {
    for (auto cursor = points.cursor(n); n < last; ++n, points.advance(cursor))
      results.store(n, pressureAt(points.at(cursor), piston));
  });
}

/// In single precision in packs of lanes.
template <class Points, class Results>
void evaluate(const Piston<float>& piston, const Points& points, const Results& results) {
  forThreadsWithPoint(points.count(), [&](unsigned n, unsigned last) {
    PackedPressure* const packedPressure = pistonfield::packedPressure(instructionSet());
    PointBatch batch;
    auto cursor = points.cursor(n);
    while (n < last) {
      batch.count = std::min(PointBatch::capacity, static_cast<int>(last - n));
      for (int i = 0; i < batch.count; ++i, points.advance(cursor)) {
        const Point<float> p = points.at(cursor);
        batch.x[i] = p.x;
        batch.y[i] = p.y;
        batch.z[i] = p.z;
      }
      packedPressure(batch, piston.a, piston.b, piston.k, piston.rule);
      for (int i = 0; i < batch.count; ++i, ++n) results.store(n, {batch.re[i], batch.im[i]});
    }
  });
}

}  // namespace pistonfield
