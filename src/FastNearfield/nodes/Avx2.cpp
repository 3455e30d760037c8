#include "lanes/Avx2.h"
#include "FastNearfield/nodes/NodeEvaluation.h"

// NodeEvaluation.h, compiled for AVX2.

namespace pistonfield {

NodeSum<float> nodesAvx2(const NodeImages<float>& nodes, int count, const NodeIntegrand<float>& f) {
  return NodeEvaluation<Avx2, Avx2::width, float>::sum(nodes, count, f);
}

NodeSum<double> nodesAvx2(const NodeImages<double>& nodes, int count,
                          const NodeIntegrand<double>& f) {
  return NodeEvaluation<Avx2, Avx2::width / 2, double>::sum(nodes, count, f);
}

}  // namespace pistonfield
