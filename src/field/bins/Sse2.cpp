#include "lanes/Sse2.h"

#include "field/bins/PulseInPacks.h"

// PulseInPacks.h, compiled for SSE2.

namespace pistonfield {

const PulseFunctions pulseFunctionsSse2 = pulseFunctionsOf<Sse2>;

}  // namespace pistonfield
