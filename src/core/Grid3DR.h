#pragma once

#include <array>
#include <cstdint>
#include <limits>

#include "ErrorHandler.h"
#include "Grid.h"

namespace pistonfield {

/// A regular grid of sx × sy × sz points, placed in space by a homogeneous transform.
///
/// Grid point (i, j, l) has the linear index (l·sy + j)·sx + i, the first axis varying fastest. Its
/// position is
///
///     p_r = (m(r,3) + m(r,0)·i + m(r,1)·j + m(r,2)·l) / m(3,3),   r = 0, 1, 2,
///
/// in `getPosition` and in fields computed on the CPU. Fields computed on the device take m(3,3)
/// as 1.
template <class T>
class Grid3DR : public Grid<T> {
 public:
  /// Row by row: element (r, c) of the matrix is transform[4r + c].
  using Transform = std::array<T, 16>;

  /// Calls the error handler for more than 2³² − 1 points; the grid is then empty.
  Grid3DR(unsigned sx, unsigned sy, unsigned sz, const Transform& transform)
      : Grid<T>(count(sx, sy, sz)), sx_(sx), sy_(sy), sz_(sz), transform_(transform) {
    if (this->nbPositions() == 0 && sx > 0 && sy > 0 && sz > 0) sx_ = sy_ = sz_ = 0;
  }

  /// The axis-parallel grid whose point (i, j, l) is origin + (i·dx, j·dy, l·dz).
  Grid3DR(unsigned sx, unsigned sy, unsigned sz, const MVector<T, 3>& origin,
          const MVector<T, 3>& spacing)
      : Grid3DR(sx, sy, sz,
                {spacing[0], 0, 0, origin[0],  //
                 0, spacing[1], 0, origin[1],  //
                 0, 0, spacing[2], origin[2],  //
                 0, 0, 0, 1}) {}

  unsigned sx() const { return sx_; }
  unsigned sy() const { return sy_; }
  unsigned sz() const { return sz_; }
  const Transform& transform() const { return transform_; }

  /// The position of the grid point with this linear index. Calls the error handler if there is no
  /// such point.
  MVector<T, 3> getPosition(int index) const override {
    const auto n = static_cast<unsigned>(index);
    if (n >= this->nbPositions()) {
      fail("index < nbPositions()", {"src/core/Grid3DR", __LINE__});
      return {};
    }
    const unsigned row = n / sx_;
    return getPosition(n % sx_, row % sy_, row / sy_);
  }

  /// The position of grid point (i, j, l).
  MVector<T, 3> getPosition(unsigned i, unsigned j, unsigned l) const {
    const T v[3] = {static_cast<T>(i), static_cast<T>(j), static_cast<T>(l)};
    MVector<T, 3> p;
    for (int r = 0; r < 3; ++r) {
      p[r] = m(r, 3);
      for (int c = 0; c < 3; ++c) p[r] += m(r, c) * v[c];
      p[r] /= m(3, 3);
    }
    return p;
  }

 private:
  static unsigned count(unsigned sx, unsigned sy, unsigned sz) {
    constexpr std::uint64_t most = std::numeric_limits<unsigned>::max();
    const std::uint64_t page = std::uint64_t{sx} * sy;
    if (sz == 0 || page <= most / sz) return static_cast<unsigned>(page * sz);
    fail("A grid must have at most 4294967295 points", {"src/core/Grid3DR", __LINE__});
    return 0;
  }

  T m(int r, int c) const {
    return transform_[4 * static_cast<std::size_t>(r) + static_cast<std::size_t>(c)];
  }

  unsigned sx_, sy_, sz_;
  Transform transform_;
};

}  // namespace pistonfield
