#pragma once

#include <complex>
#include <vector>

#include "field/Points.h"

// Pistons in a lossy medium, divided where whole ones cannot keep a tolerance.

namespace pistonfield {

/// Whether a point lies straight behind a piston, where the pressure jumps at the edges, or all but
/// for rounding.
bool isStraightBehind(const Field::Piston& piston, const Position& p);

/// The sides of parts that are tried, in wavelengths.
constexpr double sidesOfParts[] = {8, 2};

/// How far the edges of parts may be from where they should be.
double roundingOfParts(const std::vector<Field::Piston>& pistons);

/// The pistons in parts of at most this side, but those that have points straight behind them:
/// rounding would decide to which of two parts these belong. None if the parts are too many.
///
/// To the side of a wide piston in a lossy medium, pressures are too small for a difference of
/// integrals along the edges, and parts of it are evaluated by products of rules (ProductRule.h).
std::vector<Field::Piston> inParts(const std::vector<Field::Piston>& pistons,
                                   std::complex<double> k, const Points& points,
                                   double mostSideOfPart);

}  // namespace pistonfield
