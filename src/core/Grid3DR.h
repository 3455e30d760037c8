#pragma once

#include <array>

#include "core/Grid.h"

namespace pistonfield {

/// A regular grid of sx × sy × sz points, placed in space by a homogeneous transform.
///
/// Grid point (i, j, l) has the linear index (l·sy + j)·sx + i, the first axis varying fastest, and
/// stands at
///
///     p_r = (m(r,3) + m(r,0)·i + m(r,1)·j + m(r,2)·l) / m(3,3),   r = 0, 1, 2.
template <class T>
class Grid3DR : public Grid<T> {
 public:
  /// Row by row: element (r, c) of the matrix is transform[4r + c].
  using Transform = std::array<T, 16>;

  Grid3DR(unsigned sx, unsigned sy, unsigned sz, const Transform& transform)
      : Grid<T>(sx * sy * sz), sx_(sx), sy_(sy), sz_(sz), transform_(transform) {}

  /// The axis-parallel grid whose point (i, j, l) is origin + (i·dx, j·dy, l·dz).
  Grid3DR(unsigned sx, unsigned sy, unsigned sz, MVector<T, 3> origin, MVector<T, 3> spacing)
      : Grid3DR(sx, sy, sz,
                {spacing[0], 0, 0, origin[0],  //
                 0, spacing[1], 0, origin[1],  //
                 0, 0, spacing[2], origin[2],  //
                 0, 0, 0, 1}) {}

  unsigned sx() const { return sx_; }
  unsigned sy() const { return sy_; }
  unsigned sz() const { return sz_; }
  const Transform& transform() const { return transform_; }

  MVector<T, 3> getPosition(int index) const override {
    const auto n = static_cast<unsigned>(index);
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
  T m(int r, int c) const {
    return transform_[4 * static_cast<std::size_t>(r) + static_cast<std::size_t>(c)];
  }

  unsigned sx_, sy_, sz_;
  Transform transform_;
};

}  // namespace pistonfield
