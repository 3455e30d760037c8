#include "lanes/Avx512.h"

#include "field/bins/PulseInPacks.h"

// PulseInPacks.h, compiled for AVX-512.

namespace pistonfield {

const PulseFunctions pulseFunctionsAvx512 = pulseFunctionsOf<Avx512>;

}  // namespace pistonfield
