#pragma once

#include <cuda_runtime.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <utility>
#include <vector>

#include "core/DeviceBuffer.h"
#include "support/GuardedVector.h"

namespace support {

/// An array on the device, followed by a margin that nothing may write to.
template <class T>
class GuardedArray {
 public:
  explicit GuardedArray(std::size_t size) : host_(size) {
    EXPECT_EQ(device_.allocate(host_.data(), host_.bytes()), cudaSuccess);
    EXPECT_EQ(device_.upload(), cudaSuccess);
  }
  T* device() const { return device_.get(); }

  /// Returns what the kernels wrote, and expects the margin to be unchanged.
  std::vector<T> read() {
    EXPECT_EQ(device_.download(), cudaSuccess);
    return host_.read();
  }

 private:
  GuardedVector<T> host_;
  pistonfield::DeviceBuffer<T> device_;
};

template <class T>
class Uploaded {
 public:
  explicit Uploaded(std::vector<T> values) : values_(std::move(values)) {
    EXPECT_EQ(buffer_.allocate(values_.data(), values_.size() * sizeof(T)), cudaSuccess);
    EXPECT_EQ(buffer_.upload(), cudaSuccess);
  }
  T* get() const { return buffer_.get(); }

 private:
  std::vector<T> values_;
  pistonfield::DeviceBuffer<T> buffer_;
};

}  // namespace support
