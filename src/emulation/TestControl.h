#pragma once

#include <cuda_runtime.h>

#include <cstddef>
#include <string>
#include <vector>

namespace pistonfield::emulation {

/// A recorded call of the runtime.
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

/// For tests only: makes calls fail, replaces the list of devices and records calls.
///
/// Its functions are virtual so that a test can use them in a module that it has loaded, through
/// `emulationTestControl` alone.
class TestControl {
 public:
  /// Makes the nth call from now (1 is the next) of `function`, or of any function if it is empty,
  /// return `error` and do nothing. With `lasting`, all later such calls fail as well.
  virtual void failCall(const std::string& function, int nth, cudaError_t error, bool lasting) = 0;

  virtual void pretendDevices(const std::vector<Device>& devices) = 0;

  /// Gives the device its own memory, like a GPU's, so that launchers allocate and copy.
  virtual void separateMemory() = 0;

  /// Fills memory from cudaMalloc with 0xFF bytes, which read as NaN.
  virtual void poisonFreshMemory() = 0;

  virtual void recordCalls() = 0;

  /// Undoes all of the above, clears the last error and resets the device.
  virtual void restore() = 0;

  /// The calls since `recordCalls`, oldest first.
  virtual std::vector<Call> calls() const = 0;

  // Functions of the runtime, for tests of a module, which does not export the runtime's symbols.
  virtual const char* errorString(cudaError_t error) const = 0;
  virtual cudaError_t allocate(void** pointer, std::size_t size) = 0;
  virtual cudaError_t copy(void* destination, const void* source, std::size_t size,
                           cudaMemcpyKind kind) = 0;

  virtual int selectedDevice() const = 0;
  virtual std::size_t liveAllocations() const = 0;

 protected:
  ~TestControl() = default;
};

}  // namespace pistonfield::emulation

extern "C" pistonfield::emulation::TestControl* emulationTestControl();
