#pragma once

#include <cstdint>

#include "benchmarks/limit/IntegrandSum.h"
#include "lanes/Pack.h"

namespace limit {

/// `memory` holds z and σ, which differ from lane to lane. It receives the sums, so that the
/// compiler cannot remove the computation. Returns the number of evaluations.
template <class Set>
std::int64_t evaluateIntegrand(float* memory, bool ahead) {
  using Pack = pistonfield::Pack<Set>;
  constexpr int rounds = 40000;
  const pistonfield::ComplexPair<Pack> sum =
      integrandSum(Pack::load(memory), Pack::load(memory + Pack::lanes), rounds, ahead);
  sum.re.store(memory);
  sum.im.store(memory + Pack::lanes);
  return std::int64_t{4} * rounds * Pack::lanes;
}

using EvaluateIntegrand = std::int64_t(float* memory, bool ahead);
EvaluateIntegrand evaluateSse2, evaluateAvx2, evaluateAvx512, evaluateNeon;

}  // namespace limit
