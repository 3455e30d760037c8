#include "FastNearfield/nodes/NodeEvaluation.h"
#include "FastNearfield/nodes/Nodes.h"

namespace pistonfield {
namespace {
struct Avx512;
}  // namespace

NodeSum<float> nodesAvx512(const NodeImages<float>& nodes, int count,
                           const NodeIntegrand<float>& f) {
  return NodeEvaluation<Avx512, 16, float>::sum(nodes, count, f);
}

NodeSum<double> nodesAvx512(const NodeImages<double>& nodes, int count,
                            const NodeIntegrand<double>& f) {
  return NodeEvaluation<Avx512, 8, double>::sum(nodes, count, f);
}

}  // namespace pistonfield
