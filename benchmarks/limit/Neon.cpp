#include "lanes/Neon.h"

#include "benchmarks/limit/IntegrandOnly.h"

std::int64_t limit::evaluateNeon(float* memory, bool ahead) {
  return evaluateIntegrand<pistonfield::Neon>(memory, ahead);
}
