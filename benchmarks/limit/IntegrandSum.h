#pragma once

#include "FastNearfield/point/HalfAngleIntegrand.h"

namespace limit {

/// The sum of the integrand at d² + σ² over successive pairs of σ and two values of d: four
/// evaluations per round, with all operands in registers. If `ahead` is set, each round starts the
/// roots and quotients of the next one, as the kernels on packs do.
template <class V>
PISTONFIELD_HOST_DEVICE inline pistonfield::ComplexPair<V> integrandSum(V z, V sigma, int rounds,
                                                                        bool ahead) {
  using pistonfield::ComplexPair;
  using pistonfield::multiplyAdd;
  struct Round {
    V D[4], path[4];
  };
  const pistonfield::HalfAngleIntegrand<V> f(z, pistonfield::HalfPhase<V>(7.0f));
  const V dd1(0.25f), dd2(1.5f), step(1e-3f);
  ComplexPair<V> sums[2] = {{V(0.0f), V(0.0f)}, {V(0.0f), V(0.0f)}};
  V plus = sigma, minus = dd2 - sigma;
  const auto following = [&]() __attribute__((always_inline)) {
    plus = plus + step;
    minus = minus - step;
    Round round;
    round.D[0] = multiplyAdd(plus, plus, dd1);
    round.D[1] = multiplyAdd(minus, minus, dd1);
    round.D[2] = multiplyAdd(plus, plus, dd2);
    round.D[3] = multiplyAdd(minus, minus, dd2);
    return round;
  };
  const auto start = [&](Round & round, int n) __attribute__((always_inline)) {
    round.path[n] = f.path(round.D[n]);
  };
  const auto add = [&](const Round& round, int n) __attribute__((always_inline)) {
    const auto value = f.value(round.D[n], round.path[n]);
    sums[n / 2] = multiplyAdd(value.scale, value.value, sums[n / 2]);
  };
  if (ahead) {
    Round round = following();
    for (int n = 0; n < 4; ++n) start(round, n);
    for (int i = 0; i < rounds; ++i) {
      Round next = following();
      for (int n = 0; n < 4; ++n) {
        start(next, n);
        add(round, n);
      }
      round = next;
    }
  } else {
    for (int i = 0; i < rounds; ++i) {
      Round round = following();
      for (int n = 0; n < 4; ++n) {
        start(round, n);
        add(round, n);
      }
    }
  }
  return sums[0] + sums[1];
}

}  // namespace limit
