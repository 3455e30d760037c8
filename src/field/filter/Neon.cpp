#include "lanes/Neon.h"

#include "field/filter/FilterInPacks.h"

// FilterInPacks.h, compiled for NEON.

namespace pistonfield {

const AddFilteredInPacks addFilteredNeon = filtersOf<Neon>;

}  // namespace pistonfield
