#pragma once

#include <immintrin.h>

namespace emulation {

/// 16 lanes a register. Needs AVX-512 F and DQ.
struct Avx512 {
  using Register = __m512;
  using Mask = __mmask16;
  static constexpr int width = 16;

  static Register broadcast(float x) { return _mm512_set1_ps(x); }
  static Register load(const float* from) { return _mm512_loadu_ps(from); }
  static void store(float* to, Register x) { _mm512_storeu_ps(to, x); }

  static Mask less(Register x, Register y) { return _mm512_cmp_ps_mask(x, y, _CMP_LT_OQ); }
  static Mask notAbove(Register x, Register y) { return _mm512_cmp_ps_mask(x, y, _CMP_LE_OQ); }
  static Mask equal(Register x, Register y) { return _mm512_cmp_ps_mask(x, y, _CMP_EQ_OQ); }
  static Mask both(Mask p, Mask q) { return static_cast<Mask>(p & q); }
  static Mask either(Mask p, Mask q) { return static_cast<Mask>(p | q); }
  static unsigned bits(Mask mask) { return mask; }
  static Register select(Mask mask, Register yes, Register no) {
    return _mm512_mask_blend_ps(mask, no, yes);
  }

  static Register absolute(Register x) { return _mm512_abs_ps(x); }
  static Register squareRoot(Register x) { return _mm512_sqrt_ps(x); }
  static Register nearestInteger(Register x) {
    return _mm512_roundscale_ps(x, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
  }
  static Register multiplyAdd(Register x, Register y, Register z) {
    return _mm512_fmadd_ps(x, y, z);
  }
};

}  // namespace emulation
