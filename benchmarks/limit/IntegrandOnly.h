#pragma once

#include <cstdint>

#include "FastNearfield/PointPressure.h"
#include "emulation/Lanes.h"

namespace limit {

/// The integrand at d² + σ² for one σ after the other, four at a time, as in a kernel's loop: from
/// registers and into registers. `memory` holds what differs from lane to lane, z and σ, and then
/// receives the sums, lest anybody leave out what is the same in two registers or is not wanted.
template <class Set>
std::int64_t evaluateIntegrand(float* memory) {
  using Pack = emulation::Lanes<Set>;
  constexpr int rounds = 20000;
  const pistonfield::HalfAngleIntegrand<Pack> f(Pack::load(memory), 7.0f);
  const Pack dd(0.25f), step(1e-3f);
  const auto at = [&](Pack sigma) { return f.at(dd + sigma * sigma); };
  pistonfield::ComplexPair<Pack> first{Pack(0.0f), Pack(0.0f)}, second = first;
  Pack sigma = Pack::load(memory + Pack::count);
  for (int n = 0; n < rounds; ++n) {
    const Pack sigma2 = sigma + step;
    const Pack sigma3 = sigma2 + step;
    const Pack sigma4 = sigma3 + step;
    first = first + (at(sigma) + at(sigma2));
    second = second + (at(sigma3) + at(sigma4));
    sigma = sigma4 + step;
  }
  (first + second).re.store(memory);
  (first + second).im.store(memory + Pack::count);
  return std::int64_t{4} * rounds * Pack::count;
}

using EvaluateIntegrand = std::int64_t(float* memory);
EvaluateIntegrand evaluateSse2, evaluateAvx2, evaluateAvx512, evaluateNeon;

}  // namespace limit
