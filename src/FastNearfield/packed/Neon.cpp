#include "emulation/lanes/Neon.h"

#include "FastNearfield/packed/EvaluatePacks.h"
#include "FastNearfield/packed/Packed.h"

namespace pistonfield {

void packedNeon(const float* positions, Complex* pressures, int count, float a, float b, float k,
                const SymmetricRule<float>& rule) {
  evaluatePacks<emulation::Neon>(positions, pressures, count, a, b, k, rule);
}

}  // namespace pistonfield
