#pragma once

#include <cuda_runtime.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "core/DeviceBuffer.h"
#include "support/GuardedVector.h"

namespace support {

/// An array on the device with a margin behind it that nothing may write.
template <class T>
class GuardedArray {
 public:
  explicit GuardedArray(std::size_t size) : host_(size) {
    EXPECT_EQ(device_.allocate(host_.bytes()), cudaSuccess);
    EXPECT_EQ(cudaMemcpy(device_.get(), host_.data(), host_.bytes(), cudaMemcpyHostToDevice),
              cudaSuccess);
  }
  T* device() const { return device_.get(); }

  /// What the kernels wrote; the margin must be as it was.
  std::vector<T> read() {
    EXPECT_EQ(cudaMemcpy(host_.data(), device_.get(), host_.bytes(), cudaMemcpyDeviceToHost),
              cudaSuccess);
    return host_.read();
  }

 private:
  GuardedVector<T> host_;
  pistonfield::DeviceBuffer<T> device_;
};

template <class T>
class Uploaded {
 public:
  explicit Uploaded(const std::vector<T>& values) {
    const std::size_t bytes = values.size() * sizeof(T);
    EXPECT_EQ(buffer_.allocate(bytes), cudaSuccess);
    EXPECT_EQ(cudaMemcpy(buffer_.get(), values.data(), bytes, cudaMemcpyHostToDevice), cudaSuccess);
  }
  T* get() const { return buffer_.get(); }

 private:
  pistonfield::DeviceBuffer<T> buffer_;
};

}  // namespace support
