#pragma once

#include <cuda_runtime.h>

#include <cmath>

// What kernels are written in: the index of a thread, and arithmetic over *lanes*. A lane type holds
// the same quantity of one or more points; `float` and `double` hold one. Code over lanes has no
// branch that depends on a value: it computes with `select`, and skips work only when `any` lane
// does not need it.

namespace pistonfield {

/// The index of this thread in its launch, in unsigned 32-bit arithmetic; the shape of the grid of
/// blocks has no other meaning.
__device__ inline unsigned linearThreadIndex() {
  return threadIdx.x + blockDim.x * (blockIdx.x + gridDim.x * (blockIdx.y + gridDim.y * blockIdx.z));
}

template <class T>
__host__ __device__ inline T select(bool condition, T yes, T no) {
  return condition ? yes : no;
}

__host__ __device__ inline bool any(bool condition) { return condition; }

__host__ __device__ inline float absolute(float x) { return std::fabs(x); }

__host__ __device__ inline float squareRoot(float x) { return std::sqrt(x); }

__host__ __device__ inline float fusedMultiplyAdd(float x, float y, float z) {
  return std::fma(x, y, z);
}

/// 1/x, by the fast approximate reciprocal where the device has one.
__host__ __device__ inline float reciprocal(float x) {
#ifdef __CUDA_ARCH__
  return __fdividef(1.0f, x);
#else
  return 1.0f / x;
#endif
}

__host__ __device__ inline void sineCosine(float x, float& sine, float& cosine) {
#ifdef __CUDA_ARCH__
  sincosf(x, &sine, &cosine);
#else
  sine = std::sin(x);
  cosine = std::cos(x);
#endif
}

}  // namespace pistonfield
