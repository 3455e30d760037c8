#pragma once

#include <cuda_runtime.h>

// The start of the device that is current. FastestDevice.h chooses the device; DeviceUse.h makes it
// current and releases it.

extern "C" {

/// Starts the runtime on the current device by launching an empty kernel. Writes an error that is
/// pending before or after the launch to standard error and calls the error handler. Returns the
/// error code, 0 on success.
int cuda_init();

/// Waits for the device. Returns the runtime's error code.
cudaError_t cuda_sync();
}
