#include "lanes/Sse2.h"
#include "FastNearfield/nodes/NodeEvaluation.h"

// NodeEvaluation.h, compiled for SSE2.

namespace pistonfield {

NodeSum<float> nodesSse2(const NodeImages<float>& nodes, int count, const NodeIntegrand<float>& f) {
  return NodeEvaluation<Sse2, Sse2::width, float>::sum(nodes, count, f);
}

NodeSum<double> nodesSse2(const NodeImages<double>& nodes, int count,
                          const NodeIntegrand<double>& f) {
  return NodeEvaluation<Sse2, Sse2::width / 2, double>::sum(nodes, count, f);
}

}  // namespace pistonfield
