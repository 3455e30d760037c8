#include "emulation/lanes/Sse2.h"

#include "FastNearfield/packed/EvaluatePacks.h"
#include "FastNearfield/packed/Packed.h"

namespace pistonfield {

void packedSse2(PointBatch& batch, float a, float b, float k, const SymmetricRule<float>& rule) {
  PackEvaluation<emulation::Sse2>(batch, a, b, k, rule).run();
}

}  // namespace pistonfield
