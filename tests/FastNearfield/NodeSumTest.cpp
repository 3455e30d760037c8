#include "FastNearfield/nodes/NodeSum.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "FastNearfield/QuadratureRule.h"

// The sum over the nodes of a rule, computed by the code for each instruction set of this machine.

using pistonfield::InstructionSet;
using pistonfield::NodeSum;

namespace {

template <class T>
struct Evaluation {
  NodeSum<T> sum;
  std::vector<T> mappedX, mappedW;
};

/// The sum on [−0.3, 1.1] if `map` is set, and otherwise with images that were stored before.
template <class T>
Evaluation<T> evaluate(InstructionSet set, const pistonfield::QuadratureRule<T>& rule, bool map) {
  // The arrays are longer than needed, to detect a write past the end.
  const auto n = static_cast<std::size_t>(rule.order);
  Evaluation<T> result{{}, std::vector<T>(n + 16, T(7)), std::vector<T>(n + 16, T(7))};
  if (!map)
    for (std::size_t i = 0; i < n; ++i) {
      result.mappedX[i] = T(0.25) + T(0.01) * static_cast<T>(i);
      result.mappedW[i] = T(0.125);
    }
  result.sum = pistonfield::sumNodes<T>(set)(
      {rule.x, rule.w, result.mappedX.data(), result.mappedW.data(), map, T(0.7), T(0.4)},
      rule.order, {T(0.01), T(321), T(0.6), T(0.5), T(-0.8)});
  return result;
}

template <class T>
class NodeSumTest : public testing::Test {};

using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(NodeSumTest, Precisions);

TYPED_TEST(NodeSumTest, EveryInstructionSetGivesTheSameBitsAndAnImageOfEachNode) {
  using T = TypeParam;
  for (const InstructionSet set :
       {InstructionSet::OLDEST, InstructionSet::AVX2, InstructionSet::AVX512})
    for (int n = 1; n <= 200 && pistonfield::has(set); n += n < 80 ? 1 : 15) {
      const pistonfield::QuadratureRule<T> rule(n);
      for (const bool map : {true, false}) {
        const Evaluation<T> oldest = evaluate(InstructionSet::OLDEST, rule, map);
        const Evaluation<T> other = evaluate(set, rule, map);
        ASSERT_TRUE(std::isfinite(oldest.sum.re)) << n;
        ASSERT_EQ(other.sum.re, oldest.sum.re) << n;
        ASSERT_EQ(other.sum.im, oldest.sum.im) << n;
        for (std::size_t i = 0; map && i < other.mappedX.size(); ++i) {
          const bool node = i < static_cast<std::size_t>(n);
          ASSERT_EQ(other.mappedX[i], node ? T(0.7) * rule.x[i] + T(0.4) : T(7)) << n << ", " << i;
          ASSERT_EQ(other.mappedW[i], node ? T(0.7) * rule.w[i] : T(7)) << n << ", " << i;
        }
      }
    }
}

}  // namespace
