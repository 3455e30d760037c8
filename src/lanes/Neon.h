#pragma once

#include <arm_neon.h>

#include <cstddef>

#include "lanes/StoreIndices.h"

namespace pistonfield {

/// 2 doubles per register.
struct NeonDouble {
  using Value = double;
  using Register = float64x2_t;
  using Integers = long long __attribute__((vector_size(16)));
  using Mask = uint64x2_t;
  static constexpr int width = 2;

  static Register broadcast(double x) { return vdupq_n_f64(x); }
  static Register load(const double* from) { return vld1q_f64(from); }
  static void store(double* to, Register x) { vst1q_f64(to, x); }

  static Mask less(Register x, Register y) { return vcltq_f64(x, y); }
  static Mask equal(Register x, Register y) { return vceqq_f64(x, y); }
  static unsigned bits(Mask mask) {
    return static_cast<unsigned>(vgetq_lane_u64(mask, 0) & 1) |
           static_cast<unsigned>(vgetq_lane_u64(mask, 1) & 2);
  }
  static Register select(Mask mask, Register yes, Register no) { return vbslq_f64(mask, yes, no); }

  static Register absolute(Register x) { return vabsq_f64(x); }
  static Register squareRoot(Register x) { return vsqrtq_f64(x); }
  static Register multiplyAdd(Register x, Register y, Register z) { return vfmaq_f64(z, x, y); }
};

/// 4 lanes per register. Every 64-bit ARM processor has it.
struct Neon {
  using Value = float;
  using Double = NeonDouble;
  using Register = float32x4_t;
  using Integers = int __attribute__((vector_size(16)));
  using Mask = uint32x4_t;
  static constexpr int width = 4;
  static constexpr bool dividesSlowly() { return false; }

  static Register broadcast(float x) { return vdupq_n_f32(x); }
  static Register load(const float* from) { return vld1q_f32(from); }
  static void store(float* to, Register x) { vst1q_f32(to, x); }

  static void loadTriples(const float* from, Register& first, Register& second, Register& third) {
    const float32x4x3_t triples = vld3q_f32(from);
    first = triples.val[0];
    second = triples.val[1];
    third = triples.val[2];
  }
  static void storePairs(float* to, Register first, Register second) {
    const float32x4x2_t pairs = {{first, second}};
    vst2q_f32(to, pairs);
  }

  static void gatherTriples(const float* from, const int* indices, Register& first,
                            Register& second, Register& third) {
    const auto at = [&](int lane) { return from + std::ptrdiff_t{3} * indices[lane]; };
    float32x4x3_t triples = vld3q_dup_f32(at(0));
    triples = vld3q_lane_f32(at(1), triples, 1);
    triples = vld3q_lane_f32(at(2), triples, 2);
    triples = vld3q_lane_f32(at(3), triples, 3);
    first = triples.val[0];
    second = triples.val[1];
    third = triples.val[2];
  }
  static void storeIndices(int* to, unsigned lanes, int first) {
    storeIndicesInLoop<Neon>(to, lanes, first);
  }

  static Double::Register lower(Register x) { return vcvt_f64_f32(vget_low_f32(x)); }
  static Double::Register upper(Register x) { return vcvt_high_f64_f32(x); }
  static Register joined(Double::Register low, Double::Register high) {
    return vcvt_high_f32_f64(vcvt_f32_f64(low), high);
  }

  static Mask less(Register x, Register y) { return vcltq_f32(x, y); }
  static Mask lessOrEqual(Register x, Register y) { return vcleq_f32(x, y); }
  static Mask equal(Register x, Register y) { return vceqq_f32(x, y); }
  static Mask logicalAnd(Mask p, Mask q) { return vandq_u32(p, q); }
  static Mask logicalOr(Mask p, Mask q) { return vorrq_u32(p, q); }
  static unsigned bits(Mask mask) {
    const uint32x4_t place = {1, 2, 4, 8};
    return vaddvq_u32(vandq_u32(mask, place));
  }
  static Register select(Mask mask, Register yes, Register no) { return vbslq_f32(mask, yes, no); }

  static Register inverseEstimate(Register x) { return 1.0f / x; }
  static Register rootEstimate(Register x) { return vsqrtq_f32(x); }
  static float largest(Register x) { return vmaxvq_f32(x); }

  static Register absolute(Register x) { return vabsq_f32(x); }
  static Register squareRoot(Register x) { return vsqrtq_f32(x); }
  static Register secondQuotient(Register x, Register y) { return x / y; }
  static Register multiplyAdd(Register x, Register y, Register z) { return vfmaq_f32(z, x, y); }
};

}  // namespace pistonfield
