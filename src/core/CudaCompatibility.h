#pragma once

#include <cuda_runtime.h>

#include <cstddef>
#include <initializer_list>

// The runtime's early interfaces on the toolkits of today. All other code reads as the early names
// do.

namespace pistonfield {

struct DeviceUse;

/// Waits for the device.
inline cudaError_t cudaThreadSynchronize() { return cudaDeviceSynchronize(); }

/// Makes `device` the thread's current device for a call. Returns what `cudaThreadExit` needs: the
/// thread's previous device, and whether somebody else in this process (the host's own GPU arrays,
/// say) already holds the context of the new one.
DeviceUse cudaThreadEnter(int device);

/// Ends what `cudaThreadEnter` began: resets the device or, where its context was active before,
/// leaves that with all that others hold in it; then makes the previous device current again, whose
/// context runtimes from 12 on start with that. Returns the status of the reset.
cudaError_t cudaThreadExit(const DeviceUse& use);

/// Whether kernels work on the host's arrays as they are.
#if defined(CUDART_VERSION)
inline bool usesHostMemory() { return false; }
#else
inline bool usesHostMemory() { return emulation::usesHostMemory(); }
#endif

/// The device's clock in kHz, which the property record of today no longer tells.
int clockRate(int device);

/// An object in device constant memory that the host reaches by its name; `write` is
/// copyTo<object>.
struct DeviceSymbol {
  const char* name;
  cudaError_t (*write)(const void* data, std::size_t size);
};

template <auto& Object>
cudaError_t copyTo(const void* data, std::size_t size) {
  return ::cudaMemcpyToSymbol(Object, data, size, 0, cudaMemcpyHostToDevice);
}

/// Copies `size` bytes to the symbol called `name`; cudaErrorInvalidSymbol if there is none.
cudaError_t cudaMemcpyToSymbol(std::initializer_list<DeviceSymbol> symbols, const char* name,
                               const void* data, std::size_t size);

/// A kernel of these parameters, which do not follow from it: they choose among its overloads.
template <class... Parameters>
struct KernelOf {
  using Type = void (*)(Parameters...);
};

/// kernel<<<grid, block>>>(arguments...), in the form that a CUDA toolkit and the emulation device
/// share. The arguments' types must be the kernel's own.
template <class... Arguments>
cudaError_t launch(typename KernelOf<Arguments...>::Type kernel, dim3 grid, dim3 block,
                   Arguments... arguments) {
  void* pointers[] = {static_cast<void*>(&arguments)..., nullptr};
#if defined(CUDART_VERSION)
  const auto function = reinterpret_cast<const void*>(kernel);  // as every toolkit takes it
#else
  const auto function = kernel;  // whose type tells the emulation device what the pointers are
#endif
  return cudaLaunchKernel(function, grid, block, pointers, 0, nullptr);
}

}  // namespace pistonfield
