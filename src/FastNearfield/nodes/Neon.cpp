#include "lanes/Neon.h"
#include "FastNearfield/nodes/NodeEvaluation.h"

// NodeEvaluation.h, compiled for NEON.

namespace pistonfield {

NodeSum<float> nodesNeon(const NodeImages<float>& nodes, int count, const NodeIntegrand<float>& f) {
  return NodeEvaluation<Neon, Neon::width, float>::sum(nodes, count, f);
}

NodeSum<double> nodesNeon(const NodeImages<double>& nodes, int count,
                          const NodeIntegrand<double>& f) {
  return NodeEvaluation<Neon, Neon::width / 2, double>::sum(nodes, count, f);
}

}  // namespace pistonfield
