#include "lanes/Neon.h"

#include "FastNearfield/packs/PackEvaluation.h"

namespace pistonfield {

void packedNeon(const float* positions, Complex* pressures, int count, float a, float b, float k,
                const SymmetricRule<float>& rule) {
  evaluatePacks<Neon>(positions, pressures, count, a, b, k, rule);
}

}  // namespace pistonfield
