#pragma once

#include <cuda_runtime.h>

#include "emulation/State.h"

namespace pistonfield::emulation {

/// One call of the runtime: records it, returns an error if a test has made it fail, and otherwise
/// calls `body`. Stores an error as the calling thread's pending error.
template <class Body>
cudaError_t perform(const Call& call, Body body) {
  const std::lock_guard lock(stateLock());
  State& state = theState();
  // Looked up before the work: if that fails, there may be no memory left for a new entry.
  cudaError_t& pending = state.pendingErrors[std::this_thread::get_id()];
  const cudaError_t injected = state.begin(call);
  const cudaError_t error = injected == cudaSuccess ? body(state) : injected;
  if (error != cudaSuccess) pending = error;
  return error;
}

/// The same for a call that needs a device.
template <class Body>
cudaError_t performOnDevice(const Call& call, Body body) {
  return perform(
      call, [&](State& state) { return state.devices.empty() ? cudaErrorNoDevice : body(state); });
}

}  // namespace pistonfield::emulation
