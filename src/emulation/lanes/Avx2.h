#pragma once

#include <immintrin.h>

namespace emulation {

/// 8 lanes a register. Needs AVX2 and FMA.
struct Avx2 {
  using Register = __m256;
  using Mask = __m256;
  static constexpr int width = 8;

  static Register broadcast(float x) { return _mm256_set1_ps(x); }
  static Register load(const float* from) { return _mm256_loadu_ps(from); }
  static void store(float* to, Register x) { _mm256_storeu_ps(to, x); }

  static Mask less(Register x, Register y) { return _mm256_cmp_ps(x, y, _CMP_LT_OQ); }
  static Mask notAbove(Register x, Register y) { return _mm256_cmp_ps(x, y, _CMP_LE_OQ); }
  static Mask equal(Register x, Register y) { return _mm256_cmp_ps(x, y, _CMP_EQ_OQ); }
  static Mask both(Mask p, Mask q) { return _mm256_and_ps(p, q); }
  static Mask either(Mask p, Mask q) { return _mm256_or_ps(p, q); }
  static unsigned bits(Mask mask) { return static_cast<unsigned>(_mm256_movemask_ps(mask)); }
  static Register select(Mask mask, Register yes, Register no) {
    return _mm256_blendv_ps(no, yes, mask);
  }

  static Register absolute(Register x) { return _mm256_andnot_ps(_mm256_set1_ps(-0.0f), x); }
  static Register squareRoot(Register x) { return _mm256_sqrt_ps(x); }
  static Register nearestInteger(Register x) {
    return _mm256_round_ps(x, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
  }
  static Register multiplyAdd(Register x, Register y, Register z) {
    return _mm256_fmadd_ps(x, y, z);
  }
};

}  // namespace emulation
