#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "emulation/TestControl.h"

namespace emulation {

/// Device memory is aligned as the runtime aligns it.
constexpr std::align_val_t memoryAlignment{256};

struct FreeDeviceMemory {
  void operator()(std::byte* memory) const { ::operator delete(memory, memoryAlignment); }
};

struct Allocation {
  std::unique_ptr<std::byte, FreeDeviceMemory> memory;
  std::size_t size;
};

/// What the device and its test bench remember between calls of the runtime. Like the system above
/// it, used by one host thread at a time.
class State final : public TestControl {
 public:
  State();

  std::vector<Device> devices;
  int selected = 0;

  /// Every live allocation, by its base address.
  std::map<const std::byte*, Allocation> allocations;
  bool poison = false;

  /// Symbols written since the last reset, with their sizes.
  std::map<void*, std::size_t> symbols;

  /// Records a call; an error if a test wants this one to fail.
  cudaError_t begin(const Call& call);

  /// Frees all memory and zeroes all symbols.
  void reset();

  /// Whether [pointer, pointer + size) lies inside one allocation.
  bool owns(const void* pointer, std::size_t size) const;

  void failCall(const std::string& function, int nth, cudaError_t error, bool lasting) override;
  void pretendDevices(const std::vector<Device>& pretended) override;
  void poisonFreshMemory() override;
  void recordCalls() override;
  void restore() override;
  std::vector<Call> calls() const override;
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

inline thread_local cudaError_t lastError = cudaSuccess;

}  // namespace emulation
