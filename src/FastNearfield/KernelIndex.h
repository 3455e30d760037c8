#pragma once

#include <cuda_runtime.h>

// How a kernel finds the point of its thread.

namespace pistonfield {

/// The index of this thread in its launch, in unsigned 32-bit arithmetic; the shape of the grid of
/// blocks has no other meaning.
__device__ inline unsigned linearThreadIndex() {
  return threadIdx.x +
         blockDim.x * (blockIdx.x + gridDim.x * (blockIdx.y + gridDim.y * blockIdx.z));
}

/// The number of points of a grid, in 32-bit arithmetic.
__host__ __device__ inline int gridPoints(int sx, int sy, int sz) {
  return static_cast<int>(static_cast<unsigned>(sx) * static_cast<unsigned>(sy) *
                          static_cast<unsigned>(sz));
}

/// Whether a thread has a point to work on; a launch is rounded up to whole blocks.
__host__ __device__ inline bool hasPoint(unsigned thread, int points) {
  return points > 0 && thread < static_cast<unsigned>(points);
}

/// The grid indices of a point, the first axis varying fastest.
struct GridIndex {
  __host__ __device__ GridIndex(unsigned thread, int sx, int sy)
      : i(static_cast<int>(thread) % sx),
        j(static_cast<int>(thread) / sx % sy),
        l(static_cast<int>(thread) / sx / sy) {}
  int i, j, l;
};

/// Calls body(thread, index) for the grid point of this thread, if it has one.
template <class Body>
__device__ inline void atGridPoint(int sx, int sy, int sz, const Body& body) {
  const unsigned thread = linearThreadIndex();
  if (hasPoint(thread, gridPoints(sx, sy, sz))) body(thread, GridIndex(thread, sx, sy));
}

/// The first three rows of a 4×4 transform, row by row.
template <class T>
struct AffineMap {
  T t[12];

  /// Component `row` of the transformed grid point.
  __host__ __device__ T operator()(int row, const GridIndex& point) const {
    const T* const r = t + 4 * row;
    return r[0] * static_cast<T>(point.i) + r[1] * static_cast<T>(point.j) +
           r[2] * static_cast<T>(point.l) + r[3];
  }
};

template <class T>
__host__ __device__ inline AffineMap<T> loadAffineMap(const T* transform) {
  AffineMap<T> map;
  for (int n = 0; n < 12; ++n) map.t[n] = transform[n];
  return map;
}

}  // namespace pistonfield
