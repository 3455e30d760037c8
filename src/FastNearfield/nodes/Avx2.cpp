#include "FastNearfield/nodes/NodeEvaluation.h"
#include "FastNearfield/nodes/Nodes.h"

namespace pistonfield {
namespace {
struct Avx2;
}  // namespace

NodeSum<float> nodesAvx2(const NodeImages<float>& nodes, int count, const NodeIntegrand<float>& f) {
  return NodeEvaluation<Avx2, 8, float>::sum(nodes, count, f);
}

NodeSum<double> nodesAvx2(const NodeImages<double>& nodes, int count,
                          const NodeIntegrand<double>& f) {
  return NodeEvaluation<Avx2, 4, double>::sum(nodes, count, f);
}

}  // namespace pistonfield
