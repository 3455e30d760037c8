#include "core/CudaCompatibility.h"

#include <cstring>

namespace pistonfield {

#if !defined(CUDART_VERSION)
// No other code can use the emulation device, which is part of this module.
bool contextIsActive(int /*device*/) { return false; }
#else
// Obtains the driver's function through the runtime, so that the module loads without a driver.
bool contextIsActive(int device) {
  using PrimaryContextState = int (*)(int device, unsigned* flags, int* active);
  void* entry = nullptr;
#if CUDART_VERSION >= 12050
  cudaDriverEntryPointQueryResult status{};
  const cudaError_t error = cudaGetDriverEntryPointByVersion("cuDevicePrimaryCtxGetState", &entry,
                                                             7000, cudaEnableDefault, &status);
#elif CUDART_VERSION >= 12000
  cudaDriverEntryPointQueryResult status{};
  const cudaError_t error =
      cudaGetDriverEntryPoint("cuDevicePrimaryCtxGetState", &entry, cudaEnableDefault, &status);
#else
  const cudaError_t error =
      cudaGetDriverEntryPoint("cuDevicePrimaryCtxGetState", &entry, cudaEnableDefault);
#endif
  if (error != cudaSuccess || !entry) return true;
  unsigned flags = 0;
  int active = 0;
  return reinterpret_cast<PrimaryContextState>(entry)(device, &flags, &active) != 0 || active != 0;
}
#endif

int clockRate(int device) {
  int kiloHertz = 0;
  cudaDeviceGetAttribute(&kiloHertz, cudaDevAttrClockRate, device);
  return kiloHertz;
}

cudaError_t writeToSymbol(std::initializer_list<DeviceSymbol> symbols, const char* name,
                          const void* data, std::size_t size) {
  for (const DeviceSymbol& symbol : symbols)
    if (std::strcmp(symbol.name, name) == 0) return symbol.write(data, size);
  const void* unknown = nullptr;  // the runtime returns the error and records it
  return ::cudaMemcpyToSymbol(unknown, data, size, 0, cudaMemcpyHostToDevice);
}

}  // namespace pistonfield
