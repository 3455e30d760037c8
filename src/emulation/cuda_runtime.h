#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>

// The part of the CUDA runtime that the system calls, on a device made of the CPU's cores. Names,
// error codes, error strings and checks of arguments are the runtime's own.

#define __global__
#define __device__
#define __host__
#define __constant__

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

extern "C" {

const char* cudaGetErrorString(cudaError_t error);

/// The calling thread's last error, which is cleared.
cudaError_t cudaGetLastError();

cudaError_t cudaGetDeviceCount(int* count);
cudaError_t cudaGetDeviceProperties(cudaDeviceProp* properties, int device);
cudaError_t cudaDeviceGetAttribute(int* value, cudaDeviceAttr attribute, int device);
cudaError_t cudaSetDevice(int device);
cudaError_t cudaDeviceSynchronize();

/// Frees all device memory and zeroes all symbols.
cudaError_t cudaDeviceReset();

cudaError_t cudaMalloc(void** pointer, std::size_t size);
cudaError_t cudaFree(void* pointer);
cudaError_t cudaMemcpy(void* destination, const void* source, std::size_t size,
                       cudaMemcpyKind kind);
}

namespace emulation {

cudaError_t copyToSymbol(void* symbol, std::size_t symbolSize, const void* source, std::size_t size,
                         std::size_t offset, cudaMemcpyKind kind);

/// The threads that a kernel's call stands for: a run of them, from number `first` to before
/// `last`, counted through the blocks of a launch. A kernel is called once for many threads so that
/// it can put them into the lanes of the processor.
struct ThreadRun {
  std::uint64_t first, last;
};

/// That of the kernel's call which runs on this thread of the host.
inline thread_local ThreadRun threadRun{};

/// Calls `kernel` until all threads of the launch have run. An empty one stands for a kernel that
/// is not in the device's image.
cudaError_t launch(dim3 grid, dim3 block, std::size_t sharedMemory,
                   const std::function<void()>& kernel);

template <class... Parameters, std::size_t... I>
void call(void (*kernel)(Parameters...), void** arguments, std::index_sequence<I...>) {
  kernel(*static_cast<Parameters*>(arguments[I])...);
}

}  // namespace emulation

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
