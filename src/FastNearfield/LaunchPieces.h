#pragma once

#include <algorithm>
#include <chrono>

#include "core/CudaToday.h"
#include "core/Interruption.h"

namespace pistonfield {

/// Has launch(first, count) launch a list of `points` in pieces, waits for each but the last, and
/// lets the host's user interrupt between them. Ends early if a piece fails, with the error
/// pending.
///
/// Up to some 10⁷/`order` points, which take less than half a second on the slowest of devices, are
/// one piece; on a faster one the pieces grow, so that waiting for them costs nothing.
template <class Launch>
void launchInPieces(int points, int order, const Launch& launch) {
  using std::chrono::steady_clock;
  constexpr std::chrono::milliseconds longEnough{100};
  int piece = 10'485'760 / std::max(order, 10);
  int first = 0;
  while (points - first > piece) {
    const steady_clock::time_point start = steady_clock::now();
    if (launch(first, piece) != cudaSuccess || cudaThreadSynchronize() != cudaSuccess) return;
    checkInterruption();
    first += piece;
    if (steady_clock::now() - start < longEnough && piece < 1 << 29) piece *= 2;
  }
  static_cast<void>(launch(first, points - first));
}

}  // namespace pistonfield
