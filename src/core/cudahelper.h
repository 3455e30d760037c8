#pragma once

#include "core/DeviceLock.h"

namespace pistonfield {

/// What a thread found when it took a device for a call.
struct DeviceUse {
  bool contextIsShared = false;  ///< somebody else holds the device's context
  int previousDevice = -1;       ///< the thread's current device, if it was another one
};

/// What a call does with the device as a whole.
class CudaInterface {
 public:
  CudaInterface() = delete;

  /// Starts the runtime on the current device; 0 on success, errors go to the error handler.
  static int init();

  /// Waits for the device; the runtime's error code, 0 on success.
  static int sync();

  /// Ends the use of the current device; an error goes to the error handler. Without an argument it
  /// ends the device's context, whoever else holds it.
  static void release(const DeviceUse& use = {});

  /// Lists the devices on standard output: multiprocessors, and clock in kHz.
  static void dumpDevices();
};

/// Brings the fastest device up for the length of a scope.
///
/// Construct one before anything else of a call. It picks the device with the highest
/// cores × multiprocessors × clock, makes it current, starts the runtime and waits for it; the
/// destructor releases it, and with it the quadrature rule, and restores the thread's previous
/// device. All of a call's device work happens on the thread that made the object, which also
/// destroys it.
///
/// One thread at a time has the device: other threads that make such a scope, load a rule or
/// compute on the device wait until this one ends. So do not wait, inside a scope, for a thread
/// that does. A scope within a scope of the same thread leaves the device and the rule as they are
/// when it ends.
class CudaDeviceThread {
 public:
  CudaDeviceThread();
  CudaDeviceThread(const CudaDeviceThread&) = delete;
  CudaDeviceThread& operator=(const CudaDeviceThread&) = delete;

  /// Reports a failing release through the error handler, which may throw; stays silent when an
  /// error is already unwinding, since a second one would end the host.
  ~CudaDeviceThread() noexcept(false);

 private:
  struct Entered {};  // the device is current, and not started yet
  explicit CudaDeviceThread(Entered /*tag*/);

  const DeviceLock lock_;
  const int unwinding_;  // how many exceptions already were when it was made
  const DeviceUse use_;
};

}  // namespace pistonfield
