#pragma once

#include <immintrin.h>

#include <cstddef>

#include "lanes/Arithmetic.h"

namespace pistonfield {

/// 8 doubles per register.
struct Avx512Double {
  using Value = double;
  using Register = __m512d;
  using Integers = long long __attribute__((vector_size(64)));
  using Mask = __mmask8;
  static constexpr int width = 8;

  static Register broadcast(double x) { return _mm512_set1_pd(x); }
  static Register load(const double* from) { return _mm512_loadu_pd(from); }
  static void store(double* to, Register x) { _mm512_storeu_pd(to, x); }

  static Mask less(Register x, Register y) { return _mm512_cmp_pd_mask(x, y, _CMP_LT_OQ); }
  static Mask equal(Register x, Register y) { return _mm512_cmp_pd_mask(x, y, _CMP_EQ_OQ); }
  static unsigned bits(Mask mask) { return mask; }
  static Register select(Mask mask, Register yes, Register no) {
    return _mm512_mask_blend_pd(mask, no, yes);
  }

  static Register absolute(Register x) { return _mm512_abs_pd(x); }
  static Register squareRoot(Register x) { return _mm512_sqrt_pd(x); }
  static Register multiplyAdd(Register x, Register y, Register z) {
    return _mm512_fmadd_pd(x, y, z);
  }
};

/// 16 lanes per register. Needs AVX-512 F and DQ.
struct Avx512 {
  using Value = float;
  using Double = Avx512Double;
  using Register = __m512;
  using Integers = int __attribute__((vector_size(64)));
  using Mask = __mmask16;
  static constexpr int width = 16;
  static constexpr bool dividesSlowly() { return false; }

  static Register broadcast(float x) { return _mm512_set1_ps(x); }
  static Register load(const float* from) { return _mm512_loadu_ps(from); }
  static void store(float* to, Register x) { _mm512_storeu_ps(to, x); }

  static void loadTriples(const float* from, Register& first, Register& second, Register& third) {
    const Register a = load(from), b = load(from + 16), c = load(from + 32);
    // The 16 values of a coordinate are in different lanes of the three registers. They merge into
    // one register, in which consecutive values are three lanes apart.
    const auto pick = [](Register p, Register q, Register r, int start) {
      const Register merged = _mm512_mask_blend_ps(0x2492, _mm512_mask_blend_ps(0x4924, p, q), r);
      const __m512i lane = _mm512_setr_epi32(0, 3, 6, 9, 12, 15, 2, 5, 8, 11, 14, 1, 4, 7, 10, 13);
      return _mm512_permutexvar_ps(_mm512_add_epi32(lane, _mm512_set1_epi32(start)), merged);
    };
    first = pick(a, b, c, 0);
    second = pick(b, c, a, 1);
    third = pick(c, a, b, 2);
  }
  static void storePairs(float* to, Register first, Register second) {
    const __m512i low = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    const __m512i high = _mm512_add_epi32(low, _mm512_set1_epi32(8));
    store(to, _mm512_permutex2var_ps(first, low, second));
    store(to + 16, _mm512_permutex2var_ps(first, high, second));
  }

  static void gatherTriples(const float* from, const int* indices, Register& first,
                            Register& second, Register& third) {
    const auto at = [&](int lane) {
      return _mm_loadu_ps(from + std::ptrdiff_t{3} * indices[lane]);
    };
    const auto fourth = [&](int lane) {
      Register triples = _mm512_castps128_ps512(at(lane));
      triples = _mm512_insertf32x4(triples, at(lane + 4), 1);
      triples = _mm512_insertf32x4(triples, at(lane + 8), 2);
      return _mm512_insertf32x4(triples, at(lane + 12), 3);
    };
    const Register a = fourth(0), b = fourth(1), c = fourth(2), d = fourth(3);
    const Register ab = _mm512_unpacklo_ps(a, b), cd = _mm512_unpacklo_ps(c, d);
    first = _mm512_shuffle_ps(ab, cd, 0x44);
    second = _mm512_shuffle_ps(ab, cd, 0xEE);
    third = _mm512_shuffle_ps(_mm512_unpackhi_ps(a, b), _mm512_unpackhi_ps(c, d), 0x44);
  }
  static void storeIndices(int* to, unsigned lanes, int first) {
    const __m512i lane = _mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
    const __m512i all = _mm512_add_epi32(lane, _mm512_set1_epi32(first));
    _mm512_storeu_si512(to, _mm512_maskz_compress_epi32(static_cast<Mask>(lanes), all));
  }

