#pragma once

#include <cuda_runtime.h>

extern "C" {

/// Starts the runtime on the current device with an empty kernel. Errors pending before or found
/// after it go to standard error and to the error handler. Returns 0 when there was none, else the
/// code.
int cuda_init();

/// Waits for the device; the runtime's code, unchanged.
cudaError_t cuda_sync();
}
