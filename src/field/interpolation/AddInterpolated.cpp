#include "field/interpolation/AddInterpolated.h"

namespace pistonfield {

AddInterpolated* addInterpolated([[maybe_unused]] InstructionSet set) {
#if defined(__x86_64__)
  switch (set) {
    case InstructionSet::AVX512:
      return addInterpolatedAvx512;
    case InstructionSet::AVX2:
      return addInterpolatedAvx2;
    default:
      return addInterpolatedSse2;
  }
#else
  return addInterpolatedNeon;
#endif
}

}  // namespace pistonfield
