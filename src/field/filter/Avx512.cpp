#include "lanes/Avx512.h"

#include "field/filter/FilterInPacks.h"

namespace pistonfield {

const AddFilteredInPacks addFilteredAvx512 = filtersOf<Avx512>;

}  // namespace pistonfield
