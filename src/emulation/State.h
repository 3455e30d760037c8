#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "emulation/TestControl.h"

namespace pistonfield::emulation {

/// The runtime's alignment of device memory.
constexpr std::align_val_t memoryAlignment{256};

struct FreeDeviceMemory {
  void operator()(std::byte* memory) const { ::operator delete(memory, memoryAlignment); }
};

struct Allocation {
  std::unique_ptr<std::byte, FreeDeviceMemory> memory;
  std::size_t size;
};

/// The state of the device and its test control between calls of the runtime. Calls of the runtime
/// lock it. Use the test control only while no other thread calls the runtime.
class State final : public TestControl {
 public:
  State();

  std::vector<Device> devices;
  int selected = 0;

  /// The pending error, or success, of each thread that has called the runtime. A new thread may
  /// get the id, and so the error, of one that has ended: callers clear it before their first call,
  /// like an error that they left themselves. It is not thread_local, since the dynamic linker ends
  /// the process if it has no memory for a thread's data.
  std::map<std::thread::id, cudaError_t> pendingErrors;

  /// Every live allocation, by its base address.
  std::map<const std::byte*, Allocation> allocations;
  bool poison = false;
  bool memoryIsSeparate = false;

  /// Symbols written since the last reset, with their sizes.
  std::map<void*, std::size_t> symbols;

  /// Records a call. Returns an error if a test has made this call fail.
  cudaError_t begin(const Call& call);

  /// Frees all memory and zeroes all symbols.
  void reset();

  /// Whether [pointer, pointer + size) lies inside one allocation.
  bool owns(const void* pointer, std::size_t size) const;

  void failCall(const std::string& function, int nth, cudaError_t error, bool lasting) override;
  void pretendDevices(const std::vector<Device>& pretended) override;
  void separateMemory() override;
  void poisonFreshMemory() override;
  void recordCalls() override;
  void restore() override;
  std::vector<Call> calls() const override;
  const char* errorString(cudaError_t error) const override;
  cudaError_t allocate(void** pointer, std::size_t size) override;
  cudaError_t copy(void* destination, const void* source, std::size_t size,
                   cudaMemcpyKind kind) override;
  int selectedDevice() const override;
  std::size_t liveAllocations() const override;

 private:
  struct Fault {
    std::string function;
    int countdown;
    cudaError_t error;
    bool lasting;
  };

  std::vector<Call> record_;
  bool recording_ = false;
  std::vector<Fault> faults_;
};

State& theState();

/// Every call of the runtime holds this lock, launches included.
std::mutex& stateLock();

}  // namespace pistonfield::emulation
