#pragma once

#include <complex>
#include <vector>

#include "field/field.h"

namespace pistonfield {

/// Whether pistons and grid are their own mirror images in the plane through the middle of an axis
/// of the grid, 0 for x and 1 for y. Positions that differ by less than `negligible` are taken for
/// the same.
bool isMirrored(const std::vector<Field::Piston>& pistons, const AxesGrid& grid, int axis,
                double negligible);

/// The first half of an axis, with the middle.
std::vector<double> firstHalf(const std::vector<double>& axis);

/// Returns the pressures on the grid from those on its part with the first half of one or both
/// axes.
std::vector<std::complex<double>> withMirrorImages(const std::vector<std::complex<double>>& part,
                                                   const AxesGrid& grid, bool mirrorsX,
                                                   bool mirrorsY);

}  // namespace pistonfield
