#pragma once

namespace pistonfield {

/// Gives the calling thread exclusive use of the device and of the quadrature rule loaded on it.
/// Another thread that constructs one waits until this one is destroyed. The same thread may hold
/// several.
class DeviceLock {
 public:
  DeviceLock();
  DeviceLock(const DeviceLock&) = delete;
  DeviceLock& operator=(const DeviceLock&) = delete;
  ~DeviceLock();
};

}  // namespace pistonfield
