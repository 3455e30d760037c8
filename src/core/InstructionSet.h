#pragma once

namespace pistonfield {

/// The instruction sets that code is compiled for beside the oldest that the processor's kind has,
/// which is SSE2 on x86 and NEON on ARM.
enum class InstructionSet { OLDEST, AVX2, AVX512 };

/// Whether this machine has it.
bool has(InstructionSet set);

/// The newest that this machine has. The environment variable PISTONFIELD_INSTRUCTION_SET, one of
/// "oldest", "avx2" and "avx512", sets a limit, to see what another machine computes.
InstructionSet instructionSet();

/// Whether this machine, with AVX-512, takes longer for the divisions of a node than for all else
/// in it. Intel's processors do, AMD's do not.
bool dividesSlowly();

}  // namespace pistonfield
