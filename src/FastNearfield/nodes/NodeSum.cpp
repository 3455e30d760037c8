#include "FastNearfield/nodes/NodeSum.h"

namespace pistonfield {

template <class T>
SumNodes<T>* sumNodes([[maybe_unused]] InstructionSet set) {
#if defined(__x86_64__)
  switch (set) {
    case InstructionSet::AVX512:
      return nodesAvx512;
    case InstructionSet::AVX2:
      return nodesAvx2;
    default:
      return nodesSse2;
  }
#else
  return nodesNeon;
#endif
}

template SumNodes<float>* sumNodes(InstructionSet set);
template SumNodes<double>* sumNodes(InstructionSet set);

}  // namespace pistonfield
