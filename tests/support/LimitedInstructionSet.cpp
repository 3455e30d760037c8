#include <cstdio>
#include <cstdlib>
#include <string>

#include "lanes/InstructionSet.h"

// In programs and modules of the tests and benchmarks, the environment variable
// PISTONFIELD_INSTRUCTION_SET, which is "oldest", "avx2" or "avx512", limits the instruction set,
// so that they compute as another machine would. Installed files do not read this variable.

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
