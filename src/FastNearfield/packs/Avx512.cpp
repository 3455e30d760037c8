#include "lanes/Avx512.h"

#include "FastNearfield/packs/PackEvaluation.h"

namespace pistonfield {

void packedAvx512(const float* positions, Complex* pressures, int count, float a, float b, float k,
                  const SymmetricRule<float>& rule) {
  evaluatePacks<Avx512>(positions, pressures, count, a, b, k, rule);
}

void packedAvx512SlowDivision(const float* positions, Complex* pressures, int count, float a,
                              float b, float k, const SymmetricRule<float>& rule) {
  evaluatePacks<Avx512, Avx512SlowDivision>(positions, pressures, count, a, b, k, rule);
}

}  // namespace pistonfield
