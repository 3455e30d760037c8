#pragma once

#include <cstdint>

#include "FastNearfield/PointPressure.h"
#include "emulation/Lanes.h"

namespace limit {

/// The integrand at d² + σ², for one pair of σ after the other and two d, from registers and into
/// registers. `memory` holds what differs from lane to lane, z and σ, and then receives the sums, lest
/// anybody leave out what is not wanted.
template <class Set>
std::int64_t evaluateIntegrand(float* memory, bool ahead) {
  using Pack = emulation::Lanes<Set>;
  using Integrand = pistonfield::HalfAngleIntegrand<Pack>;
  using Nodes = pistonfield::NodePair<Pack, Integrand>;
  constexpr int rounds = 40000;
  const Integrand f(Pack::load(memory), 7.0f);
  const Pack dd1(0.25f), dd2(1.5f), step(1e-3f);
  pistonfield::ComplexPair<Pack> first{Pack(0.0f), Pack(0.0f)}, second = first;
  Pack plus = Pack::load(memory + Pack::count), minus = dd2 - plus;
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
  (first + second).re.store(memory);
  (first + second).im.store(memory + Pack::count);
  return std::int64_t{4} * rounds * Pack::count;
}

using EvaluateIntegrand = std::int64_t(float* memory, bool ahead);
EvaluateIntegrand evaluateSse2, evaluateAvx2, evaluateAvx512, evaluateNeon;

}  // namespace limit
