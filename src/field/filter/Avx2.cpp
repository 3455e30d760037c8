#include "lanes/Avx2.h"

#include "field/filter/FilterInPacks.h"

// FilterInPacks.h, compiled for AVX2.

namespace pistonfield {

const AddFilteredInPacks addFilteredAvx2 = filtersOf<Avx2>;

}  // namespace pistonfield
