#pragma once

#include <cmath>

#include "lanes/HostDevice.h"

// The functions that numerical code over a value type V uses besides +, −, · and comparisons. V is
// float or double (one point, as on a GPU thread) or a pack of points (lanes/Pack.h). Such code has
// no branch that depends on a value: it uses `select`, and skips work only if `any` returns that no
// lane needs it. Conditions are combined with & and |.
//
// Square roots and quotients of floats are correctly rounded on the CPU. On a GPU they are the
// hardware's approximations, accurate to about two units in the last place, and treat numbers below
// 1e-38 as zero.

namespace pistonfield {

PISTONFIELD_INLINE bool any(bool condition) { return condition; }

PISTONFIELD_INLINE float select(bool condition, float yes, float no) {
  return condition ? yes : no;
}

PISTONFIELD_INLINE float absolute(float x) { return std::fabs(x); }

PISTONFIELD_INLINE float squareRoot(float x) {
#ifdef __CUDA_ARCH__
  float root;
  asm("sqrt.approx.ftz.f32 %0, %1;" : "=f"(root) : "f"(x));
  return root;
#else
  return std::sqrt(x);
#endif
}

PISTONFIELD_INLINE float quotient(float x, float y) {
#ifdef __CUDA_ARCH__
  float reciprocal;
  asm("rcp.approx.ftz.f32 %0, %1;" : "=f"(reciprocal) : "f"(y));
  return x * reciprocal;
#else
  return x / y;
#endif
}

/// The range in which `secondQuotient` equals `quotient` on every machine: y from leastY to mostY,
/// and |x| from leastX to below 2 or x = 0 (except for the sign of the zero).
struct SecondQuotientRange {
  static constexpr float leastX = 0x1p-75f;
  static constexpr float leastY = 0x1p-40f, mostY = 0x1p42f;
};

/// x/y, for the second of two independent quotients: packs compute it by multiplications where
/// division is the bottleneck.
PISTONFIELD_INLINE float secondQuotient(float x, float y) { return quotient(x, y); }

/// x·y + z, rounded once.
PISTONFIELD_INLINE float multiplyAdd(float x, float y, float z) { return std::fma(x, y, z); }

PISTONFIELD_INLINE double select(bool condition, double yes, double no) {
  return condition ? yes : no;
}

/// x·y + z as it is written: the product is rounded too.
PISTONFIELD_INLINE double multiplyAdd(double x, double y, double z) { return x * y + z; }

}  // namespace pistonfield
