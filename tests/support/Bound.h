#pragma once

#include <cmath>

namespace support {

/// 2^-24·(1 + |k|R), R being the distance to the farthest corner: what errors of single precision
/// are counted in.
inline double unitOfError(double x, double y, double z, double a, double b, double k) {
  const double R = std::hypot(std::abs(x) + a, std::abs(y) + b, z);
  return std::ldexp(1.0, -24) * (1 + std::abs(k) * R);
}

/// What all but a few points keep to, of any rule: 3 units. Single ones in unlucky places, and high
/// orders, take more: `promisedUnits`.
inline double tolerance(double x, double y, double z, double a, double b, double k) {
  return 3 * unitOfError(x, y, z, a, b, k);
}

/// How far the rounding of the kernels may be off at any point, before the piston (z ≥ 0) and
/// behind it, in units.
inline double promisedUnits(int order, double z) {
  if (order <= 64) return z >= 0 ? 4.5 : 9;
  if (order <= 256) return z >= 0 ? 6 : 16;
  return z >= 0 ? 7.5 : 27;
}

}  // namespace support
