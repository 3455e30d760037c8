#pragma once

#include <cstddef>

namespace support {

/// During its lifetime, the nth allocation with operator new on any thread of the process fails
/// and, with `lasting`, every later one.
///
/// Only one object may exist at a time. The executable must be linked with FailingAllocation.cpp.
class FailingAllocation {
 public:
  /// Only those allocations count for which `counts`, called on their thread, returns true.
  FailingAllocation(std::size_t nth, bool lasting, bool (*counts)());
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;
  ~FailingAllocation();
};

/// What the last object has done.
bool anAllocationFailed();

/// Whether the first allocation that failed used std::nothrow, as the emulation device does for
/// device memory.
bool itReturnedNull();

/// The number of allocations with operator new that have not been freed.
std::ptrdiff_t liveBlocks();

}  // namespace support