  static Double::Register lower(Register x) { return _mm512_cvtps_pd(_mm512_castps512_ps256(x)); }
  static Double::Register upper(Register x) {
    return _mm512_cvtps_pd(_mm512_extractf32x8_ps(x, 1));
  }
  static Register joined(Double::Register low, Double::Register high) {
    return _mm512_insertf32x8(_mm512_castps256_ps512(_mm512_cvtpd_ps(low)), _mm512_cvtpd_ps(high),
                              1);
  }

  static Mask less(Register x, Register y) { return _mm512_cmp_ps_mask(x, y, _CMP_LT_OQ); }
  static Mask lessOrEqual(Register x, Register y) { return _mm512_cmp_ps_mask(x, y, _CMP_LE_OQ); }
  static Mask equal(Register x, Register y) { return _mm512_cmp_ps_mask(x, y, _CMP_EQ_OQ); }
  static Mask logicalAnd(Mask p, Mask q) { return static_cast<Mask>(p & q); }
  static Mask logicalOr(Mask p, Mask q) { return static_cast<Mask>(p | q); }
  static unsigned bits(Mask mask) { return mask; }
  static Register select(Mask mask, Register yes, Register no) {
    return _mm512_mask_blend_ps(mask, no, yes);
  }

  static Register inverseEstimate(Register x) { return _mm512_rcp14_ps(x); }
  static Register rootEstimate(Register x) { return x * _mm512_rsqrt14_ps(x); }
  static float largest(Register x) { return _mm512_reduce_max_ps(x); }

  static Register absolute(Register x) { return _mm512_abs_ps(x); }
  static Register squareRoot(Register x) { return _mm512_sqrt_ps(x); }
  static Register secondQuotient(Register x, Register y) { return x / y; }
  static Register multiplyAdd(Register x, Register y, Register z) {
    return _mm512_fmadd_ps(x, y, z);
  }
};

/// For machines whose division is the bottleneck: one of two quotients is computed by
/// multiplications.
struct Avx512SlowDivision : Avx512 {
  static constexpr bool dividesSlowly() { return true; }

  /// Correctly rounded, like a division, in the SecondQuotientRange: there the quotient is not
  /// subnormal, and its remainder is a float.
  ///
  /// 1/y is an estimate, accurate to 2^-14, times the first terms of a geometric series. The
  /// quotient is then corrected by its remainder.
  static Register secondQuotient(Register x, Register y) {
    using Range = SecondQuotientRange;
    static_assert(Range::leastX / Range::mostY >= 0x1p-126f &&
                  Range::leastX >= 0x1p-149f * 0x1p47f);
    const Register estimate = _mm512_rcp14_ps(y);
    const Register error = _mm512_fnmadd_ps(y, estimate, _mm512_set1_ps(1));
    // Rounded up because of one y, the largest float below a power of two: its reciprocal is so
    // little above the midpoint of two floats that it would be rounded to the lower one.
    const Register series =
        _mm512_fmadd_round_ps(error, error, error, _MM_FROUND_TO_POS_INF | _MM_FROUND_NO_EXC);
    const Register inverse = multiplyAdd(estimate, series, estimate);
    const Register quotient = x * inverse;
    const Register remainder = _mm512_fnmadd_ps(y, quotient, x);
    return multiplyAdd(remainder, inverse, quotient);
  }

  static Register inverse(Register x) {
    const Register estimate = _mm512_rcp14_ps(x);
    return multiplyAdd(_mm512_fnmadd_ps(x, estimate, broadcast(1)), estimate, estimate);
  }
};

}  // namespace pistonfield
