#include "FastNearfield/intervals/PistonOnPoints.h"

namespace pistonfield {

#if defined(__x86_64__)
AddPiston* addPiston(InstructionSet set, bool slowDivision) {
  switch (set) {
    case InstructionSet::AVX512:
      return slowDivision ? addPistonAvx512SlowDivision : addPistonAvx512;
    case InstructionSet::AVX2:
      return addPistonAvx2;
    default:
      return addPistonSse2;
  }
}
#else
AddPiston* addPiston(InstructionSet /*set*/, bool /*slowDivision*/) { return addPistonNeon; }
#endif

}  // namespace pistonfield
