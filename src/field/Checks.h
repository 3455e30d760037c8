#pragma once

#include <array>
#include <complex>
#include <cstddef>
#include <string>

#include "field/field.h"
#include "field/medium.h"

// What the classes that compute pressures require of pistons, of k and of media. Each check throws
// a FieldError.

namespace pistonfield {

/// The largest magnitude of a coordinate, in wavelengths.
constexpr double mostWavelengths = 1e9;

/// What does not depend on k. The index is that of the message.
void check(const Field::Piston& piston, std::size_t index);

void check(const Medium& medium);

void checkWaveNumber(std::complex<double> k);

/// Whether a wave number with loss, or a side that is not 0 in wavelengths, is in range.
bool isWaveNumber(std::complex<double> k);
bool isSide(double wavelengths);

/// That the sides and the centre are in range for so many wavelengths per unit of length. The
/// message asks for one unit of lengths and of `other`.
void checkScale(const Field::Piston& piston, double wavelengths, std::size_t index,
                const char* other = "1/k");

void checkTolerance(double tolerance);

/// The rotation next to axes that are one within their rounding.
std::array<Position, 3> orthonormal(const std::array<Position, 3>& axes);

/// As messages show a tolerance.
std::string inDigits(double tolerance);

/// Throws the FieldError for a tolerance that double precision cannot keep, with the one that it
/// can, rounded up so that it is accepted. None is from 0.5 on.
[[noreturn]] void refuseTolerance(double kept);

/// Whether a piston radiates nothing.
bool isSilent(const Field::Piston& piston);

}  // namespace pistonfield
