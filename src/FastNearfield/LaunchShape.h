#pragma once

#include "core/CudaCompatibility.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace pistonfield {

/// a/b rounded up, for a ≥ 0 and b > 0.
template <class Int>
constexpr Int iDivUp(Int a, Int b) {
  return a / b + (a % b != 0 ? 1 : 0);
}

/// Half a side length; kernels take these.
template <class Real>
Real half(Real side) {
  return std::ldexp(side, -1);
}

/// Whether a grid has more points than an int counts. Signs do not matter.
inline bool hasTooManyPoints(int sx, int sy, int sz) {
  return std::abs(static_cast<double>(sx) * sy * sz) > std::numeric_limits<int>::max();
}

/// The size of sx·sy·sz elements of `bytesPerPoint`.
inline std::size_t gridBytes(int sx, int sy, int sz, std::size_t bytesPerPoint) {
  return static_cast<std::size_t>(sx) * static_cast<std::size_t>(sy) *
         static_cast<std::size_t>(sz) * bytesPerPoint;
}

/// The size to allocate for the results of a grid: none for too many points, whose launch fails.
inline std::size_t resultBytes(int sx, int sy, int sz, std::size_t bytesPerPoint) {
  return hasTooManyPoints(sx, sy, sz) ? 0 : gridBytes(sx, sy, sz, bytesPerPoint);
}

constexpr dim3 blockShape{128};

/// The grid of blocks for a list of points.
inline dim3 pointListShape(int nbPositions) {
  return {static_cast<unsigned>(iDivUp(iDivUp(nbPositions, 128), 64)), 64};
}

/// The grid of blocks for sx·sy·sz points. A block is not a tile of the grid: kernels fold block
/// and thread indices into one point index (EvaluatePointsOnGpu.h). For negative sizes and for too
/// many points, returns a shape that every device rejects.
inline dim3 regularGridShape(int sx, int sy, int sz) {
  const auto width = static_cast<unsigned>(iDivUp(sx, 16));
  if (sx < 0 || sy < 0 || sz < 0 || hasTooManyPoints(sx, sy, sz))
    return {width, std::numeric_limits<unsigned>::max()};
  return {width, static_cast<unsigned>(iDivUp(std::int64_t{sy} * sz, std::int64_t{8}))};
}

}  // namespace pistonfield
