#include "field/ExactPressure.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "support/LegendreNode.h"

using namespace pistonfield;
using Piston = Field::Piston;

namespace {

using Real = long double;
const Real pi = std::acos(Real(-1));

std::vector<support::Node> ruleOf(int n) {
  std::vector<support::Node> rule;
  rule.reserve(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i)
    rule.push_back(support::legendreNode(n, std::cos(pi * (i + Real(0.75)) / (n + Real(0.5)))));
  return rule;
}

}  // namespace

std::complex<long double> exactIntegral(Real d, Real z, Real from, Real to, Real k) {
  if (d == 0 || from == to) return 0;
  static const std::vector<support::Node> rule = ruleOf(24);
  const Real rho = std::hypot(d, z);
  const Real u1 = std::asinh(from / rho), u2 = std::asinh(to / rho);
  // Panels of at most a unit of u and of about 8 radians.
  std::vector<Real> ends = {u1};
  while (ends.back() < u2) {
    const Real slope =
        k * rho * std::max(std::fabs(std::sinh(ends.back())), Real(1e-3) * std::cosh(ends.back()));
    const Real u = ends.back(), step = std::min(Real(1), 8 / slope);
    const Real ahead = k * rho * std::fabs(std::sinh(u + step));
    ends.push_back(std::min(u2, u + std::min(step, std::max(8 / ahead, step / 64))));
  }
  std::complex<Real> sum = 0;
  for (std::size_t n = 1; n < ends.size(); ++n) {
    const Real h = (ends[n] - ends[n - 1]) / 2, c = (ends[n] + ends[n - 1]) / 2;
    for (const auto& [x, w] : rule) {
      const Real u = c + h * x, sigma = rho * std::sinh(u);
      const Real D = d * d + sigma * sigma, R = std::sqrt(z * z + D), half = k * D / (R + z) / 2;
      const std::complex<Real> value =
          -2 * std::sin(half) * std::complex<Real>(std::sin(half), std::cos(half)) / D;
      sum += h * w * rho * std::cosh(u) * value;
    }
  }
  return d * sum * std::polar(Real(1), -k * z);
}

std::complex<long double> exactPressure(const Piston& piston, long double k,
                                        const Position& point) {
  if (k < 0) return -std::conj(exactPressure(piston, -k, point));
  Real own[3];
  for (std::size_t axis = 0; axis < 3; ++axis) {
    own[axis] = 0;
    for (std::size_t n = 0; n < 3; ++n)
      own[axis] += static_cast<Real>(piston.axes[axis][n]) *
                   (static_cast<Real>(point[n]) - piston.centre[n]);
  }
  const Real x = std::fabs(own[0]), y = std::fabs(own[1]), z = std::fabs(own[2]);
  const Real a = static_cast<Real>(piston.width) / 2, b = static_cast<Real>(piston.height) / 2;
  const std::complex<Real> sum =
      exactIntegral(a + x, z, y - b, y + b, k) + exactIntegral(a - x, z, y - b, y + b, k) +
      exactIntegral(b + y, z, x - a, x + a, k) + exactIntegral(b - y, z, x - a, x + a, k);
  std::complex<Real> p = std::complex<Real>(0, 1) / (2 * pi) * sum;
  const auto inside = [](Real u, Real half) {
    return u < half ? Real(1) : u == half ? Real(0.5) : Real(0);
  };
  if (own[2] < 0) p += 2 * std::sin(k * z) * inside(x, a) * inside(y, b);
  return p;
}

std::complex<long double> exactPressure(const std::vector<Piston>& pistons, long double k,
                                        const Position& point) {
  std::complex<Real> sum = 0;
  for (const Piston& piston : pistons)
    sum += std::complex<Real>(piston.weight) * exactPressure(piston, k, point);
  return sum;
}
