#pragma once

#include <cuda_runtime.h>

namespace pistonfield {

struct DeviceUse;  // defined in cudahelper.h, which is installed

/// Makes `device` the thread's current device for a call. Returns the thread's previous device, and
/// whether other code in the process (the host's own GPU arrays, say) already uses the context of
/// the new one.
DeviceUse enterDevice(int device);

/// Ends the use of a device. Resets the device unless other code used its context before. Then
/// makes the previous device current again, which from CUDA 12 on starts its context. Returns the
/// status of the reset.
cudaError_t leaveDevice(const DeviceUse& use);

}  // namespace pistonfield
