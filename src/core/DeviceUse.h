#pragma once

#include <cuda_runtime.h>

namespace pistonfield {

struct DeviceUse;  // defined in cudahelper.h, which is installed

/// Makes `device` the thread's current device for a call. Returns the thread's previous device, and
/// whether other code in the process (the host's own GPU arrays, say) already uses the context of
/// the new one.
DeviceUse enterDevice(int device);

/// Ends the use of a device. Resets the device unless other code used its context before, or it is
/// to stay started and works. Then makes the previous device current again, which from CUDA 12 on
/// starts its context. Returns the status of the reset.
cudaError_t leaveDevice(const DeviceUse& use);

// Devices that stay started between calls, since a start takes some tenths of a second.

/// From now on, leaveDevice keeps devices started.
void keepDevices();

/// To be called before work on the current device outside of a CudaDeviceThread: the work starts
/// the device, unless other code has.
void keepCurrentDevice();

/// Resets the devices that have been kept, but those that other code had started, and keeps no
/// more. Modules call it when the host unloads them. At the end of a process the system does it.
void releaseKeptDevices();

}  // namespace pistonfield
