#include "lanes/Neon.h"

#include "field/filter/FilterInPacks.h"

namespace pistonfield {

const AddFilteredInPacks addFilteredNeon = filtersOf<Neon>;

}  // namespace pistonfield
