#pragma once

#include <cuda_runtime.h>

#include <cstddef>
#include <initializer_list>

// The differences between CUDA toolkits, and between them and the emulation device. The rest of the
// sources is the same for all, except for these macros:
//
//     CUDART_VERSION        whose runtime is this? That of a toolkit defines it, as its version;
//                           the emulation device does not.
//     __CUDACC__            which compiler is this? nvcc defines it.
//     __CUDA_ARCH__         for which processor is this code? nvcc defines it for a GPU only.
//     PISTONFIELD_USE_CUDA  which device was configured? 1 for a GPU, 0 for the emulation device. A
//                           variable of CMake, which passes it to about.cpp and to tests.
//
// Without a toolkit, src/CMakeLists.txt compiles the .cu files as C++.

namespace pistonfield {

/// Waits for the device.
inline cudaError_t waitForDevice() { return cudaDeviceSynchronize(); }

/// Whether any code in the process uses the device's context. True also if the query fails, so that
/// nothing is destroyed.
bool contextIsActive(int device);

/// Whether kernels work directly on host arrays.
#if defined(CUDART_VERSION)
inline bool usesHostMemory() { return false; }
#else
inline bool usesHostMemory() { return emulation::usesHostMemory(); }
#endif

/// The device's clock rate in kHz, which recent property records lack.
int clockRate(int device);

/// An object in constant memory and its name. `write` is copyTo<object>.
struct DeviceSymbol {
  const char* name;
  cudaError_t (*write)(const void* data, std::size_t size);
};

template <auto& Object>
cudaError_t copyTo(const void* data, std::size_t size) {
  return ::cudaMemcpyToSymbol(Object, data, size, 0, cudaMemcpyHostToDevice);
}

/// Copies `size` bytes to the symbol with this name. Returns cudaErrorInvalidSymbol if there is
/// none.
cudaError_t writeToSymbol(std::initializer_list<DeviceSymbol> symbols, const char* name,
                          const void* data, std::size_t size);

/// A pointer to a kernel with these parameters. In a parameter list it takes no part in deduction,
/// so that the arguments alone choose among the kernel's overloads.
template <class... Parameters>
struct KernelOf {
  using Type = void (*)(Parameters...);
};

/// kernel<<<grid, block>>>(arguments...). The types of the arguments must be exactly those of the
/// kernel's parameters.
template <class... Arguments>
cudaError_t launch(typename KernelOf<Arguments...>::Type kernel, dim3 grid, dim3 block,
                   Arguments... arguments) {
  void* pointers[] = {static_cast<void*>(&arguments)..., nullptr};
#if defined(CUDART_VERSION)
  const auto function =
      reinterpret_cast<const void*>(kernel);  // the form that every toolkit accepts
#else
  const auto function = kernel;  // its type gives the emulation device the types of the arguments
#endif
  return cudaLaunchKernel(function, grid, block, pointers, 0, nullptr);
}

}  // namespace pistonfield
