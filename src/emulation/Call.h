#pragma once

#include <cuda_runtime.h>

#include "emulation/State.h"

namespace emulation {

/// One call of the runtime: keeps the record, lets it fail where a test asked for that, otherwise
/// has `body` do the work; an error is remembered as the calling thread's last one.
template <class Body>
cudaError_t perform(const Call& call, Body body) {
  const std::lock_guard lock(stateLock());
  State& state = theState();
  // Found before the work: there may be no memory for a new one where that has failed.
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

}  // namespace emulation
