#pragma once

#include "FastNearfield/PointPressure.h"

namespace limit {

/// The sum of the integrand at d² + σ², for one pair of σ after the other and two d: four values a
/// round, from registers and into registers. `ahead`: with the roots and quotients of the next round
/// on their way, as the kernels do it.
template <class Lane>
__host__ __device__ inline pistonfield::ComplexPair<Lane> integrandSum(Lane z, Lane sigma,
                                                                       int rounds, bool ahead) {
  using Integrand = pistonfield::HalfAngleIntegrand<Lane>;
  using Nodes = pistonfield::NodePair<Lane, Integrand>;
  const Integrand f(z, 7.0f);
  const Lane dd1(0.25f), dd2(1.5f), step(1e-3f);
  pistonfield::ComplexPair<Lane> first{Lane(0.0f), Lane(0.0f)}, second = first;
  Lane plus = sigma, minus = dd2 - sigma;
  const auto following = [&] {
    plus = plus + step;
    minus = minus - step;
    return Nodes(f, dd1, dd2, plus * plus, minus * minus);
  };
  const auto add = [&](const Nodes& nodes) {
    first = first + nodes.first(f);
    second = second + nodes.second(f);
  };
  if (ahead) {
    Nodes nodes = following();
    for (int n = 0; n < rounds; ++n) {
      const Nodes next = following();
      add(nodes);
      nodes = next;
    }
  } else {
    for (int n = 0; n < rounds; ++n) add(following());
  }
  return first + second;
}

}  // namespace limit
