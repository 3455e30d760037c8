#pragma once

#include <cuda_runtime.h>

#include "FastNearfield/PointPressure.h"
#include "FastNearfield/PointSources.h"

// The work of a kernel's threads: one point each, the point whose number is the thread's. Threads
// are counted in one unsigned 32-bit number; the shape of the grid of blocks has no other meaning.
// Those beyond the last point do nothing.
//
//     evaluate(piston, points, results)

namespace pistonfield {

template <class T>
struct KernelPiston {
  T a, b, k;
  SymmetricRule<T> rule;
};

__host__ __device__ inline Complex pressureAt(const Point<float>& p,
                                              const KernelPiston<float>& piston) {
  return pointPressure<HalfAngleIntegrand>(p.x, p.y, p.z, piston.a, piston.b, piston.k,
                                           piston.rule);
}

__host__ __device__ inline Complexd pressureAt(const Point<double>& p,
                                               const KernelPiston<double>& piston) {
  return pointPressure<SingleRootIntegrand>(p.x, p.y, p.z, piston.a, piston.b, piston.k,
                                            piston.rule);
}

}  // namespace pistonfield

#if defined(__CUDACC__)

namespace pistonfield {

template <class T, class Points, class Results>
__device__ inline void evaluate(const KernelPiston<T>& piston, const Points& points,
                                const Results& results) {
  const unsigned n =
      threadIdx.x + blockDim.x * (blockIdx.x + gridDim.x * (blockIdx.y + gridDim.y * blockIdx.z));
  const int count = points.count();
  if (count > 0 && n < static_cast<unsigned>(count))
    results.store(n, pressureAt(points.at(points.cursor(n)), piston));
}

}  // namespace pistonfield

#else
#include "FastNearfield/EmulatedThreads.h"
#endif
