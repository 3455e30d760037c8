#include "FastNearfield/nodes/NodeEvaluation.h"
#include "FastNearfield/nodes/Nodes.h"

namespace pistonfield {
namespace {
struct Neon;
}  // namespace

NodeSum<float> nodesNeon(const NodeImages<float>& nodes, int count, const NodeIntegrand<float>& f) {
  return NodeEvaluation<Neon, 4, float>::sum(nodes, count, f);
}

NodeSum<double> nodesNeon(const NodeImages<double>& nodes, int count,
                          const NodeIntegrand<double>& f) {
  return NodeEvaluation<Neon, 2, double>::sum(nodes, count, f);
}

}  // namespace pistonfield
