#include "lanes/Sse2.h"

#include "field/filter/FilterInPacks.h"

namespace pistonfield {

const AddFilteredInPacks addFilteredSse2 = filtersOf<Sse2>;

}  // namespace pistonfield
