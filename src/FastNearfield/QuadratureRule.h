#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>

#include "GaussLegendre.h"

namespace pistonfield {

/// A quadrature rule on [−1, 1], and the rule mapped to another interval.
template <class T>
struct QuadratureRule {
  /// The Gauss–Legendre rule of `n` ≥ 1 nodes. The mapped values are NaN: no interval is mapped
  /// yet.
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
  bool borrowed = false;  ///< if set, the destructor does not delete the four arrays
};

}  // namespace pistonfield
