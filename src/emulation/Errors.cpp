#include <utility>

#include "emulation/Call.h"

namespace pistonfield::emulation::runtime {

const char* cudaGetErrorString(cudaError_t error) {
  switch (error) {
    case cudaSuccess:
      return "no error";
    case cudaErrorInvalidValue:
      return "invalid argument";
    case cudaErrorMemoryAllocation:
      return "out of memory";
    case cudaErrorInvalidConfiguration:
      return "invalid configuration argument";
    case cudaErrorInvalidSymbol:
      return "invalid device symbol";
    case cudaErrorInvalidMemcpyDirection:
      return "invalid copy direction for memcpy";
    case cudaErrorInsufficientDriver:
      return "CUDA driver version is insufficient for CUDA runtime version";
    case cudaErrorInvalidDeviceFunction:
      return "invalid device function";
    case cudaErrorNoDevice:
      return "no CUDA-capable device is detected";
    case cudaErrorInvalidDevice:
      return "invalid device ordinal";
    case cudaErrorLaunchFailure:
      return "unspecified launch failure";
    case cudaErrorUnknown:
      return "unknown error";
  }
  return "unrecognized error code";
}

cudaError_t cudaGetLastError() {
  const std::lock_guard lock(emulation::stateLock());
  emulation::State& state = emulation::theState();
  const cudaError_t injected = state.begin({"cudaGetLastError"});
  cudaError_t pending = cudaSuccess;
  const auto own = state.pendingErrors.find(std::this_thread::get_id());
  if (own != state.pendingErrors.end()) std::swap(pending, own->second);
  return injected == cudaSuccess ? pending : injected;
}

}  // namespace pistonfield::emulation::runtime
