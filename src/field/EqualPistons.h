#pragma once

#include <complex>
#include <vector>

#include "field/Points.h"

namespace pistonfield {

/// Equal pistons that are displaced along the rows of a grid, or a single one: their fields in a
/// row are one field, displaced.
struct EqualPistons {
  std::vector<Field::Piston> pistons;
  std::vector<double> displacements;  ///< from the first one, in steps of the rows
  bool onSteps;                       ///< all displacements are multiples of the step

  /// Of the displacements.
  double least = 0, most = 0;

  /// The sum of the weights' magnitudes.
  double weightSum() const;
};

/// Groups pistons. Positions that differ by at most `negligible` count as equal. If there are very
/// many different pistons, not all are compared.
std::vector<EqualPistons> equalPistons(std::vector<Field::Piston> pistons, const Rows& rows,
                                       double negligible);

}  // namespace pistonfield
