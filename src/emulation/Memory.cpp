#include <cstddef>
#include <cstring>
#include <limits>

#include "emulation/Call.h"

bool pistonfield::emulation::usesHostMemory() {
  const std::lock_guard lock(stateLock());
  return !theState().memoryIsSeparate;
}

namespace pistonfield::emulation::runtime {

cudaError_t cudaMalloc(void** pointer, std::size_t size) {
  return performOnDevice({"cudaMalloc", size}, [&](State& state) {
    *pointer = nullptr;
    if (size == 0) return cudaSuccess;
    // Rounding a size near the largest up to the alignment would overflow.
    const bool countable = size <= std::numeric_limits<std::ptrdiff_t>::max();
    void* const memory = countable ? ::operator new(size, memoryAlignment, std::nothrow) : nullptr;
    if (!memory) return cudaErrorMemoryAllocation;
    auto* const bytes = static_cast<std::byte*>(memory);
    state.allocations[bytes] = Allocation{decltype(Allocation::memory){bytes}, size};
    if (state.poison) std::memset(memory, 0xFF, size);
    *pointer = memory;
    return cudaSuccess;
  });
}

cudaError_t cudaFree(void* pointer) {
  return performOnDevice({"cudaFree"}, [&](State& state) {
    if (!pointer) return cudaSuccess;
    const auto erased = state.allocations.erase(static_cast<const std::byte*>(pointer));
    return erased > 0 ? cudaSuccess : cudaErrorInvalidValue;
  });
}

cudaError_t cudaMemcpy(void* destination, const void* source, std::size_t size,
                       cudaMemcpyKind kind) {
  return performOnDevice({"cudaMemcpy", size}, [&](State& state) {
    if (kind != cudaMemcpyHostToDevice && kind != cudaMemcpyDeviceToHost)
      return cudaErrorInvalidMemcpyDirection;
    if (size == 0) return cudaSuccess;
    const void* const onDevice = kind == cudaMemcpyHostToDevice ? destination : source;
    const void* const onHost = kind == cudaMemcpyHostToDevice ? source : destination;
    if (!onHost || !state.owns(onDevice, size)) return cudaErrorInvalidValue;
    std::memcpy(destination, source, size);
    return cudaSuccess;
  });
}

}  // namespace pistonfield::emulation::runtime

cudaError_t pistonfield::emulation::copyToSymbol(void* symbol, std::size_t symbolSize,
                                                 const void* source, std::size_t size,
                                                 std::size_t offset, cudaMemcpyKind kind) {
  return performOnDevice({"cudaMemcpyToSymbol", size}, [&](State& state) {
    if (!symbol) return cudaErrorInvalidSymbol;
    if (kind != cudaMemcpyHostToDevice) return cudaErrorInvalidMemcpyDirection;
    if (!source || offset > symbolSize || size > symbolSize - offset) return cudaErrorInvalidValue;
    state.symbols[symbol] = symbolSize;
    std::memcpy(static_cast<std::byte*>(symbol) + offset, source, size);
    return cudaSuccess;
  });
}
