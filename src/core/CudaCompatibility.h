#pragma once

#include <cuda_runtime.h>

#include <cstddef>
#include <initializer_list>

// The differences between CUDA toolkits, and between them and the emulation device. The rest of the
// sources is the same for all.

namespace pistonfield {

struct DeviceUse;

/// Waits for the device.
inline cudaError_t waitForDevice() { return cudaDeviceSynchronize(); }

/// Makes `device` the thread's current device for a call. Returns the thread's previous device, and
/// whether other code in the process (the host's own GPU arrays, say) already uses the context of
/// the new one.
DeviceUse enterDevice(int device);

/// Ends the use of a device. Resets the device unless other code used its context before. Then
/// makes the previous device current again, which from CUDA 12 on starts its context. Returns the
/// status of the reset.
cudaError_t leaveDevice(const DeviceUse& use);

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
