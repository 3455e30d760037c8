#include "field/filter/RowFilter.h"

namespace pistonfield {

AddFilteredInPacks addFiltered([[maybe_unused]] InstructionSet set) {
#if defined(__x86_64__)
  switch (set) {
    case InstructionSet::AVX512:
      return addFilteredAvx512;
    case InstructionSet::AVX2:
      return addFilteredAvx2;
    default:
      return addFilteredSse2;
  }
#else
  return addFilteredNeon;
#endif
}

}  // namespace pistonfield
