#pragma once

namespace pistonfield {

/// The instruction sets that code is compiled for beside the oldest that the processor's kind has,
/// which is SSE2 on x86 and NEON on ARM.
enum class InstructionSet { OLDEST, AVX2, AVX512 };

/// Whether this machine has it.
bool has(InstructionSet set);

/// The newest that this machine has, up to the limit.
InstructionSet instructionSet();

/// For tests and benchmarks, to compute what another machine computes: from now on no newer set
/// than this is used. Returns the limit so far, which is AVX512 at the start.
InstructionSet limitInstructionSet(InstructionSet newest);

/// Whether this machine, with AVX-512, takes longer for the divisions of a node than for all else
/// in it. Intel's processors do, AMD's do not.
bool dividesSlowly();

}  // namespace pistonfield
