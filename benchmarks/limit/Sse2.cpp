#include "lanes/Sse2.h"

#include "benchmarks/limit/IntegrandOnly.h"

std::int64_t limit::evaluateSse2(float* memory, bool ahead) {
  return evaluateIntegrand<pistonfield::Sse2>(memory, ahead);
}
