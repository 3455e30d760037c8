#include "lanes/Avx2.h"

#include "benchmarks/limit/IntegrandOnly.h"

std::int64_t limit::evaluateAvx2(float* memory, bool ahead) {
  return evaluateIntegrand<pistonfield::Avx2>(memory, ahead);
}
