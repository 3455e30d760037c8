#pragma once

#include "core/CudaCompatibility.h"

#include <algorithm>
#include <chrono>

#include "core/Interruption.h"

namespace pistonfield {

/// Calls launchPiece(first, count) for consecutive pieces of a list of `points`. After each piece
/// but the last it calls wait() and lets the user interrupt. Returns early if either fails.
///
/// The first piece has some 10⁷/`order` points, which take less than half a second on the slowest
/// devices. On faster devices the pieces grow, so that waiting costs nothing.
template <class LaunchPiece, class Wait>
void launchInPieces(int points, int order, const LaunchPiece& launchPiece, const Wait& wait) {
  using std::chrono::steady_clock;
  constexpr std::chrono::milliseconds longEnough{100};
  int piece = 10'485'760 / std::max(order, 10);
  int first = 0;
  while (points - first > piece) {
    const steady_clock::time_point start = steady_clock::now();
    if (launchPiece(first, piece) != cudaSuccess || wait() != cudaSuccess) return;
    first += piece;
    if (steady_clock::now() - start < longEnough && piece < 1 << 29) piece *= 2;
    checkInterruption();
  }
  static_cast<void>(launchPiece(first, points - first));
}

}  // namespace pistonfield
