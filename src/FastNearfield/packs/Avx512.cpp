#include "lanes/Avx512.h"

#include "FastNearfield/packs/PackEvaluation.h"

// PackEvaluation.h, compiled for AVX-512.

namespace pistonfield {

void packedAvx512(const float* positions, Complex* pressures, int count, float halfWidth,
                  float halfHeight, float k, const SymmetricRule<float>& rule,
                  const CallersDoubles& callers) {
  PackEvaluation<Avx512>(positions, pressures, count, halfWidth, halfHeight, k, rule, callers)
      .run();
}

void packedAvx512SlowDivision(const float* positions, Complex* pressures, int count,
                              float halfWidth, float halfHeight, float k,
                              const SymmetricRule<float>& rule, const CallersDoubles& callers) {
  PackEvaluation<Avx512, Avx512SlowDivision>(positions, pressures, count, halfWidth, halfHeight, k,
                                             rule, callers)
      .run();
}

}  // namespace pistonfield
