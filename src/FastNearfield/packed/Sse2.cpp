#include "emulation/lanes/Sse2.h"

#include "FastNearfield/packed/EvaluatePacks.h"
#include "FastNearfield/packed/Packed.h"

namespace pistonfield {

void packedSse2(const float* positions, Complex* pressures, int count, float a, float b, float k,
                const SymmetricRule<float>& rule) {
  evaluatePacks<emulation::Sse2>(positions, pressures, count, a, b, k, rule);
}

}  // namespace pistonfield
