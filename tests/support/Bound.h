#pragma once

#include <cmath>

namespace support {

/// 2^-24·(1 + |k|R), where R is the distance to the farthest corner: the unit of single-precision
/// errors.
inline double unitOfError(double x, double y, double z, double a, double b, double k) {
  const double R = std::hypot(std::abs(x) + a, std::abs(y) + b, z);
  return std::ldexp(1.0, -24) * (1 + std::abs(k) * R);
}

/// 3 units, the bound that holds with any rule at all but a few points. Single points in unlucky
/// places, and high orders, need the larger `promisedUnits`.
inline double tolerance(double x, double y, double z, double a, double b, double k) {
  return 3 * unitOfError(x, y, z, a, b, k);
}

/// The bound on the kernels' rounding errors at any point, in units, in front of the piston (z ≥ 0)
/// and behind it.
inline double promisedUnits(int order, double z) {
  if (order <= 64) return z >= 0 ? 4.5 : 9;
  if (order <= 256) return z >= 0 ? 6 : 16;
  return z >= 0 ? 7.5 : 27;
}

}  // namespace support
