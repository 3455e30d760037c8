#include "benchmarks/limit/Limit.h"

#include "benchmarks/limit/IntegrandOnly.h"
#include "lanes/InstructionSet.h"

namespace limit {

volatile float sink;

std::int64_t integrandOnly(bool ahead) {
  using pistonfield::InstructionSet;
  float memory[64];
  for (int n = 0; n < 64; ++n) memory[n] = 1 + 0.01f * static_cast<float>(n);
#if defined(__x86_64__)
  const InstructionSet set = pistonfield::instructionSet();
  const std::int64_t nodes = set == InstructionSet::AVX512 ? evaluateAvx512(memory, ahead)
                             : set == InstructionSet::AVX2 ? evaluateAvx2(memory, ahead)
                                                           : evaluateSse2(memory, ahead);
#else
  const std::int64_t nodes = evaluateNeon(memory, ahead);
#endif
  sink = memory[0];  // so that the compiler cannot remove the work
  return nodes;
}

}  // namespace limit
