#include "lanes/Avx2.h"

#include "FastNearfield/packs/PackEvaluation.h"

// PackEvaluation.h, compiled for AVX2.

namespace pistonfield {

void packedAvx2(const float* positions, Complex* pressures, int count, float halfWidth,
                float halfHeight, float k, const SymmetricRule<float>& rule,
                const CallersDoubles& callers) {
  PackEvaluation<Avx2>(positions, pressures, count, halfWidth, halfHeight, k, rule, callers).run();
}

}  // namespace pistonfield
