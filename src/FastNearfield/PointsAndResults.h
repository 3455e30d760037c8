#pragma once

#include <cstddef>

#include "core/Complex.h"
#include "lanes/HostDevice.h"

// Lists and grids of points for kernels, and where their pressures go.

namespace pistonfield {

template <class T>
struct Point {
  T x, y, z;
};

/// The number of points of a grid, in 32-bit arithmetic.
PISTONFIELD_HOST_DEVICE inline int gridPoints(int sx, int sy, int sz) {
  return static_cast<int>(static_cast<unsigned>(sx) * static_cast<unsigned>(sy) *
                          static_cast<unsigned>(sz));
}

/// The indices of a grid's point, the first axis varying fastest.
struct GridIndex {
  int i, j, l;
};

// A list or grid has `count()` points. `cursor(n)` refers to point n and `at(cursor)` is its
// position. `advance(cursor)` moves to the next point, which costs less than a new cursor.

/// A list: x, y, z of each point, converted when they are read.
template <class T, class Stored = T>
class PointList {
 public:
  PISTONFIELD_HOST_DEVICE PointList(int points, const Stored* pos) : points_(points), pos_(pos) {}

  PISTONFIELD_HOST_DEVICE int count() const { return points_; }
  PISTONFIELD_HOST_DEVICE const Stored* cursor(unsigned n) const {
    return pos_ + std::size_t{3} * n;
  }
  PISTONFIELD_HOST_DEVICE static Point<T> at(const Stored* p) {
    return {static_cast<T>(p[0]), static_cast<T>(p[1]), static_cast<T>(p[2])};
  }
  PISTONFIELD_HOST_DEVICE static void advance(const Stored*& p) { p += 3; }

 private:
  int points_;
  const Stored* pos_;
};

/// A grid. `Place` computes the position of a point from its indices.
template <class T, class Place>
class GridOf {
 public:
  PISTONFIELD_HOST_DEVICE GridOf(int sx, int sy, int sz, const Place& place)
      : sx_(sx), sy_(sy), sz_(sz), place_(place) {}

  PISTONFIELD_HOST_DEVICE int count() const { return gridPoints(sx_, sy_, sz_); }
  PISTONFIELD_HOST_DEVICE GridIndex cursor(unsigned n) const {
    const int thread = static_cast<int>(n);
    return {thread % sx_, thread / sx_ % sy_, thread / sx_ / sy_};
  }
  PISTONFIELD_HOST_DEVICE Point<T> at(const GridIndex& index) const { return place_(index); }
  PISTONFIELD_HOST_DEVICE void advance(GridIndex& index) const {
    if (++index.i < sx_) return;
    index.i = 0;
    if (++index.j < sy_) return;
    index.j = 0;
    ++index.l;
  }

 private:
  int sx_, sy_, sz_;
  Place place_;
};

/// At (i·dx, j·dy, l·dz).
template <class T>
struct Steps {
  T dx, dy, dz;
  PISTONFIELD_HOST_DEVICE Point<T> operator()(const GridIndex& index) const {
    return {static_cast<T>(index.i) * dx, static_cast<T>(index.j) * dy,
            static_cast<T>(index.l) * dz};
  }
};

/// At (x[i], y[j], z[l]).
template <class T>
struct Axes {
  const T *x, *y, *z;
  PISTONFIELD_HOST_DEVICE Point<T> operator()(const GridIndex& index) const {
    return {x[index.i], y[index.j], z[index.l]};
  }
};

/// At the first three components of t·(i, j, l, 1): the first three rows of a 4×4 matrix.
template <class T>
struct AffineMap {
  T t[12];
  PISTONFIELD_HOST_DEVICE Point<T> operator()(const GridIndex& index) const {
    return {row(t, index), row(t + 4, index), row(t + 8, index)};
  }

 private:
  PISTONFIELD_HOST_DEVICE static T row(const T* r, const GridIndex& index) {
    return r[0] * static_cast<T>(index.i) + r[1] * static_cast<T>(index.j) +
           r[2] * static_cast<T>(index.l) + r[3];
  }
};

template <class T>
PISTONFIELD_HOST_DEVICE inline AffineMap<T> loadAffineMap(const T* transform) {
  AffineMap<T> map;
  for (int n = 0; n < 12; ++n) map.t[n] = transform[n];
  return map;
}

template <class T>
using SteppedGrid = GridOf<T, Steps<T>>;
template <class T>
using GridOnAxes = GridOf<T, Axes<T>>;
template <class T>
using MappedGrid = GridOf<T, AffineMap<T>>;

/// Pressures as pairs.
template <class T>
struct Pairs {
  ComplexPair<T>* values;
  PISTONFIELD_HOST_DEVICE void store(std::size_t n, ComplexPair<T> p) const { values[n] = p; }
};

/// Real and imaginary parts in separate arrays, converted when they are written.
template <class T, class Stored = T>
struct Parts {
  Stored *re, *im;
  PISTONFIELD_HOST_DEVICE void store(std::size_t n, ComplexPair<T> p) const {
    re[n] = static_cast<Stored>(p.re);
    im[n] = static_cast<Stored>(p.im);
  }
};

}  // namespace pistonfield
