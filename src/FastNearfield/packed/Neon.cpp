#include "emulation/lanes/Neon.h"

#include "FastNearfield/packed/EvaluatePacks.h"
#include "FastNearfield/packed/Packed.h"

namespace pistonfield {

void packedNeon(PointBatch& batch, float a, float b, float k, const SymmetricRule<float>& rule) {
  PackEvaluation<emulation::Neon>(batch, a, b, k, rule).run();
}

}  // namespace pistonfield
