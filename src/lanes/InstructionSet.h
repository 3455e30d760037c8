#pragma once

namespace pistonfield {

/// The instruction sets that packs are compiled for. The oldest is SSE2 on x86 and NEON on ARM.
enum class InstructionSet { OLDEST, AVX2, AVX512 };

/// Whether this machine has the set.
bool has(InstructionSet set);

/// The name that its maker gives to the set.
const char* nameOf(InstructionSet set);

/// The newest set that this machine has, up to the limit.
InstructionSet instructionSet();

/// Limits the sets that are used from now on, so that tests and benchmarks can compute as another
/// machine would. Returns the previous limit; the initial one is AVX512.
InstructionSet limitInstructionSet(InstructionSet newest);

/// Whether AVX-512 division is the bottleneck: true on Intel's processors, false on AMD's.
bool dividesSlowly();

}  // namespace pistonfield
