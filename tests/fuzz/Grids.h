#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <cstddef>
#include <vector>

// Makes grids of any size from a fuzzer's bytes.

namespace fuzz {

/// sx × sy × sz points; each size may be any int.
struct Size {
  int sx, sy, sz;

  /// Whether a device must evaluate such a grid. It must reject an empty grid and a grid of more
  /// points than an int can count.
  bool isRight() const;

  /// Whether the grid is valid, but would take too long for a fuzzer.
  bool isLong() const;

  /// The number of points to allocate results for.
  std::size_t points() const;
};

Size anySize(FuzzedDataProvider& bytes);

/// A 4×4 matrix row by row.
using Transform = std::array<float, 16>;

Transform anyTransform(FuzzedDataProvider& bytes);

/// x, y, z of the points of a valid grid placed by a transform, computed with the kernels'
/// operations in the same order.
std::vector<float> positions(const Size& size, const Transform& transform);

/// The same for a grid given by its axes.
std::vector<float> positions(const std::vector<float>& x, const std::vector<float>& y,
                             const std::vector<float>& z);

}  // namespace fuzz
