#pragma once

#include <cuda_runtime.h>

#include <algorithm>
#include <cstdint>
#include <limits>

namespace pistonfield {

/// a/b rounded up, for a ≥ 0 and b > 0.
template <class Int>
constexpr Int iDivUp(Int a, Int b) {
  return a / b + (a % b != 0 ? 1 : 0);
}

constexpr dim3 blockShape{128};

/// The grid of blocks for a list of points.
inline dim3 pointListShape(int nbPositions) {
  return {static_cast<unsigned>(iDivUp(iDivUp(nbPositions, 128), 64)), 64};
}

/// The grid of blocks for sx·sy·sz points. It only provides enough threads: kernels fold block and
/// thread into one index, so a block is not a tile. Sizes beyond what a device launches stay
/// beyond.
inline dim3 regularGridShape(int sx, int sy, int sz) {
  const std::int64_t rows = iDivUp(std::int64_t{sy} * sz, std::int64_t{8});
  const std::int64_t most = std::numeric_limits<unsigned>::max();
  return {static_cast<unsigned>(iDivUp(sx, 16)), static_cast<unsigned>(std::min(rows, most))};
}

}  // namespace pistonfield
