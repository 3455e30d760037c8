#pragma once

#include <cuda_runtime.h>

#include <cstddef>
#include <string>
#include <vector>

namespace emulation {

/// A call of the runtime, as a test sees it afterwards.
struct Call {
  const char* function;
  std::size_t bytes = 0;  // allocations, copies, shared memory of launches
  dim3 grid{};            // launches
  dim3 block{};
  int device = 0;  // cudaSetDevice
};

struct Device {
  cudaDeviceProp properties;
  int clockRate;  // kHz
};

/// For tests only: makes the device fail, lie about itself and keep a record.
///
/// An interface of virtual functions, so that a test can reach it inside a module that it has
/// loaded, through `emulationTestControl` alone.
class TestControl {
 public:
  /// Lets the nth call from now (1 is the next) of `function`, or of any function if it is empty,
  /// end with `error` and do nothing; with `lasting`, also every such call after it.
  virtual void failCall(const std::string& function, int nth, cudaError_t error, bool lasting) = 0;

  virtual void pretendDevices(const std::vector<Device>& devices) = 0;

  /// Fills memory from cudaMalloc with 0xFF bytes, which read as NaN.
  virtual void poisonFreshMemory() = 0;

  virtual void recordCalls() = 0;

  /// Forgets all of the above and the last error, and resets the device.
  virtual void restore() = 0;

  /// The calls since `recordCalls`, oldest first.
  virtual std::vector<Call> calls() const = 0;

  // The runtime's own functions, whose names a module does not show.
  virtual const char* errorString(cudaError_t error) const = 0;
  virtual cudaError_t allocate(void** pointer, std::size_t size) = 0;
  virtual cudaError_t copy(void* destination, const void* source, std::size_t size,
                           cudaMemcpyKind kind) = 0;

  virtual int selectedDevice() const = 0;
  virtual std::size_t liveAllocations() const = 0;

 protected:
  ~TestControl() = default;
};

}  // namespace emulation

extern "C" emulation::TestControl* emulationTestControl();
