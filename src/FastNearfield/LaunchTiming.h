#pragma once

#include <chrono>
#include <cstdint>

#include "FastNearfield/RectangularPistonCuda.h"
#include "core/CudaCheck.h"
#include "core/CudaCompatibility.h"

namespace pistonfield {

/// Calls `launches`, which launches kernels. If `do_timing` is set, waits for them and stores the
/// time in `global_time`.
template <class Launches>
void timed(SourceLocation location, const Launches& launches) {
  using std::chrono::system_clock;
  const system_clock::time_point t0 = system_clock::now();
  launches();
  if (do_timing == 0) return;
  callCheck(waitForDevice(), "cudaThreadSynchronize()", location);
  const auto elapsed =
      std::chrono::duration_cast<std::chrono::microseconds>(system_clock::now() - t0);
  global_time = static_cast<std::int32_t>(elapsed.count());
}

/// Launches one kernel, and times it if `do_timing` is set.
template <class... Arguments>
void launchTimed(SourceLocation location, typename KernelOf<Arguments...>::Type kernel, dim3 grid,
                 dim3 block, Arguments... arguments) {
  timed(location, [&] { launch<Arguments...>(kernel, grid, block, arguments...); });
}

}  // namespace pistonfield
