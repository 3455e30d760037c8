#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <type_traits>

#include "FastNearfield/KernelPiston.h"
#include "FastNearfield/packs/PackedPressure.h"
#include "core/CudaCompatibility.h"

// evaluatePoints() on the emulation device, which calls a kernel once per launch: the kernel itself
// takes ranges of its threads, on all cores. Single precision is evaluated in packs.

namespace pistonfield {

/// Evaluates a list in packs, with the machine's instruction set.
inline void evaluateInPacks(const KernelPiston<float>& piston, const float* positions,
                            Complex* pressures, unsigned count,
                            const CallersDoubles& callers = {}) {
  PackedPressure* const evaluate = packedPressure(instructionSet());
  evaluate(positions, pressures, static_cast<int>(count), piston.halfWidth, piston.halfHeight,
           piston.k, piston.rule, callers);
}

/// What to prefetch while a list is evaluated: the doubles of the points from `toRead` on and of
/// the pressures from `toWrite` on.
inline CallersDoubles usedSoon(const PointList<float, double>& points, unsigned toRead,
                               const Parts<float, double>& results, unsigned toWrite) {
  const auto count = static_cast<unsigned>(points.count());
  return {{points.cursor(toRead), points.cursor(count)},
          {results.re + toWrite, results.re + count},
          {results.im + toWrite, results.im + count}};
}

/// Nothing for grids, whose points are computed.
template <class Points, class Results>
CallersDoubles usedSoon(const Points& /*points*/, unsigned /*toRead*/, const Results& /*results*/,
                        unsigned /*toWrite*/) {
  return {};
}

/// Copies the points to lists, evaluates the lists in packs, and copies the pressures back.
template <class Points, class Results>
void evaluateCopiesInPacks(const KernelPiston<float>& piston, const Points& points,
                           const Results& results, unsigned n, unsigned last) {
  // With what is prefetched meanwhile, the lists take 240 kB of the second-level cache. Shorter
  // lists would leave more packs partly filled. For longer ones the allocator may request memory
  // from the system again for every range.
  const unsigned most = std::min(4096U, last - n);
  const std::unique_ptr<Point<float>[]> list(new Point<float>[most]);
  const std::unique_ptr<Complex[]> pressures(new Complex[most]);
  auto cursor = points.cursor(n);
  while (n < last) {
    const unsigned count = std::min(most, last - n);
    for (unsigned i = 0; i < count; ++i, points.advance(cursor)) list[i] = points.at(cursor);
    // The points of the next list are read soon, and the pressures of this one written.
    evaluateInPacks(piston, &list[0].x, pressures.get(), count,
                    usedSoon(points, n + count, results, n));
    for (std::size_t i = 0; i < count; ++i) results.store(n + i, pressures[i]);
    n += count;
  }
}

template <class T, class Points, class Results>
void evaluateOneByOne(const KernelPiston<T>& piston, const Points& points, const Results& results,
                      unsigned n, unsigned last) {
  for (auto cursor = points.cursor(n); n < last; ++n, points.advance(cursor))
    results.store(n, kernelPressure(points.at(cursor), piston));
}

template <class T, class Points, class Results>
void evaluatePoints(const KernelPiston<T>& piston, const Points& points, const Results& results) {
  const auto count = static_cast<std::uint64_t>(std::max(points.count(), 0));
  emulation::forRangesOfThreads([&](std::uint64_t firstThread, std::uint64_t lastThread) {
    if (firstThread >= count) return;
    const auto n = static_cast<unsigned>(firstThread);
    const auto last = static_cast<unsigned>(std::min(lastThread, count));
    if constexpr (std::is_same_v<T, double>)  // double precision
      evaluateOneByOne(piston, points, results, n, last);
    else if constexpr (std::is_same_v<Points, PointList<T>> && std::is_same_v<Results, Pairs<T>>)
      // lists of floats, in place
      evaluateInPacks(piston, points.cursor(n), results.values + n, last - n);
    else
      // grids, lists of doubles, split results
      evaluateCopiesInPacks(piston, points, results, n, last);
  });
}

}  // namespace pistonfield
