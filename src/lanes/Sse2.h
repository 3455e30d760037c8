#pragma once

#include <emmintrin.h>

#include <cstddef>

#include "lanes/StoreIndices.h"

namespace pistonfield {

/// 2 doubles per register.
struct Sse2Double {
  using Value = double;
  using Register = __m128d;
  using Integers = long long __attribute__((vector_size(16)));
  using Mask = __m128d;
  static constexpr int width = 2;

  static Register broadcast(double x) { return _mm_set1_pd(x); }
  static Register load(const double* from) { return _mm_loadu_pd(from); }
  static void store(double* to, Register x) { _mm_storeu_pd(to, x); }

  static Mask less(Register x, Register y) { return _mm_cmplt_pd(x, y); }
  static Mask equal(Register x, Register y) { return _mm_cmpeq_pd(x, y); }
  static unsigned bits(Mask mask) { return static_cast<unsigned>(_mm_movemask_pd(mask)); }
  static Register select(Mask mask, Register yes, Register no) {
    return _mm_or_pd(_mm_and_pd(mask, yes), _mm_andnot_pd(mask, no));
  }

  static Register absolute(Register x) { return _mm_andnot_pd(_mm_set1_pd(-0.0), x); }
  static Register squareRoot(Register x) { return _mm_sqrt_pd(x); }
  static Register multiplyAdd(Register x, Register y, Register z) { return x * y + z; }
};

/// 4 lanes per register. Every 64-bit x86 processor has it. It is the only set without a fused
/// multiply-add, and therefore slow.
struct Sse2 {
  using Value = float;
  using Double = Sse2Double;
  using Register = __m128;
  using Integers = int __attribute__((vector_size(16)));
  using Mask = __m128;
  static constexpr int width = 4;
  static constexpr bool dividesSlowly() { return false; }

  static Register broadcast(float x) { return _mm_set1_ps(x); }
  static Register load(const float* from) { return _mm_loadu_ps(from); }
  static void store(float* to, Register x) { _mm_storeu_ps(to, x); }

  static void loadTriples(const float* from, Register& first, Register& second, Register& third) {
    first = _mm_setr_ps(from[0], from[3], from[6], from[9]);
    second = _mm_setr_ps(from[1], from[4], from[7], from[10]);
    third = _mm_setr_ps(from[2], from[5], from[8], from[11]);
  }
  static void storePairs(float* to, Register first, Register second) {
    store(to, _mm_unpacklo_ps(first, second));
    store(to + 4, _mm_unpackhi_ps(first, second));
  }

  static void gatherTriples(const float* from, const int* indices, Register& first,
                            Register& second, Register& third) {
    const auto at = [&](int lane) { return load(from + std::ptrdiff_t{3} * indices[lane]); };
    const Register a = at(0), b = at(1), c = at(2), d = at(3);
    const Register ab = _mm_unpacklo_ps(a, b), cd = _mm_unpacklo_ps(c, d);
    first = _mm_shuffle_ps(ab, cd, 0x44);
    second = _mm_shuffle_ps(ab, cd, 0xEE);
    third = _mm_shuffle_ps(_mm_unpackhi_ps(a, b), _mm_unpackhi_ps(c, d), 0x44);
  }
  static void storeIndices(int* to, unsigned lanes, int first) {
    storeIndicesInLoop<Sse2>(to, lanes, first);
  }

  static Double::Register lower(Register x) { return _mm_cvtps_pd(x); }
  static Double::Register upper(Register x) { return _mm_cvtps_pd(_mm_movehl_ps(x, x)); }
  static Register joined(Double::Register low, Double::Register high) {
    return _mm_movelh_ps(_mm_cvtpd_ps(low), _mm_cvtpd_ps(high));
  }

  static Mask less(Register x, Register y) { return _mm_cmplt_ps(x, y); }
  static Mask lessOrEqual(Register x, Register y) { return _mm_cmple_ps(x, y); }
  static Mask equal(Register x, Register y) { return _mm_cmpeq_ps(x, y); }
  static Mask logicalAnd(Mask p, Mask q) { return _mm_and_ps(p, q); }
  static Mask logicalOr(Mask p, Mask q) { return _mm_or_ps(p, q); }
  static unsigned bits(Mask mask) { return static_cast<unsigned>(_mm_movemask_ps(mask)); }
  static Register select(Mask mask, Register yes, Register no) {
    return _mm_or_ps(_mm_and_ps(mask, yes), _mm_andnot_ps(mask, no));
  }

  static Register inverseEstimate(Register x) { return _mm_rcp_ps(x); }
  static Register rootEstimate(Register x) { return x * _mm_rsqrt_ps(x); }
  static float largest(Register x) {
    const __m128 two = _mm_max_ps(x, _mm_movehl_ps(x, x));
    return _mm_cvtss_f32(_mm_max_ss(two, _mm_shuffle_ps(two, two, 1)));
  }

  static Register absolute(Register x) { return _mm_andnot_ps(_mm_set1_ps(-0.0f), x); }
  static Register squareRoot(Register x) { return _mm_sqrt_ps(x); }

  static Register secondQuotient(Register x, Register y) { return x / y; }

  /// Computed in double precision, which represents every product of two floats exactly. The sum is
  /// rounded twice, which changes the result once in hundreds of millions of cases.
  static Register multiplyAdd(Register x, Register y, Register z) {
    return joined(lower(x) * lower(y) + lower(z), upper(x) * upper(y) + upper(z));
  }
};

}  // namespace pistonfield
