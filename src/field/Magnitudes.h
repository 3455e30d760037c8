#pragma once

#include <complex>
#include <functional>
#include <vector>

#include "field/Evaluation.h"
#include "field/Points.h"

// What evaluations for a relative tolerance do about magnitudes.

namespace pistonfield {

/// Divides the weights by 2^e, so that their sum does not overflow and none is rounded, and removes
/// the pistons that radiate nothing. Returns e.
int takeScale(std::vector<Field::Piston>& pistons);

/// The number times 2^e.
std::complex<double> scaled(std::complex<double> number, int exponent);

/// A lower bound of the largest magnitude among the points, from some of them; or leastPeak times
/// what it can be at the pistons, if it is smaller. In a lossy medium 0 if it is smaller or
/// nothing but rounding errors.
double peakOf(const std::vector<Field::Piston>& whole, std::complex<double> k, const Points& points,
              const std::function<void(double)>& progress);

/// Throws the FieldError for a point beyond mostWavelengths.
[[noreturn]] void refuseFarPoint();

/// Throws the FieldError for an evaluation whose excess is above 1.
[[noreturn]] void refuse(double tolerance, const Used& used);

}  // namespace pistonfield
