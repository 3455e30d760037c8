#include "lanes/Avx2.h"

#include "FastNearfield/packs/PackEvaluation.h"

namespace pistonfield {

void packedAvx2(const float* positions, Complex* pressures, int count, float a, float b, float k,
                const SymmetricRule<float>& rule) {
  evaluatePacks<Avx2>(positions, pressures, count, a, b, k, rule);
}

}  // namespace pistonfield
