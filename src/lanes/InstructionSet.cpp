#include "lanes/InstructionSet.h"

#include <atomic>

namespace pistonfield {
namespace {

std::atomic<InstructionSet> limit{InstructionSet::AVX512};

}  // namespace

bool has(InstructionSet set) {
#if defined(__x86_64__)
  if (set == InstructionSet::AVX512)
    return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq");
  if (set == InstructionSet::AVX2)
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
#endif
  return set == InstructionSet::OLDEST;
}

const char* nameOf(InstructionSet set) {
  switch (set) {
    case InstructionSet::AVX512:
      return "AVX-512";
    case InstructionSet::AVX2:
      return "AVX2";
    default:
#if defined(__aarch64__) || defined(_M_ARM64)
      return "NEON";
#else
      return "SSE2";
#endif
  }
}

InstructionSet instructionSet() {
  const InstructionSet newest = limit;
  if (newest >= InstructionSet::AVX512 && has(InstructionSet::AVX512))
    return InstructionSet::AVX512;
  if (newest >= InstructionSet::AVX2 && has(InstructionSet::AVX2)) return InstructionSet::AVX2;
  return InstructionSet::OLDEST;
}

InstructionSet limitInstructionSet(InstructionSet newest) { return limit.exchange(newest); }

bool dividesSlowly() {
#if defined(__x86_64__)
  return __builtin_cpu_is("intel");
#else
  return false;
#endif
}

}  // namespace pistonfield
