#pragma once

#include <complex>
#include <vector>

#include "field/Evaluation.h"

namespace pistonfield {

/// Equal pistons that are displaced along the rows of a grid: their fields in a row are one field,
/// displaced. It is evaluated once, on a longer row. Where displacements are no multiples of the
/// grid's step, the row is denser, and the field is interpolated there.
///
/// The interpolation is the polynomial through 12 neighbouring samples. With samples h apart its
/// error in a row at the distance z from the plane of the pistons is at most
///
///     26382·(h/δ)¹²·2·exp(kδ)   for every δ < z.
///
/// The field is analytic in the position along the row up to z off the real axis. Up to δ = 12/k or
/// 0.9·z off it, its magnitude was nowhere found above 0.75 of 2·exp(kδ). The factor before it is
/// the largest product of distances from 12 samples, with Cauchy's bound of the 12th derivative
/// over 12!. The factors of the samples add up to at most 1.63, so that their errors grow by as
/// much.
struct SharedGroup {
  Field::Piston piston;               ///< the first one, with weight 1
  std::vector<double> displacements;  ///< from the first one, in steps of the rows
  std::vector<std::complex<double>> weights;
  bool onSamples;  ///< all displacements are multiples of the step

  double weightSum() const;
};

/// Takes the pistons that are worth sharing out of `pistons`, in groups. Positions that differ by
/// at most `negligible` are taken for the same. Of very many different pistons some are not
/// compared.
std::vector<SharedGroup> takeSharedGroups(std::vector<Field::Piston>& pistons, const Points& points,
                                          double negligible);

/// Adds the pressures of a group, with an error of at most `tolerance`. Returns what was used.
Used addSharedGroup(const SharedGroup& group, double k, double tolerance, const Shift& shift,
                    const Points& points, std::complex<double>* pressures, Work& work);

}  // namespace pistonfield
