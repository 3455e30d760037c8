#pragma once

#include <cuda_runtime.h>

#include <cstddef>

namespace pistonfield {

/// Device memory that is freed at the latest when its owner goes, also when an error unwinds.
template <class T>
class DeviceBuffer {
 public:
  DeviceBuffer() = default;
  DeviceBuffer(const DeviceBuffer&) = delete;
  DeviceBuffer& operator=(const DeviceBuffer&) = delete;
  ~DeviceBuffer() {
    if (data_) static_cast<void>(free());
  }

  /// Call once, on an empty buffer.
  cudaError_t allocate(std::size_t bytes) {
    return cudaMalloc(reinterpret_cast<void**>(&data_), bytes);
  }

  cudaError_t free() {
    T* const data = data_;
    data_ = nullptr;
    return cudaFree(data);
  }

  T* get() const { return data_; }

 private:
  T* data_ = nullptr;
};

}  // namespace pistonfield
