#include "FastNearfield/PackedPressure.h"

#include "FastNearfield/packed/Packed.h"

namespace pistonfield {

#if defined(__x86_64__)
PackedPressure* packedPressure(InstructionSet set) {
  switch (set) {
    case InstructionSet::AVX512:
      return packedAvx512;
    case InstructionSet::AVX2:
      return packedAvx2;
    default:
      return packedSse2;
  }
}
#else
PackedPressure* packedPressure(InstructionSet /*set*/) { return packedNeon; }
#endif

}  // namespace pistonfield
