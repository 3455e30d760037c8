#include "FastNearfield/packs/PackedPressure.h"

namespace pistonfield {

#if defined(__x86_64__)
PackedPressure* packedPressure(InstructionSet set, bool slowDivision) {
  switch (set) {
    case InstructionSet::AVX512:
      return slowDivision ? packedAvx512SlowDivision : packedAvx512;
    case InstructionSet::AVX2:
      return packedAvx2;
    default:
      return packedSse2;
  }
}
#else
PackedPressure* packedPressure(InstructionSet /*set*/, bool /*slowDivision*/) { return packedNeon; }
#endif

}  // namespace pistonfield
