#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>

#include "FastNearfield/GaussLegendre.h"

namespace pistonfield {

/// A quadrature rule on [−1, 1] with room for its image on another interval.
template <class T>
struct QuadratureRule {
  /// The Gauss–Legendre rule of `n` ≥ 1 nodes; no interval is mapped yet, which NaN says.
  explicit QuadratureRule(int n) : order(n) {
    const auto size = static_cast<std::size_t>(n);
    std::unique_ptr<T[]> abscissas(new T[size]), weights(new T[size]);
    std::unique_ptr<T[]> imageX(new T[size]), imageW(new T[size]);
    std::fill_n(imageX.get(), n, std::numeric_limits<T>::quiet_NaN());
    std::fill_n(imageW.get(), n, std::numeric_limits<T>::quiet_NaN());
    legendre_compute(n, abscissas.get(), weights.get());
    x = abscissas.release();
    w = weights.release();
    mappedX = imageX.release();
    mappedW = imageW.release();
  }
  QuadratureRule(const QuadratureRule&) = delete;
  QuadratureRule& operator=(const QuadratureRule&) = delete;
  ~QuadratureRule() {
    if (borrowed) return;
    delete[] mappedW;
    delete[] mappedX;
    delete[] w;
    delete[] x;
  }

  int order;
  T* x;                   ///< abscissas, ascending
  T* w;                   ///< weights
  T* mappedX;             ///< abscissas on the most recent interval
  T* mappedW;             ///< weights on the most recent interval
  bool borrowed = false;  ///< whether the four arrays belong to somebody else
};

}  // namespace pistonfield
