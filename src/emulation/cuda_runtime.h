#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>

// The part of the CUDA runtime that this project calls, on a device that consists of the CPU's
// cores. Names, error codes, error strings and checks of arguments are the runtime's. Everything is
// in a namespace, since a program that links the library may use a real CUDA runtime too.

#define __global__
#define __device__
#define __host__
#define __constant__

namespace pistonfield::emulation::runtime {

struct dim3 {
  constexpr dim3(unsigned width = 1, unsigned height = 1, unsigned depth = 1)
      : x(width), y(height), z(depth) {}
  unsigned x, y, z;
};

enum cudaError_t {
  cudaSuccess = 0,
  cudaErrorInvalidValue = 1,
  cudaErrorMemoryAllocation = 2,
  cudaErrorInvalidConfiguration = 9,
  cudaErrorInvalidSymbol = 13,
  cudaErrorInvalidMemcpyDirection = 21,
  cudaErrorInsufficientDriver = 35,
  cudaErrorInvalidDeviceFunction = 98,
  cudaErrorNoDevice = 100,
  cudaErrorInvalidDevice = 101,
  cudaErrorLaunchFailure = 719,
  cudaErrorUnknown = 999
};

enum cudaMemcpyKind { cudaMemcpyHostToDevice = 1, cudaMemcpyDeviceToHost = 2 };

enum cudaDeviceAttr { cudaDevAttrClockRate = 13 };

struct cudaDeviceProp {
  char name[256];
  int major;  // 9999.9999 marks an emulation device
  int minor;
  int multiProcessorCount;
};

using cudaStream_t = struct CUstream_st*;

const char* cudaGetErrorString(cudaError_t error);

/// Returns and clears the calling thread's pending error.
cudaError_t cudaGetLastError();

cudaError_t cudaGetDeviceCount(int* count);
cudaError_t cudaGetDeviceProperties(cudaDeviceProp* properties, int device);
cudaError_t cudaDeviceGetAttribute(int* value, cudaDeviceAttr attribute, int device);
cudaError_t cudaGetDevice(int* device);
cudaError_t cudaSetDevice(int device);
cudaError_t cudaDeviceSynchronize();

/// Frees all device memory and zeroes all symbols.
cudaError_t cudaDeviceReset();

cudaError_t cudaMalloc(void** pointer, std::size_t size);
cudaError_t cudaFree(void* pointer);
cudaError_t cudaMemcpy(void* destination, const void* source, std::size_t size,
                       cudaMemcpyKind kind);

}  // namespace pistonfield::emulation::runtime

// The sources use the runtime's names unqualified.
// NOLINTNEXTLINE(google-build-using-namespace,google-global-names-in-headers)
using namespace pistonfield::emulation::runtime;

namespace pistonfield::emulation {

/// Whether kernels work directly on host arrays, so that nothing needs to be allocated or
/// copied. They do unless a test has separated the memories.
bool usesHostMemory();

cudaError_t copyToSymbol(void* symbol, std::size_t symbolSize, const void* source, std::size_t size,
                         std::size_t offset, cudaMemcpyKind kind);

/// Does the work of a kernel's threads `first` to `last` − 1, which are numbered across all blocks
/// of a launch.
using ThreadWork = std::function<void(std::uint64_t first, std::uint64_t last)>;

/// For kernels: calls `work` for ranges that together cover all threads of the current launch, on
/// all cores of the CPU. A kernel takes many threads at once to use the processor's SIMD lanes.
///
/// Neither the kernel nor `work` may call the runtime: the launch holds the lock that every call
/// takes (stateLock).
void forRangesOfThreads(const ThreadWork& work);

/// Checks the shape of a launch and calls `kernel` once for all its threads. An empty function
/// represents a kernel that the device's image does not contain.
cudaError_t runKernel(dim3 grid, dim3 block, std::size_t sharedMemory,
                      const std::function<void()>& kernel);

template <class... Parameters, std::size_t... I>
void callKernel(void (*kernel)(Parameters...), void** arguments, std::index_sequence<I...>) {
  kernel(*static_cast<Parameters*>(arguments[I])...);
}

}  // namespace pistonfield::emulation

namespace pistonfield::emulation::runtime {

/// `symbol` is the variable.
template <class Symbol>
cudaError_t cudaMemcpyToSymbol(Symbol& symbol, const void* source, std::size_t size,
                               std::size_t offset = 0,
                               cudaMemcpyKind kind = cudaMemcpyHostToDevice) {
  return emulation::copyToSymbol(&symbol, sizeof(Symbol), source, size, offset, kind);
}

/// Fails: a pointer is not a symbol here.
inline cudaError_t cudaMemcpyToSymbol(const void*& /*symbol*/, const void* source, std::size_t size,
                                      std::size_t offset, cudaMemcpyKind kind) {
  return emulation::copyToSymbol(nullptr, 0, source, size, offset, kind);
}

template <class... Parameters>
cudaError_t cudaLaunchKernel(void (*kernel)(Parameters...), dim3 grid, dim3 block, void** arguments,
                             std::size_t sharedMemory, cudaStream_t /*stream*/) {
  std::function<void()> run;
  if (kernel)
    run = [=] {
      emulation::callKernel(kernel, arguments, std::index_sequence_for<Parameters...>{});
    };
  return emulation::runKernel(grid, block, sharedMemory, run);
}

}  // namespace pistonfield::emulation::runtime
