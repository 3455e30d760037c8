#include "support/FailingAllocation.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<bool (*)()> counted{nullptr};  // null: no allocation fails
std::atomic<std::size_t> made{0}, nthToFail{0};
std::atomic<bool> allFromThere{false}, failed{false}, returnedNull{false};
std::atomic<std::ptrdiff_t> live{0};

bool mustFail(bool returnsNull) {
  bool (*const counts)() = counted;
  if (!counts || !counts()) return false;
  const std::size_t number = ++made;
  if (number != nthToFail && !(allFromThere && number > nthToFail)) return false;
  if (!failed.exchange(true)) returnedNull = returnsNull;
  return true;
}

void* allocate(std::size_t size, std::align_val_t alignment, bool returnsNull) noexcept {
  if (mustFail(returnsNull)) return nullptr;
  void* memory = nullptr;
  const std::size_t boundary = std::max(static_cast<std::size_t>(alignment), sizeof(void*));
  if (posix_memalign(&memory, boundary, std::max<std::size_t>(size, 1)) != 0) return nullptr;
  ++live;
  return memory;
}

void* allocateOrThrow(std::size_t size, std::align_val_t alignment) {
  void* const memory = allocate(size, alignment, false);
  if (!memory) throw std::bad_alloc();
  return memory;
}

void release(void* memory) noexcept {
  if (memory) --live;
  std::free(memory);
}

constexpr std::align_val_t ordinary{alignof(std::max_align_t)};

}  // namespace

// All other forms call these.
void* operator new(std::size_t size) { return allocateOrThrow(size, ordinary); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return allocateOrThrow(size, alignment);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return allocate(size, ordinary, true);
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return allocate(size, alignment, true);
}
void operator delete(void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { release(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { release(memory); }

namespace support {

FailingAllocation::FailingAllocation(std::size_t nth, bool lasting, bool (*counts)()) {
  made = 0;
  nthToFail = nth;
  allFromThere = lasting;
  failed = returnedNull = false;
  counted = counts;
}

FailingAllocation::~FailingAllocation() { counted = nullptr; }

bool anAllocationFailed() { return failed; }

bool itReturnedNull() { return returnedNull; }

std::ptrdiff_t liveBlocks() { return live; }

}  // namespace support
