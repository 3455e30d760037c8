#include "emulation/lanes/Avx512.h"

#include "FastNearfield/packed/EvaluatePacks.h"
#include "FastNearfield/packed/Packed.h"

namespace pistonfield {

void packedAvx512(PointBatch& batch, float a, float b, float k, const SymmetricRule<float>& rule) {
  PackEvaluation<emulation::Avx512>(batch, a, b, k, rule).run();
}

}  // namespace pistonfield
