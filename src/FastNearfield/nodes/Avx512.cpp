#include "lanes/Avx512.h"
#include "FastNearfield/nodes/NodeEvaluation.h"

// NodeEvaluation.h, compiled for AVX-512.

namespace pistonfield {

NodeSum<float> nodesAvx512(const NodeImages<float>& nodes, int count,
                           const NodeIntegrand<float>& f) {
  return NodeEvaluation<Avx512, Avx512::width, float>::sum(nodes, count, f);
}

NodeSum<double> nodesAvx512(const NodeImages<double>& nodes, int count,
                            const NodeIntegrand<double>& f) {
  return NodeEvaluation<Avx512, Avx512::width / 2, double>::sum(nodes, count, f);
}

}  // namespace pistonfield
