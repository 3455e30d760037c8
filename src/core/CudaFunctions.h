#pragma once

#include <cuda_runtime.h>

#include <cmath>

// What kernels are written in: arithmetic over *lanes*. A lane type holds the same quantity of one
// or more points; a `float` holds one. Code over lanes has no branch that depends on a value: it
// computes with `select`, and skips work only when no lane needs it, which `any` tells.

namespace pistonfield {

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
