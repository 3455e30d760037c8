#include "core/DeviceUse.h"

#include <set>

#include "core/CudaCompatibility.h"
#include "core/DeviceLock.h"
#include "core/cudahelper.h"

namespace pistonfield {
namespace {

// Threads that use these hold the DeviceLock.
bool keeps = false;
std::set<int> keptDevices;  // which were started here

}  // namespace

DeviceUse enterDevice(int device) {
  DeviceUse use;
  use.contextIsShared = contextIsActive(device) && !(keeps && keptDevices.count(device) > 0);
  int current = 0;
  if (cudaGetDevice(&current) == cudaSuccess && current != device) use.previousDevice = current;
  cudaSetDevice(device);
  return use;
}

// Objects own the device memory of launchers, so the call leaves nothing in a context that is kept.
// If the device has not changed, cudaSetDevice is not called: it would start the context again.
cudaError_t leaveDevice(const DeviceUse& use) {
  cudaError_t error = cudaSuccess;
  int device = 0;
  if (!use.contextIsShared) {
    // A context in which a kernel failed is of no more use.
    if (keeps && cudaGetDevice(&device) == cudaSuccess && waitForDevice() == cudaSuccess) {
      keptDevices.insert(device);
    } else {
      error = cudaDeviceReset();
      keptDevices.erase(device);
    }
  }
  if (use.previousDevice >= 0) cudaSetDevice(use.previousDevice);
  return error;
}

void keepDevices() {
  const DeviceLock lock;
  keeps = true;
}

void keepCurrentDevice() {
  const DeviceLock lock;
  int device = 0;
  if (cudaGetDevice(&device) == cudaSuccess && !contextIsActive(device)) keptDevices.insert(device);
}

void releaseKeptDevices() {
  const DeviceLock lock;
  int current = 0;
  const bool hasCurrent = cudaGetDevice(&current) == cudaSuccess;
  for (const int device : keptDevices) {
    if (device != current) cudaSetDevice(device);
    cudaDeviceReset();
    if (hasCurrent && device != current) cudaSetDevice(current);
  }
  keptDevices.clear();
  keeps = false;
}

}  // namespace pistonfield
