#pragma once

#include <cmath>
#include <complex>

#include "field/field.h"

namespace pistonfield {

inline double dot(const Position& p, const Position& q) {
  return p[0] * q[0] + p[1] * q[1] + p[2] * q[2];
}

inline Position difference(const Position& p, const Position& q) {
  return {p[0] - q[0], p[1] - q[1], p[2] - q[2]};
}

inline bool finite(const Position& p) {
  return std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]);
}

/// Wavelengths per unit of length.
inline double wavelengthsPerUnit(std::complex<double> k) {
  return std::fabs(k.real()) / (2 * 3.14159265358979323846);
}

}  // namespace pistonfield
