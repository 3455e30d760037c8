#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>

// The part of the CUDA runtime that the system calls, on a device made of the CPU's cores. Names,
// error codes, error strings and checks of arguments are the runtime's own. All of it is in a
// namespace: a program that links the library may use a real CUDA runtime as well.

#define __global__
#define __device__
#define __host__
#define __constant__

namespace emulation::runtime {

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

/// The calling thread's last error, which is cleared.
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

}  // namespace emulation::runtime

// The sources use the runtime's names without a namespace.
// NOLINTNEXTLINE(google-build-using-namespace,google-global-names-in-headers)
using namespace emulation::runtime;

namespace emulation {

cudaError_t copyToSymbol(void* symbol, std::size_t symbolSize, const void* source, std::size_t size,
                         std::size_t offset, cudaMemcpyKind kind);

/// The work of a kernel's threads, from number `first` to before `last`, counted through the blocks
/// of a launch.
using ThreadWork = std::function<void(std::uint64_t first, std::uint64_t last)>;

/// For kernels: calls `work` for ranges that make up all threads of the current launch, on all of
/// the CPU's cores. A kernel takes many threads at once so that it can put them into the lanes of
/// the processor.
void forThreads(const ThreadWork& work);

/// Calls `kernel` once, for all threads of the launch. An empty one stands for a kernel that is not
/// in the device's image.
cudaError_t launch(dim3 grid, dim3 block, std::size_t sharedMemory,
                   const std::function<void()>& kernel);

template <class... Parameters, std::size_t... I>
void call(void (*kernel)(Parameters...), void** arguments, std::index_sequence<I...>) {
  kernel(*static_cast<Parameters*>(arguments[I])...);
}

}  // namespace emulation

namespace emulation::runtime {

/// `symbol` is the variable itself.
template <class Symbol>
cudaError_t cudaMemcpyToSymbol(Symbol& symbol, const void* source, std::size_t size,
                               std::size_t offset = 0,
                               cudaMemcpyKind kind = cudaMemcpyHostToDevice) {
  return emulation::copyToSymbol(&symbol, sizeof(Symbol), source, size, offset, kind);
}

/// A pointer names no symbol here.
inline cudaError_t cudaMemcpyToSymbol(const void*& /*symbol*/, const void* source, std::size_t size,
                                      std::size_t offset, cudaMemcpyKind kind) {
  return emulation::copyToSymbol(nullptr, 0, source, size, offset, kind);
}

template <class... Parameters>
cudaError_t cudaLaunchKernel(void (*kernel)(Parameters...), dim3 grid, dim3 block, void** arguments,
                             std::size_t sharedMemory, cudaStream_t /*stream*/) {
  std::function<void()> run;
  if (kernel)
    run = [=] { emulation::call(kernel, arguments, std::index_sequence_for<Parameters...>{}); };
  return emulation::launch(grid, block, sharedMemory, run);
}

}  // namespace emulation::runtime
