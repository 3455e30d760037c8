#pragma once

namespace pistonfield {

/// Keeps the device, and the quadrature rule that it holds, to the calling thread. Another thread
/// that makes one waits until this one ends; the same thread may make several.
class DeviceLock {
 public:
  DeviceLock();
  DeviceLock(const DeviceLock&) = delete;
  DeviceLock& operator=(const DeviceLock&) = delete;
  ~DeviceLock();
};

}  // namespace pistonfield
