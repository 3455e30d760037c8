#pragma once

#include <cmath>
#include <complex>
#include <cstddef>
#include <type_traits>
#include <vector>

#include "FastNearfield/GaussLegendre.h"
#include "FastNearfield/point/PointPressure.h"
#include "support/Bound.h"

// A literal implementation of the formula, in double or higher precision.

namespace support {

/// A rule of precision Real in the layout that the kernels read.
template <class Real>
struct HalfRule {
  explicit HalfRule(int n) : N(n), x(static_cast<std::size_t>(n)), w(static_cast<std::size_t>(n)) {
    pistonfield::legendre_compute(n, x.data(), w.data());
  }
  pistonfield::SymmetricRule<Real> view() const { return {x.data(), w.data(), N}; }
  int N;
  std::vector<Real> x, w;
};

/// Within this distance from a plane of symmetry, the kernels double one half of an edge instead of
/// adding two parts.
constexpr double nearPlane = 1e-7f;

/// Functions without a rounding worth the name.
struct Exact {
  template <class Wide>
  static Wide magnitude(Wide x) {
    return std::abs(x);
  }
  template <class Wide>
  static Wide root(Wide x) {
    return std::sqrt(x);
  }
  template <class Wide>
  static std::complex<Wide> turn(Wide theta) {
    return std::polar(Wide(1), theta);
  }
};

/// The integrals along the edges, seen from height z, in precision Wide. Edges are split at the
/// foot of the perpendicular, unless that is at most `doubled` from their middle.
template <class Real, class Wide, class Functions>
class LiteralEdges {
 public:
  LiteralEdges(Wide z, Wide k, const HalfRule<Real>& rule, Wide doubled)
      : z_(z), k_(k), E0_(Functions::turn(-k * z)), rule_(rule), doubled_(doubled) {}

  std::complex<Wide> F(Wide d, Wide lo, Wide hi) const {
    if (lo == hi) return 0;
    const Wide c = (lo + hi) / 2, h = (hi - lo) / 2;
    std::complex<Wide> sum = 0;
    const auto n = static_cast<std::size_t>(rule_.N / 2);
    for (std::size_t i = 0; i < n; ++i)
      sum += rule_.w[i] * h * (at(d, c + rule_.x[i] * h) + at(d, c - rule_.x[i] * h));
    if (rule_.N % 2 == 1) sum += rule_.w[n] * h * at(d, c);
    return sum;
  }

  std::complex<Wide> pair(Wide d1, Wide d2, Wide v, Wide b) const {
    if (v > b) return d1 * F(d1, v - b, v + b) - d2 * F(d2, v - b, v + b);
    if (v > doubled_)
      return d1 * (F(d1, 0, v + b) + F(d1, v - b, 0)) - d2 * (F(d2, 0, v + b) + F(d2, v - b, 0));
    return 2 * d1 * F(d1, 0, v + b) - 2 * d2 * F(d2, 0, v + b);
  }

 private:
  std::complex<Wide> at(Wide d, Wide sigma) const {
    const Wide D = d * d + sigma * sigma;
    return (Functions::turn(-k_ * Functions::root(z_ * z_ + D)) - E0_) / D;
  }

  Wide z_, k_;
  std::complex<Wide> E0_;
  const HalfRule<Real>& rule_;
  Wide doubled_;
};

/// A parameter of type T that takes no part in the deduction of T.
template <class T>
using Converted = std::common_type_t<T>;

/// The pressure at (x, y, z) of a piston of half-width a along x and half-height b along y.
template <class Wide = double, class Functions = Exact, class Real>
std::complex<Wide> literalPressure(Converted<Wide> x, Converted<Wide> y, Converted<Wide> z,
                                   Converted<Wide> a, Converted<Wide> b, Converted<Wide> k,
                                   const HalfRule<Real>& rule,
                                   Converted<Wide> doubled = nearPlane) {
  const LiteralEdges<Real, Wide, Functions> f(z, k, rule, doubled);
  const Wide u = Functions::magnitude(x), v = Functions::magnitude(y);
  const std::complex<Wide> S = f.pair(u - a, u + a, v, b) + f.pair(v - b, v + b, u, a);
  return std::complex<Wide>(0, -1) * S / (2 * std::acos(Wide(-1)));
}

}  // namespace support
