#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <random>
#include <string>
#include <vector>

#include "field/field.h"

// What tests of fields share.

inline pistonfield::Field::Piston piston(double width, double height,
                                         pistonfield::Position centre = {0, 0, 0},
                                         std::complex<double> weight = 1) {
  pistonfield::Field::Piston p;
  p.width = width;
  p.height = height;
  p.centre = centre;
  p.weight = weight;
  return p;
}

/// What a call throws, or "".
template <class Call>
std::string errorOf(Call call) {
  try {
    call();
  } catch (const pistonfield::FieldError& error) {
    return error.what();
  }
  return "";
}

inline double dot(const pistonfield::Position& p, const pistonfield::Position& q) {
  return p[0] * q[0] + p[1] * q[1] + p[2] * q[2];
}

/// p in the axes of the piston.
inline pistonfield::Position inPiston(const pistonfield::Field::Piston& piston,
                                      const pistonfield::Position& p) {
  const pistonfield::Position from = {p[0] - piston.centre[0], p[1] - piston.centre[1],
                                      p[2] - piston.centre[2]};
  return {dot(piston.axes[0], from), dot(piston.axes[1], from), dot(piston.axes[2], from)};
}

inline std::array<pistonfield::Position, 3> anyRotation(std::mt19937& random) {
  std::normal_distribution<double> normal;
  double a = normal(random), b = normal(random), c = normal(random), d = normal(random);
  const double length = std::sqrt(a * a + b * b + c * c + d * d);
  a /= length, b /= length, c /= length, d /= length;
  return {{{a * a + b * b - c * c - d * d, 2 * (b * c + a * d), 2 * (b * d - a * c)},
           {2 * (b * c - a * d), a * a - b * b + c * c - d * d, 2 * (c * d + a * b)},
           {2 * (b * d + a * c), 2 * (c * d - a * b), a * a - b * b - c * c + d * d}}};
}

inline pistonfield::FieldOptions toTolerance(double tolerance) {
  pistonfield::FieldOptions options;
  options.tolerance = tolerance;
  return options;
}

inline double peakOf(const std::vector<std::complex<double>>& pressures) {
  double peak = 0;
  for (const std::complex<double>& p : pressures) peak = std::max(peak, std::abs(p));
  return peak;
}
