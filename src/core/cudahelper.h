#pragma once

#include "DeviceLock.h"

namespace pistonfield {

/// The state before a call made a device current. The release of the device needs it.
struct DeviceUse {
  bool contextIsShared = false;  ///< other code in the process uses the device's context
  int previousDevice = -1;       ///< the thread's current device, if that was another one
};

/// Operations on the device as a whole.
class CudaInterface {
 public:
  CudaInterface() = delete;

  /// Starts the runtime on the current device. Returns 0 on success; calls the error handler
  /// otherwise.
  static int init();

  /// Waits for the device. Returns the runtime's error code, 0 on success.
  static int sync();

  /// Ends the use of the current device; calls the error handler on failure. Without an argument it
  /// destroys the device's context even if other code uses it.
  static void release(const DeviceUse& use = {});

  /// Writes a list of the devices to standard output: multiprocessors, and clock rate in kHz.
  static void dumpDevices();
};

/// Holds the device for the length of a scope.
///
/// Construct one before any other device work. The constructor selects a device (FastestDevice.h;
/// device 0 for current GPUs), makes it current, starts the runtime and waits for it. The
/// destructor releases the device and the quadrature rule loaded on it, and restores the thread's
/// previous device. Do all device work on the thread that constructed the object, and destroy it
/// there.
///
/// Only one thread at a time holds the device. Another thread that constructs a scope, loads a rule
/// or computes on the device waits until this scope ends; waiting for such a thread inside a scope
/// is a deadlock. A nested scope of the same thread leaves the device and the rule unchanged.
class CudaDeviceThread {
 public:
  CudaDeviceThread();
  CudaDeviceThread(const CudaDeviceThread&) = delete;
  CudaDeviceThread& operator=(const CudaDeviceThread&) = delete;

  /// Calls the error handler, which may throw, if the release fails. Ignores the failure while
  /// another exception unwinds, since a second one would end the process.
  ~CudaDeviceThread() noexcept(false);

 private:
  struct Entered {};  // the device is current but not started
  explicit CudaDeviceThread(Entered /*tag*/);

  const DeviceLock lock_;
  const int unwinding_;  // std::uncaught_exceptions() at construction
  const DeviceUse use_;
};

}  // namespace pistonfield
