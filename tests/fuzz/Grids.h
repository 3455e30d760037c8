#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <cstddef>
#include <vector>

// Grids of any size out of a fuzzer's bytes.

namespace fuzz {

/// sx × sy × sz points; sizes may be anything that an int holds.
struct Size {
  int sx, sy, sz;

  /// Whether a device must evaluate such a grid. One of more points than an int counts it must
  /// refuse, as one of none.
  bool isRight() const;

  /// Whether it would, but take too long for a fuzzer.
  bool isLong() const;

  /// The number of points to make room for.
  std::size_t points() const;
};

Size anySize(FuzzedDataProvider& bytes);

/// A 4×4 matrix row by row.
using Transform = std::array<float, 16>;

Transform anyTransform(FuzzedDataProvider& bytes);

/// x, y, z of the points that the transform gives a right grid, in the operations and the order of
/// the kernels.
std::vector<float> positions(const Size& size, const Transform& transform);

/// The same for a grid with axes of its own.
std::vector<float> positions(const std::vector<float>& x, const std::vector<float>& y,
                             const std::vector<float>& z);

}  // namespace fuzz
