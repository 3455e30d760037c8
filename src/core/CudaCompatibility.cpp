#include "core/CudaCompatibility.h"

#include <cstring>

#include "core/cudahelper.h"

namespace pistonfield {
namespace {

// If the query fails, the context counts as active, so that nothing is destroyed.
#if !defined(CUDART_VERSION)
// No other code can use the emulation device, which is part of this module.
bool isContextActive(int /*device*/) { return false; }
#else
// Obtains the driver's function through the runtime, so that the module loads without a driver.
bool isContextActive(int device) {
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

}  // namespace

DeviceUse enterDevice(int device) {
  DeviceUse use;
  use.contextIsShared = isContextActive(device);
  int current = 0;
  if (cudaGetDevice(&current) == cudaSuccess && current != device) use.previousDevice = current;
  cudaSetDevice(device);
  return use;
}

// Objects own the device memory of launchers, so the call leaves nothing in a context that is kept.
// If the device has not changed, cudaSetDevice is not called: it would start the context again.
cudaError_t leaveDevice(const DeviceUse& use) {
  const cudaError_t error = use.contextIsShared ? cudaSuccess : cudaDeviceReset();
  if (use.previousDevice >= 0) cudaSetDevice(use.previousDevice);
  return error;
}

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
