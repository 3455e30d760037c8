#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <vector>

namespace support {

/// An array followed by a margin that nothing may write to.
template <class T>
class GuardedVector {
 public:
  explicit GuardedVector(std::size_t size) : all_(size + margin) {
    std::memset(static_cast<void*>(all_.data()), pattern, bytes());
  }
  T* data() { return all_.data(); }

  /// The size including the margin.
  std::size_t bytes() const { return all_.size() * sizeof(T); }

  /// Returns what was written, and expects the margin to be unchanged.
  std::vector<T> read() const {
    const auto* const behind = reinterpret_cast<const unsigned char*>(&all_[all_.size() - margin]);
    for (std::size_t i = 0; i < margin * sizeof(T); ++i)
      EXPECT_EQ(behind[i], pattern) << "written past the end";
    return {all_.begin(), all_.end() - margin};
  }

 private:
  static constexpr std::size_t margin = 256;
  static constexpr unsigned char pattern = 0xAB;
  std::vector<T> all_;
};

}  // namespace support
