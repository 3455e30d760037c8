#include <cstdio>
#include <cstdlib>
#include <string>

#include "lanes/InstructionSet.h"

// In programs and modules of the tests and the benchmarks: the environment's
// PISTONFIELD_INSTRUCTION_SET, "oldest", "avx2" or "avx512", limits the instruction set, to see
// what another machine computes. What is installed has no such variable.

namespace {

using pistonfield::InstructionSet;

InstructionSet namedByTheEnvironment() {
  const char* const set = std::getenv("PISTONFIELD_INSTRUCTION_SET");
  const std::string name = set ? set : "avx512";
  if (name == "oldest") return InstructionSet::OLDEST;
  if (name == "avx2") return InstructionSet::AVX2;
  if (name == "avx512") return InstructionSet::AVX512;
  std::fprintf(stderr, "PISTONFIELD_INSTRUCTION_SET is \"%s\"; it can be oldest, avx2 or avx512\n",
               set);
  std::_Exit(2);
}

[[maybe_unused]] const InstructionSet before =
    pistonfield::limitInstructionSet(namedByTheEnvironment());

}  // namespace
