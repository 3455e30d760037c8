#include "emulation/lanes/Avx512.h"

#include "benchmarks/limit/IntegrandOnly.h"
#include "core/InstructionSet.h"

std::int64_t limit::evaluateAvx512(float* memory, bool ahead) {
  return pistonfield::dividesSlowly()
             ? evaluateIntegrand<emulation::Avx512SlowDivision>(memory, ahead)
             : evaluateIntegrand<emulation::Avx512>(memory, ahead);
}
