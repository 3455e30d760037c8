#pragma once

#include "FastNearfield/point/HalfTurns.h"

namespace pistonfield {

/// Writes cos(2πt) and sin(2πt) for `count` numbers t of turns, of up to 2^51 in magnitude.
inline void cosineAndSine(const double* turns, int count, double* cosines, double* sines) {
  constexpr double roundsOff = 0x1.8p52;  // above, a double has no digits after the point
  for (int n = 0; n < count; ++n) {
    const double nearest = (turns[n] + roundsOff) - roundsOff;
    const auto half = preciseSineCosineOfHalfTurns(turns[n] - nearest);
    cosines[n] = half.cosine * half.cosine - half.sine * half.sine;
    sines[n] = 2 * half.sine * half.cosine;
  }
}

}  // namespace pistonfield
