#include "lanes/Sse2.h"

#include "field/filter/FilterInPacks.h"

// FilterInPacks.h, compiled for SSE2.

namespace pistonfield {

const AddFilteredInPacks addFilteredSse2 = filtersOf<Sse2>;

}  // namespace pistonfield
