#pragma once

#include <cuda_runtime.h>

#include <algorithm>
#include <chrono>

#include "core/Interruption.h"

namespace pistonfield {

/// Has launch(first, count) launch a list of `points` in pieces, has wait() wait for each but the
/// last, and lets the host's user interrupt between them. Ends early if one of the two fails.
///
/// Up to some 10⁷/`order` points, which take less than half a second on the slowest of devices, are
/// one piece; on a faster one the pieces grow, so that waiting for them costs nothing.
template <class Launch, class Wait>
void launchInPieces(int points, int order, const Launch& launch, const Wait& wait) {
  using std::chrono::steady_clock;
  constexpr std::chrono::milliseconds longEnough{100};
  int piece = 10'485'760 / std::max(order, 10);
  int first = 0;
  while (points - first > piece) {
    const steady_clock::time_point start = steady_clock::now();
    if (launch(first, piece) != cudaSuccess || wait() != cudaSuccess) return;
    first += piece;
    if (steady_clock::now() - start < longEnough && piece < 1 << 29) piece *= 2;
    checkInterruption();
  }
  static_cast<void>(launch(first, points - first));
}

}  // namespace pistonfield
