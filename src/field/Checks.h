#pragma once

#include <array>
#include <complex>
#include <cstddef>
#include <string>

#include "field/field.h"

// What the classes that compute pressures require of pistons and of k. Each check throws a
// FieldError.

namespace pistonfield {

/// What does not depend on k. The index is that of the message.
void check(const Field::Piston& piston, std::size_t index);

void checkWaveNumber(std::complex<double> k);

/// That the sides and the centre are in range for so many wavelengths per unit of length.
void checkScale(const Field::Piston& piston, double wavelengths, std::size_t index);

void checkTolerance(double tolerance);

/// The rotation next to axes that are one within their rounding.
std::array<Position, 3> orthonormal(const std::array<Position, 3>& axes);

/// As messages show a tolerance.
std::string inDigits(double tolerance);

}  // namespace pistonfield
