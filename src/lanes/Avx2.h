#pragma once

#include <immintrin.h>

#include <cstddef>

#include "lanes/StoreIndices.h"

namespace pistonfield {

/// 4 doubles per register.
struct Avx2Double {
  using Value = double;
  using Register = __m256d;
  using Integers = long long __attribute__((vector_size(32)));
  using Mask = __m256d;
  static constexpr int width = 4;

  static Register broadcast(double x) { return _mm256_set1_pd(x); }
  static Register load(const double* from) { return _mm256_loadu_pd(from); }
  static void store(double* to, Register x) { _mm256_storeu_pd(to, x); }

  static Mask less(Register x, Register y) { return _mm256_cmp_pd(x, y, _CMP_LT_OQ); }
  static Mask equal(Register x, Register y) { return _mm256_cmp_pd(x, y, _CMP_EQ_OQ); }
  static unsigned bits(Mask mask) { return static_cast<unsigned>(_mm256_movemask_pd(mask)); }
  static Register select(Mask mask, Register yes, Register no) {
    return _mm256_blendv_pd(no, yes, mask);
  }

  static Register absolute(Register x) { return _mm256_andnot_pd(_mm256_set1_pd(-0.0), x); }
  static Register squareRoot(Register x) { return _mm256_sqrt_pd(x); }
  static Register multiplyAdd(Register x, Register y, Register z) {
    return _mm256_fmadd_pd(x, y, z);
  }
};

/// 8 lanes per register. Needs AVX2 and FMA.
struct Avx2 {
  using Value = float;
  using Double = Avx2Double;
  using Register = __m256;
  using Integers = int __attribute__((vector_size(32)));
  using Mask = __m256;
  static constexpr int width = 8;
  static constexpr bool dividesSlowly() { return false; }

  static Register broadcast(float x) { return _mm256_set1_ps(x); }
  static Register load(const float* from) { return _mm256_loadu_ps(from); }
  static void store(float* to, Register x) { _mm256_storeu_ps(to, x); }

  static void loadTriples(const float* from, Register& first, Register& second, Register& third) {
    const Register a = load(from), b = load(from + 8), c = load(from + 16);
    // The 8 values of a coordinate are in different lanes of the three registers. They merge into
    // one register, in which consecutive values are three lanes apart.
    const auto sort = [](Register merged, int start) {
      const __m256i lane = _mm256_setr_epi32(0, 3, 6, 1, 4, 7, 2, 5);
      return _mm256_permutevar8x32_ps(merged, _mm256_add_epi32(lane, _mm256_set1_epi32(start)));
    };
    first = sort(_mm256_blend_ps(_mm256_blend_ps(a, b, 0x92), c, 0x24), 0);
    second = sort(_mm256_blend_ps(_mm256_blend_ps(a, b, 0x24), c, 0x49), 1);
    third = sort(_mm256_blend_ps(_mm256_blend_ps(a, b, 0x49), c, 0x92), 2);
  }
  static void storePairs(float* to, Register first, Register second) {
    const Register low = _mm256_unpacklo_ps(first, second);
    const Register high = _mm256_unpackhi_ps(first, second);
    store(to, _mm256_permute2f128_ps(low, high, 0x20));
    store(to + 8, _mm256_permute2f128_ps(low, high, 0x31));
  }

  static void gatherTriples(const float* from, const int* indices, Register& first,
                            Register& second, Register& third) {
    const auto at = [&](int lane) {
      return _mm_loadu_ps(from + std::ptrdiff_t{3} * indices[lane]);
    };
    const auto half = [&](int lane) {
      return _mm256_insertf128_ps(_mm256_castps128_ps256(at(lane)), at(lane + 4), 1);
    };
    const Register a = half(0), b = half(1), c = half(2), d = half(3);
    const Register ab = _mm256_unpacklo_ps(a, b), cd = _mm256_unpacklo_ps(c, d);
    first = _mm256_shuffle_ps(ab, cd, 0x44);
    second = _mm256_shuffle_ps(ab, cd, 0xEE);
    third = _mm256_shuffle_ps(_mm256_unpackhi_ps(a, b), _mm256_unpackhi_ps(c, d), 0x44);
  }
  static void storeIndices(int* to, unsigned lanes, int first) {
    const __m256i chosen =
        _mm256_load_si256(reinterpret_cast<const __m256i*>(setLanes<Avx2>.of[lanes]));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to),
                        _mm256_add_epi32(chosen, _mm256_set1_epi32(first)));
  }

  static Double::Register lower(Register x) { return _mm256_cvtps_pd(_mm256_castps256_ps128(x)); }
  static Double::Register upper(Register x) { return _mm256_cvtps_pd(_mm256_extractf128_ps(x, 1)); }
  static Register joined(Double::Register low, Double::Register high) {
    return _mm256_set_m128(_mm256_cvtpd_ps(high), _mm256_cvtpd_ps(low));
  }

  static Mask less(Register x, Register y) { return _mm256_cmp_ps(x, y, _CMP_LT_OQ); }
  static Mask lessOrEqual(Register x, Register y) { return _mm256_cmp_ps(x, y, _CMP_LE_OQ); }
  static Mask equal(Register x, Register y) { return _mm256_cmp_ps(x, y, _CMP_EQ_OQ); }
  static Mask logicalAnd(Mask p, Mask q) { return _mm256_and_ps(p, q); }
  static Mask logicalOr(Mask p, Mask q) { return _mm256_or_ps(p, q); }
  static unsigned bits(Mask mask) { return static_cast<unsigned>(_mm256_movemask_ps(mask)); }
  static Register select(Mask mask, Register yes, Register no) {
    return _mm256_blendv_ps(no, yes, mask);
  }

  static Register inverseEstimate(Register x) { return _mm256_rcp_ps(x); }
  static Register rootEstimate(Register x) { return x * _mm256_rsqrt_ps(x); }
  static float largest(Register x) {
    __m128 four = _mm_max_ps(_mm256_castps256_ps128(x), _mm256_extractf128_ps(x, 1));
    four = _mm_max_ps(four, _mm_movehl_ps(four, four));
    return _mm_cvtss_f32(_mm_max_ss(four, _mm_movehdup_ps(four)));
  }

  static Register absolute(Register x) { return _mm256_andnot_ps(_mm256_set1_ps(-0.0f), x); }
  static Register squareRoot(Register x) { return _mm256_sqrt_ps(x); }
  static Register secondQuotient(Register x, Register y) { return x / y; }
  static Register multiplyAdd(Register x, Register y, Register z) {
    return _mm256_fmadd_ps(x, y, z);
  }
};

}  // namespace pistonfield
