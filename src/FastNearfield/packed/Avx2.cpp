#include "emulation/lanes/Avx2.h"

#include "FastNearfield/packed/EvaluatePacks.h"
#include "FastNearfield/packed/Packed.h"

namespace pistonfield {

void packedAvx2(PointBatch& batch, float a, float b, float k, const SymmetricRule<float>& rule) {
  PackEvaluation<emulation::Avx2>(batch, a, b, k, rule).run();
}

}  // namespace pistonfield
