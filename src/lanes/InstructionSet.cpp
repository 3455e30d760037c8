#include "lanes/InstructionSet.h"

#include <atomic>

#if defined(__x86_64__)
#include <cpuid.h>
#endif

namespace pistonfield {
namespace {

std::atomic<InstructionSet> limit{InstructionSet::AVX512};

#if defined(__x86_64__)

// Not __builtin_cpu_supports, which is always false with a run-time library that does not read the
// processor's features, as that of some builds of clang.

bool contains(unsigned bits, unsigned needed) { return (bits & needed) == needed; }

/// Whether the operating system keeps these registers when it switches threads.
bool keepsRegisters(unsigned needed) {
  unsigned low, high;
  __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return contains(low, needed);
}

InstructionSet newestOfProcessor() {
  constexpr unsigned fmaOsxsaveAvx = 1U << 12 | 1U << 27 | 1U << 28;
  constexpr unsigned avx2 = 1U << 5, avx512fAndDq = 1U << 16 | 1U << 17;
  constexpr unsigned ymm = 0x06, zmm = 0xe6;
  unsigned eax, ebx, ecx, edx;
  if (!__get_cpuid(1, &eax, &ebx, &ecx, &edx) || !contains(ecx, fmaOsxsaveAvx) ||
      !keepsRegisters(ymm) || !__get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) ||
      !contains(ebx, avx2))
    return InstructionSet::OLDEST;
  return contains(ebx, avx512fAndDq) && keepsRegisters(zmm) ? InstructionSet::AVX512
                                                            : InstructionSet::AVX2;
}

#endif

}  // namespace

bool has(InstructionSet set) {
#if defined(__x86_64__)
  static const InstructionSet newest = newestOfProcessor();
  return set <= newest;
#else
  return set == InstructionSet::OLDEST;
#endif
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
  static const bool isIntel = [] {
    unsigned eax, ebx, ecx, edx;
    return __get_cpuid(0, &eax, &ebx, &ecx, &edx) && ebx == signature_INTEL_ebx;
  }();
  return isIntel;
#else
  return false;
#endif
}

}  // namespace pistonfield
