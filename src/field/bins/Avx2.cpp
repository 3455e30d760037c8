#include "lanes/Avx2.h"

#include "field/bins/PulseInPacks.h"

// PulseInPacks.h, compiled for AVX2.

namespace pistonfield {

const PulseFunctions pulseFunctionsAvx2 = pulseFunctionsOf<Avx2>;

}  // namespace pistonfield
