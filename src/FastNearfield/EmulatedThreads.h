#pragma once

#include <algorithm>
#include <cstdint>

#include "FastNearfield/PackedPressure.h"

// The threads of the emulation device: it calls a kernel once for all of them.

namespace pistonfield {

/// Calls body(first, last) for ranges that make up the threads that have a point.
template <class Body>
void forThreadsWithPoint(int count, const Body& body) {
  const auto points = static_cast<std::uint64_t>(std::max(count, 0));
  emulation::forThreads([&](std::uint64_t first, std::uint64_t last) {
    if (first < points)
      body(static_cast<unsigned>(first), static_cast<unsigned>(std::min(last, points)));
  });
}

/// In double precision one by one.
template <class Points, class Results>
void evaluate(const KernelPiston<double>& piston, const Points& points, const Results& results) {
  forThreadsWithPoint(points.count(), [&](unsigned n, unsigned last) {
    for (auto cursor = points.cursor(n); n < last; ++n, points.advance(cursor))
      results.store(n, pressureAt(points.at(cursor), piston));
  });
}

inline void evaluateList(const KernelPiston<float>& piston, const float* positions,
                         Complex* pressures, unsigned count) {
  packedPressure(instructionSet())(positions, pressures, static_cast<int>(count), piston.a,
                                   piston.b, piston.k, piston.rule);
}

/// In single precision in packs of lanes.
inline void evaluate(const KernelPiston<float>& piston, const PointList<float>& points,
                     const Pairs<float>& results) {
  forThreadsWithPoint(points.count(), [&](unsigned n, unsigned last) {
    evaluateList(piston, points.cursor(n), results.values + n, last - n);
  });
}

/// The same where the points make no list yet, or their pressures are not to become one.
template <class Points, class Results>
void evaluate(const KernelPiston<float>& piston, const Points& points, const Results& results) {
  forThreadsWithPoint(points.count(), [&](unsigned n, unsigned last) {
    constexpr unsigned most = 1024;  // 20 kB: a thread may have a stack of 64 kB
    Point<float> list[most];
    Complex pressures[most];
    auto cursor = points.cursor(n);
    while (n < last) {
      const unsigned count = std::min(most, last - n);
      for (unsigned i = 0; i < count; ++i, points.advance(cursor)) list[i] = points.at(cursor);
      evaluateList(piston, &list[0].x, pressures, count);
      for (unsigned i = 0; i < count; ++i, ++n) results.store(n, pressures[i]);
    }
  });
}

}  // namespace pistonfield
