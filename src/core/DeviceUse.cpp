#include "core/DeviceUse.h"

#include "core/CudaCompatibility.h"
#include "core/cudahelper.h"

namespace pistonfield {

DeviceUse enterDevice(int device) {
  DeviceUse use;
  use.contextIsShared = contextIsActive(device);
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

}  // namespace pistonfield
