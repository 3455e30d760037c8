#pragma once

#include <cuda_runtime.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <vector>

#include "core/DeviceBuffer.h"

namespace support {

/// An array on the device with a margin behind it that nothing may write.
template <class T>
class GuardedArray {
 public:
  explicit GuardedArray(std::size_t size) : host_(size + margin) {
    std::memset(static_cast<void*>(host_.data()), pattern, bytes());
    EXPECT_EQ(device_.allocate(bytes()), cudaSuccess);
    EXPECT_EQ(cudaMemcpy(device_.get(), host_.data(), bytes(), cudaMemcpyHostToDevice),
              cudaSuccess);
  }
  T* device() const { return device_.get(); }

  /// What the kernels wrote; the margin must be as it was.
  std::vector<T> read() {
    EXPECT_EQ(cudaMemcpy(host_.data(), device_.get(), bytes(), cudaMemcpyDeviceToHost),
              cudaSuccess);
    const auto* const behind =
        reinterpret_cast<const unsigned char*>(&host_[host_.size() - margin]);
    for (std::size_t i = 0; i < margin * sizeof(T); ++i)
      EXPECT_EQ(behind[i], pattern) << "written past the end";
    return {host_.begin(), host_.end() - margin};
  }

 private:
  static constexpr std::size_t margin = 64;
  static constexpr unsigned char pattern = 0xAB;
  std::size_t bytes() const { return host_.size() * sizeof(T); }
  std::vector<T> host_;
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
