#include "lanes/Neon.h"

#include "FastNearfield/packs/PackEvaluation.h"

// PackEvaluation.h, compiled for NEON.

namespace pistonfield {

void packedNeon(const float* positions, Complex* pressures, int count, float halfWidth,
                float halfHeight, float k, const SymmetricRule<float>& rule,
                const CallersDoubles& callers) {
  PackEvaluation<Neon>(positions, pressures, count, halfWidth, halfHeight, k, rule, callers).run();
}

}  // namespace pistonfield
