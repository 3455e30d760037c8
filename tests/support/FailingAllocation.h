#pragma once

#include <cstddef>

namespace support {

/// While it lives, the nth allocation with operator new fails, on whatever thread of the process
/// it is made, and with `lasting` also every one after it.
///
/// One at a time, in an executable that FailingAllocation.cpp is linked into.
class FailingAllocation {
 public:
  /// Which allocations count: those of which `counts` says so, on their thread.
  FailingAllocation(std::size_t nth, bool lasting, bool (*counts)());
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;
  ~FailingAllocation();
};

/// What the last one has done.
bool anAllocationFailed();

/// Whether the first that failed was asked for with std::nothrow, as the emulation device asks for
/// device memory.
bool itReturnedNull();

/// Memory of operator new that has not been given back.
std::ptrdiff_t liveBlocks();

}  // namespace support
