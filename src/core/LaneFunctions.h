#pragma once

#include <cuda_runtime.h>

#include <cmath>

// What kernels are written in: arithmetic over *lanes*. A lane type holds the same quantity of one
// or more points; a `float` holds one, and stands for a thread of a GPU. Code over lanes has no
// branch that depends on a value: it computes with `select`, and skips work only when no lane needs
// it, which `any` tells. Conditions are joined by & and |.
//
// Roots and quotients are right to half a unit in the last place on the CPU. On a GPU they are the
// hardware's own, right to about two, and take squares of lengths below 1e-38 for zero.

namespace pistonfield {

__host__ __device__ inline float select(bool condition, float yes, float no) {
  return condition ? yes : no;
}

__host__ __device__ inline bool any(bool condition) { return condition; }

__host__ __device__ inline float absolute(float x) { return std::fabs(x); }

__host__ __device__ inline float squareRoot(float x) {
#ifdef __CUDA_ARCH__
  float root;
  asm("sqrt.approx.ftz.f32 %0, %1;" : "=f"(root) : "f"(x));
  return root;
#else
  return std::sqrt(x);
#endif
}

__host__ __device__ inline float quotient(float x, float y) {
#ifdef __CUDA_ARCH__
  float reciprocal;
  asm("rcp.approx.ftz.f32 %0, %1;" : "=f"(reciprocal) : "f"(y));
  return x * reciprocal;
#else
  return x / y;
#endif
}

/// The same, for the second of two quotients that are wanted side by side, in moderate numbers:
/// 2^-40 ≤ y ≤ 2^42 and 2^-75 ≤ |x| < 2, or x = 0 whose sign does not matter. Some machines take
/// long to divide, and compute this one by multiplications meanwhile.
__host__ __device__ inline float secondQuotient(float x, float y) { return quotient(x, y); }

/// x·y + z, rounded once.
__host__ __device__ inline float multiplyAdd(float x, float y, float z) {
  return std::fma(x, y, z);
}

// In double precision operations stand as they are written.

__host__ __device__ inline double select(bool condition, double yes, double no) {
  return condition ? yes : no;
}

__host__ __device__ inline double multiplyAdd(double x, double y, double z) { return x * y + z; }

}  // namespace pistonfield
