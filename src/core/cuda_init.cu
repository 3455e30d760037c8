#include "core/cuda_init.h"

#include "core/CudaCheck.h"
#include "core/CudaCompatibility.h"

// Fixed line numbers: they are part of messages that users know.
namespace {
constexpr pistonfield::SourceLocation beforeStart{"src/core/cuda_init", 14};
constexpr pistonfield::SourceLocation afterStart{"src/core/cuda_init", 16};
}  // namespace

__global__ void cuda_init_kernel() {}

int cuda_init() {
  cudaGetLastError();  // discards an error that an earlier call left pending
  const cudaError_t before = pistonfield::stageCheck("pre cuda_init()", beforeStart);
  pistonfield::launch(cuda_init_kernel, dim3(1), dim3(1));
  const cudaError_t after = pistonfield::stageCheck("post cuda_init()", afterStart);
  return before != cudaSuccess ? before : after;
}

cudaError_t cuda_sync() { return pistonfield::waitForDevice(); }
