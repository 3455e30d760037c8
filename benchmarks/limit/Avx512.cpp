#include "lanes/Avx512.h"

#include "benchmarks/limit/IntegrandOnly.h"
#include "lanes/InstructionSet.h"

std::int64_t limit::evaluateAvx512(float* memory, bool ahead) {
  return pistonfield::dividesSlowly()
             ? evaluateIntegrand<pistonfield::Avx512SlowDivision>(memory, ahead)
             : evaluateIntegrand<pistonfield::Avx512>(memory, ahead);
}
