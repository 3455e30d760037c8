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

/// √(a² + b²). The C library's hypot of two numbers needs a newer library than the modules do.
inline double hypotenuse(double a, double b) { return std::hypot(a, b, 0.0); }

inline double length(const Position& p) { return std::hypot(p[0], p[1], p[2]); }

inline Position scaled(const Position& p, double divisor) {
  return {p[0] / divisor, p[1] / divisor, p[2] / divisor};
}

/// How much longer the path to a focus is from a centre than from the origin, without the
/// cancellation of |f − c| − |f|.
inline double longerPath(const Position& c, const Position& f) {
  const double mean = (length(difference(f, c)) + length(f)) / 2;
  return mean > 0 ? -dot(c, scaled(difference(f, scaled(c, 2)), mean)) : 0;
}

inline bool finite(const Position& p) {
  return std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]);
}

/// Wavelengths per unit of length.
inline double wavelengthsPerUnit(std::complex<double> k) {
  return std::fabs(k.real()) / (2 * 3.14159265358979323846);
}

}  // namespace pistonfield
