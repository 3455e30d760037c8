#pragma once

#include <cmath>
#include <complex>
#include <cstddef>
#include <vector>

#include "FastNearfield/GaussLegendre.h"
#include "FastNearfield/PointPressure.h"

// The formula of the kernels in double precision as it is written, and nothing clever.

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

/// The integrals along the edges, seen from height z.
template <class Real>
class LiteralEdges {
 public:
  LiteralEdges(double z, double k, const HalfRule<Real>& rule)
      : z_(z), k_(k), E0_(std::polar(1.0, -k * z)), rule_(rule) {}

  std::complex<double> F(double d, double lo, double hi) const {
    if (lo == hi) return 0;
    const double c = (lo + hi) * 0.5, h = (hi - lo) * 0.5;
    std::complex<double> sum = 0;
    const auto n = static_cast<std::size_t>(rule_.N / 2);
    for (std::size_t i = 0; i < n; ++i)
      sum += rule_.w[i] * h * (at(d, c + rule_.x[i] * h) + at(d, c - rule_.x[i] * h));
    if (rule_.N % 2 == 1) sum += rule_.w[n] * h * at(d, c);
    return sum;
  }

  std::complex<double> pair(double d1, double d2, double v, double b) const {
    if (v > b) return d1 * F(d1, v - b, v + b) - d2 * F(d2, v - b, v + b);
    if (v > double{1e-7f})
      return d1 * (F(d1, 0, v + b) + F(d1, v - b, 0)) - d2 * (F(d2, 0, v + b) + F(d2, v - b, 0));
    return 2 * d1 * F(d1, 0, v + b) - 2 * d2 * F(d2, 0, v + b);
  }

 private:
  std::complex<double> at(double d, double sigma) const {
    const double D = d * d + sigma * sigma;
    return (std::polar(1.0, -k_ * std::sqrt(z_ * z_ + D)) - E0_) / D;
  }

  double z_, k_;
  std::complex<double> E0_;
  const HalfRule<Real>& rule_;
};

/// The pressure at (x, y, z) of a piston of half-width a along x and half-height b along y.
template <class Real>
std::complex<double> literalPressure(double x, double y, double z, double a, double b, double k,
                                     const HalfRule<Real>& rule) {
  const LiteralEdges<Real> f(z, k, rule);
  const double u = std::abs(x), v = std::abs(y);
  const std::complex<double> S = f.pair(u - a, u + a, v, b) + f.pair(v - b, v + b, u, a);
  return std::complex<double>(0, -1) * S / (2 * M_PI);
}

/// How far single precision may be off: 3·2^-24·(1 + kR), R being the distance to the farthest
/// corner.
inline double tolerance(double x, double y, double z, double a, double b, double k) {
  const double R = std::hypot(std::abs(x) + a, std::abs(y) + b, z);
  return 3 * std::ldexp(1.0, -24) * (1 + k * R);
}

}  // namespace support
