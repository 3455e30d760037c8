#pragma once

#include "FastNearfield/PackedPressure.h"

// One for each instruction set, in a file of its own that is compiled for it.

namespace pistonfield {

PackedPressure packedSse2, packedAvx2, packedAvx512, packedAvx512SlowDivision, packedNeon;

}  // namespace pistonfield
