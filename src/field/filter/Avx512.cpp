#include "lanes/Avx512.h"

#include "field/filter/FilterInPacks.h"

// FilterInPacks.h, compiled for AVX-512.

namespace pistonfield {

const AddFilteredInPacks addFilteredAvx512 = filtersOf<Avx512>;

}  // namespace pistonfield
