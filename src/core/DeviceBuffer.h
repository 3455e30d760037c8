#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

#include "core/CudaCompatibility.h"

namespace pistonfield {

/// The device's copy of a host array. If the device works in the host's memory, the buffer is the
/// array itself and copying does nothing. Otherwise it is device memory, which the destructor frees
/// if `free` has not.
template <class T>
class DeviceBuffer {
 public:
  DeviceBuffer() = default;
  DeviceBuffer(const DeviceBuffer&) = delete;
  DeviceBuffer& operator=(const DeviceBuffer&) = delete;
  ~DeviceBuffer() {
    if (data_) static_cast<void>(free());
  }

  /// Call this or the next function, once. The array must outlive the buffer.
  cudaError_t allocate(T* array, std::size_t bytes) {
    return allocateAs(usesHostMemory(), array, bytes);
  }

  /// The same for a kernel that also writes to `results`. If the two arrays overlap, the buffer is
  /// device memory even if the device works in the host's.
  template <class Result>
  cudaError_t allocate(T* array, std::size_t bytes, const DeviceBuffer<Result>& results) {
    return allocateAs(usesHostMemory() && !results.overlaps(array, bytes), array, bytes);
  }

  /// Whether this buffer's array and `other` share bytes.
  bool overlaps(const void* other, std::size_t bytes) const {
    const auto begin = reinterpret_cast<std::uintptr_t>(array_),
               otherBegin = reinterpret_cast<std::uintptr_t>(other);
    // The negative one of the differences wraps to a number larger than any size.
    return otherBegin - begin < bytes_ || begin - otherBegin < bytes;
  }

  /// Copies the array to the device.
  cudaError_t upload() {
    return isArray_ ? cudaSuccess : cudaMemcpy(data_, array_, bytes_, cudaMemcpyHostToDevice);
  }

  /// Copies the device's values to the array.
  cudaError_t download() {
    return isArray_ ? cudaSuccess : cudaMemcpy(array_, data_, bytes_, cudaMemcpyDeviceToHost);
  }

  cudaError_t free() {
    T* const data = data_;
    data_ = nullptr;
    return isArray_ ? cudaSuccess : cudaFree(data);
  }

  /// The values on the device.
  T* get() const { return data_; }

 private:
  cudaError_t allocateAs(bool isArray, T* array, std::size_t bytes) {
    array_ = array;
    bytes_ = bytes;
    isArray_ = isArray;
    if (!isArray_) return cudaMalloc(reinterpret_cast<void**>(&data_), bytes);
    // As cudaMalloc does for sizes beyond any memory, to which negative sizes convert.
    if (bytes > std::numeric_limits<std::ptrdiff_t>::max()) return cudaErrorMemoryAllocation;
    if (!array && bytes > 0) return cudaErrorInvalidValue;
    data_ = array;
    return cudaSuccess;
  }

  T* array_ = nullptr;
  std::size_t bytes_ = 0;
  T* data_ = nullptr;
  bool isArray_ = false;
};

}  // namespace pistonfield
