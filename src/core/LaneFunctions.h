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

/// The same, for the second of two quotients that are wanted side by side. Some machines take long
/// to divide, and compute this one by multiplications meanwhile: where points are moderate, so that
/// 2^-40 ≤ y ≤ 2^42 and 2^-75 ≤ |x| < 2, or x = 0 whose sign does not matter.
__host__ __device__ inline float secondQuotient(float x, float y) { return quotient(x, y); }

/// x·y + z, rounded once.
__host__ __device__ inline float multiplyAdd(float x, float y, float z) {
  return std::fma(x, y, z);
}

/// Conditions that are known to hold for every lane, or for none, of a lane type.
template <class Lane>
struct AllLanes {};
template <class Lane>
struct NoLane {};

template <class Lane>
__host__ __device__ constexpr bool any(AllLanes<Lane> /*condition*/) {
  return true;
}
template <class Lane>
__host__ __device__ constexpr bool any(NoLane<Lane> /*condition*/) {
  return false;
}
template <class Lane>
__host__ __device__ inline Lane select(AllLanes<Lane> /*condition*/, Lane yes, Lane /*no*/) {
  return yes;
}
template <class Lane>
__host__ __device__ inline Lane select(NoLane<Lane> /*condition*/, Lane /*yes*/, Lane no) {
  return no;
}
template <class Mask, class Lane>
__host__ __device__ inline AllLanes<Lane> operator|(Mask /*p*/, AllLanes<Lane> all) {
  return all;
}
template <class Mask, class Lane>
__host__ __device__ inline Mask operator|(Mask mask, NoLane<Lane> /*none*/) {
  return mask;
}

// In double precision operations stand as they are written.

__host__ __device__ inline double select(bool condition, double yes, double no) {
  return condition ? yes : no;
}

__host__ __device__ inline double multiplyAdd(double x, double y, double z) { return x * y + z; }

}  // namespace pistonfield
