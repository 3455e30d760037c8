#include "lanes/Sse2.h"

#include "FastNearfield/packs/PackEvaluation.h"

// PackEvaluation.h, compiled for SSE2.

namespace pistonfield {

void packedSse2(const float* positions, Complex* pressures, int count, float halfWidth,
                float halfHeight, float k, const SymmetricRule<float>& rule,
                const CallersDoubles& callers) {
  PackEvaluation<Sse2>(positions, pressures, count, halfWidth, halfHeight, k, rule, callers).run();
}

}  // namespace pistonfield
