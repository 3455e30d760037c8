#include "field/bins/PulseOnPoints.h"

namespace pistonfield {

PulseFunctions pulseFunctions([[maybe_unused]] InstructionSet set) {
#if defined(__x86_64__)
  switch (set) {
    case InstructionSet::AVX512:
      return pulseFunctionsAvx512;
    case InstructionSet::AVX2:
      return pulseFunctionsAvx2;
    default:
      return pulseFunctionsSse2;
  }
#else
  return pulseFunctionsNeon;
#endif
}

}  // namespace pistonfield
