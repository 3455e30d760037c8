#pragma once

#include <algorithm>
#include <array>

#include "ErrorHandler.h"

namespace pistonfield {

/// N values of type T, contiguous and in index order, initially zero.
///
/// An index outside 0 … N−1 calls the error handler with "i>=0" or "i<N". The lines in these
/// reports, 42 for read-only access and 48 otherwise, are part of the messages that users know.
template <class T, int N>
class LinearStorage {
 public:
  LinearStorage() = default;

  /// Copies of the N values at `values`.
  explicit LinearStorage(const T* values) { std::copy_n(values, N, values_.begin()); }

  const T& operator[](int i) const {
    check(i, 42);
    return values_[static_cast<std::size_t>(i)];
  }

  T& operator[](int i) {
    check(i, 48);
    return values_[static_cast<std::size_t>(i)];
  }

 private:
  static void check(int i, int line) {
    if (!(i >= 0)) fail("i>=0", {"src/core/Vector", line});
    if (!(i < N)) fail("i<N", {"src/core/Vector", line});
  }

  std::array<T, N> values_{};
};

/// A mathematical vector; `MVector<double, 3>` is a position (x, y, z) in the unit of the piston's
/// sides.
template <class T, int N>
class MVector : public LinearStorage<T, N> {
 public:
  using LinearStorage<T, N>::LinearStorage;
};

}  // namespace pistonfield
