#pragma once

#include "FastNearfield/KernelPiston.h"
#include "core/CudaCompatibility.h"

namespace pistonfield {

template <class T, class Points, class Results>
__device__ inline void evaluatePoints(const KernelPiston<T>& piston, const Points& points,
                                      const Results& results) {
  const unsigned n =
      threadIdx.x + blockDim.x * (blockIdx.x + gridDim.x * (blockIdx.y + gridDim.y * blockIdx.z));
  const int count = points.count();
  if (count > 0 && n < static_cast<unsigned>(count))
    results.store(n, kernelPressure(points.at(points.cursor(n)), piston));
}

}  // namespace pistonfield
