#pragma once

#include <cstdint>

#include "FastNearfield/PointPressure.h"
#include "emulation/Lanes.h"

namespace limit {

/// Four values at a time, as in a kernel's loop, from registers and into registers. `memory` holds
/// what differs from lane to lane, z and D, and then receives the sums, lest anybody leave out what
/// is the same in two registers or is not wanted.
template <class Set>
std::int64_t evaluateIntegrand(float* memory) {
  using Pack = emulation::Lanes<Set>;
  constexpr int rounds = 20000;
  const pistonfield::HalfAngleIntegrand<Pack> f(Pack::load(memory), 7.0f);
  const Pack step(1e-3f);
  pistonfield::ComplexPair<Pack> first{Pack(0.0f), Pack(0.0f)}, second = first;
  Pack D = Pack::load(memory + Pack::count);
  for (int n = 0; n < rounds; ++n) {
    const Pack D2 = D + step;
    const Pack D3 = D2 + step;
    const Pack D4 = D3 + step;
    first = first + (f.at(D) + f.at(D2));
    second = second + (f.at(D3) + f.at(D4));
    D = D4 + step;
  }
  (first + second).re.store(memory);
  (first + second).im.store(memory + Pack::count);
  return std::int64_t{4} * rounds * Pack::count;
}

using EvaluateIntegrand = std::int64_t(float* memory);
EvaluateIntegrand evaluateSse2, evaluateAvx2, evaluateAvx512, evaluateNeon;

}  // namespace limit
