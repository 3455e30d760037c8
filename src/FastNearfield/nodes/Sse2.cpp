#include "FastNearfield/nodes/NodeEvaluation.h"
#include "FastNearfield/nodes/Nodes.h"

namespace pistonfield {
namespace {
struct Sse2;
}  // namespace

NodeSum<float> nodesSse2(const NodeImages<float>& nodes, int count, const NodeIntegrand<float>& f) {
  return NodeEvaluation<Sse2, 4, float>::sum(nodes, count, f);
}

NodeSum<double> nodesSse2(const NodeImages<double>& nodes, int count,
                          const NodeIntegrand<double>& f) {
  return NodeEvaluation<Sse2, 2, double>::sum(nodes, count, f);
}

}  // namespace pistonfield
