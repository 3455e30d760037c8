#pragma once

#include "FastNearfield/PointPressure.h"

namespace limit {

/// The sum of the integrand at d² + σ², for one pair of σ after the other and two d: four values a
/// round, from registers and into registers. `ahead`: with the roots and quotients of the next
/// round on their way, as the kernels do it.
template <class Lane>
__host__ __device__ inline pistonfield::ComplexPair<Lane> integrandSum(Lane z, Lane sigma,
                                                                       int rounds, bool ahead) {
  using pistonfield::ComplexPair;
  using pistonfield::multiplyAdd;
  using pistonfield::Nodes;
  const pistonfield::HalfAngleIntegrand<Lane> f(z, pistonfield::HalfPhase<Lane>(7.0f));
  const Lane dd1(0.25f), dd2(1.5f), step(1e-3f);
  ComplexPair<Lane> sums[2] = {{Lane(0.0f), Lane(0.0f)}, {Lane(0.0f), Lane(0.0f)}};
  Lane plus = sigma, minus = dd2 - sigma;
  const auto following = [&]() __attribute__((always_inline)) {
    plus = plus + step;
    minus = minus - step;
    Nodes<Lane> nodes;
    nodes.D[0] = multiplyAdd(plus, plus, dd1);
    nodes.D[1] = multiplyAdd(minus, minus, dd1);
    nodes.D[2] = multiplyAdd(plus, plus, dd2);
    nodes.D[3] = multiplyAdd(minus, minus, dd2);
    return nodes;
  };
  const auto start = [&](Nodes<Lane> & nodes, int n) __attribute__((always_inline)) {
    nodes.path[n] = f.path(nodes.D[n]);
  };
  const auto add = [&](const Nodes<Lane>& nodes, int n) __attribute__((always_inline)) {
    sums[n / 2] = f.addTo(sums[n / 2], nodes.D[n], nodes.path[n]);
  };
  if (ahead) {
    Nodes<Lane> nodes = following();
    for (int n = 0; n < 4; ++n) start(nodes, n);
    for (int round = 0; round < rounds; ++round) {
      Nodes<Lane> next = following();
      for (int n = 0; n < 4; ++n) {
        start(next, n);
        add(nodes, n);
      }
      nodes = next;
    }
  } else {
    for (int round = 0; round < rounds; ++round) {
      Nodes<Lane> nodes = following();
      for (int n = 0; n < 4; ++n) {
        start(nodes, n);
        add(nodes, n);
      }
    }
  }
  return sums[0] + sums[1];
}

}  // namespace limit
