#include "emulation/lanes/Neon.h"

#include "benchmarks/limit/IntegrandOnly.h"

std::int64_t limit::evaluateNeon(float* memory) { return evaluateIntegrand<emulation::Neon>(memory); }
