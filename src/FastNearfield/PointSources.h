#pragma once

#include <cuda_runtime.h>

#include <cstddef>

#include "FastNearfield/Complex.h"

// Where a kernel's points come from, and where their pressures go.

namespace pistonfield {

template <class T>
struct Point {
  T x, y, z;
};

/// The number of points of a grid, in 32-bit arithmetic.
__host__ __device__ inline int gridPoints(int sx, int sy, int sz) {
  return static_cast<int>(static_cast<unsigned>(sx) * static_cast<unsigned>(sy) *
                          static_cast<unsigned>(sz));
}

/// The indices of a grid's point, the first axis varying fastest.
struct GridIndex {
  int i, j, l;
};

// A source has `count()` points; `cursor(n)` stands at number n, `at(cursor)` is its place, and
// `advance(cursor)` goes on to the next, which costs less than to find it anew.

/// A list: x, y, z of each point.
template <class T>
class PointList {
 public:
  __host__ __device__ PointList(int points, const T* pos) : points_(points), pos_(pos) {}

  __host__ __device__ int count() const { return points_; }
  __host__ __device__ const T* cursor(unsigned n) const { return pos_ + std::size_t{3} * n; }
  __host__ __device__ static Point<T> at(const T* p) { return {p[0], p[1], p[2]}; }
  __host__ __device__ static void advance(const T*& p) { p += 3; }

 private:
  int points_;
  const T* pos_;
};

/// A grid whose points `Place` gives by their indices.
template <class T, class Place>
class GridOf {
 public:
  __host__ __device__ GridOf(int sx, int sy, int sz, const Place& place)
      : sx_(sx), sy_(sy), sz_(sz), place_(place) {}

  __host__ __device__ int count() const { return gridPoints(sx_, sy_, sz_); }
  __host__ __device__ GridIndex cursor(unsigned n) const {
    const int thread = static_cast<int>(n);
    return {thread % sx_, thread / sx_ % sy_, thread / sx_ / sy_};
  }
  __host__ __device__ Point<T> at(const GridIndex& index) const { return place_(index); }
  __host__ __device__ void advance(GridIndex& index) const {
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
  __host__ __device__ Point<T> operator()(const GridIndex& index) const {
    return {static_cast<T>(index.i) * dx, static_cast<T>(index.j) * dy,
            static_cast<T>(index.l) * dz};
  }
};

/// At (x[i], y[j], z[l]).
template <class T>
struct Axes {
  const T *x, *y, *z;
  __host__ __device__ Point<T> operator()(const GridIndex& index) const {
    return {x[index.i], y[index.j], z[index.l]};
  }
};

/// At the first three components of t·(i, j, l, 1): the first three rows of a 4×4 matrix.
template <class T>
struct AffineMap {
  T t[12];
  __host__ __device__ Point<T> operator()(const GridIndex& index) const {
    return {row(t, index), row(t + 4, index), row(t + 8, index)};
  }

 private:
  __host__ __device__ static T row(const T* r, const GridIndex& index) {
    return r[0] * static_cast<T>(index.i) + r[1] * static_cast<T>(index.j) +
           r[2] * static_cast<T>(index.l) + r[3];
  }
};

template <class T>
__host__ __device__ inline AffineMap<T> loadAffineMap(const T* transform) {
  AffineMap<T> map;
  for (int n = 0; n < 12; ++n) map.t[n] = transform[n];
  return map;
}

template <class T>
using SteppedGrid = GridOf<T, Steps<T>>;
template <class T>
using AxesGrid = GridOf<T, Axes<T>>;
template <class T>
using MappedGrid = GridOf<T, AffineMap<T>>;

/// Pressures as pairs.
template <class T>
struct Pairs {
  ComplexPair<T>* values;
  __host__ __device__ void store(unsigned n, ComplexPair<T> p) const { values[n] = p; }
};

/// Real and imaginary parts in arrays of their own.
template <class T>
struct Parts {
  T *re, *im;
  __host__ __device__ void store(unsigned n, ComplexPair<T> p) const {
    re[n] = p.re;
    im[n] = p.im;
  }
};

}  // namespace pistonfield
