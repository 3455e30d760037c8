#include "lanes/Neon.h"

#include "field/bins/PulseInPacks.h"

// PulseInPacks.h, compiled for NEON.

namespace pistonfield {

const PulseFunctions pulseFunctionsNeon = pulseFunctionsOf<Neon>;

}  // namespace pistonfield
