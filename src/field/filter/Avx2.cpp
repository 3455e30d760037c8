#include "lanes/Avx2.h"

#include "field/filter/FilterInPacks.h"

namespace pistonfield {

const AddFilteredInPacks addFilteredAvx2 = filtersOf<Avx2>;

}  // namespace pistonfield
