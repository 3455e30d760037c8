#include "emulation/lanes/Avx512.h"

#include "benchmarks/limit/IntegrandOnly.h"

std::int64_t limit::evaluateAvx512(float* memory, bool ahead) {
  return evaluateIntegrand<emulation::Avx512>(memory, ahead);
}
