#pragma once

#include <complex>
#include <cstddef>
#include <vector>

#include "field.h"

// The elevation focus of an array: a thin lens on the face of each piston, which acts along the
// piston's own y:
//
//     #include <pistonfield/arrays.h>
//     #include <pistonfield/lens.h>
//
//     using namespace pistonfield;
//     const double k = 2 * pi * 5e6 / 1540;                        // 1/m: 5 MHz in tissue
//     std::vector<Field::Piston> array = linearArray(128, 0.3e-3, 0.27e-3, 5e-3);
//     array = lensed(focused(array, {0, 0, 30e-3}, k), 25e-3, k);
//
// The waves of the face then arrive in phase at the distance F from its centre along its own z. A
// lens advances the velocity at the height y by the path
//
//     L(y) = √(F² + y²) − |F|,  negative if F is negative,
//
// by which the way to the focus is longer from there: in phase by exp(ikL), in time by L/c. With a
// negative F the lens spreads the waves, as if they came from the distance |F| behind the face.
//
// The weights hold for one wave number. For a pulse (pulse.h), replace each piston of an array that
// has its delays by its strips, and subtract path/c from the delay of each:
//
//     std::vector<DelayedPiston> strips;
//     for (const DelayedPiston& one : array)
//       for (const LensStrip& strip : lensStripsOf(one.piston, 25e-3, count))
//         strips.push_back({strip.piston, one.delay - strip.path / c});
//
// A piston moves with one velocity, so it is replaced by strips of equal height along its y, each
// with the path of its middle. The field of the strips differs from that of the lens by less than
//
//     tolerance × the largest pressure,
//
// for a piston alone, at all points that are at least a wavelength away from it, if |F| is at least
// a tenth of its height. Nearer, the steps between the strips are seen: at the face the error is up
// to ten times as large. The errors of an array's pistons add up as their waves do, so an array in
// focus keeps the tolerance, too. The error falls as 1/count². The tolerance of Field comes on top.

namespace pistonfield {

/// A part of a piston, without the phase of the lens, and its path L.
struct LensStrip {
  Field::Piston piston;
  double path = 0;
};

/// Returns how many strips keep a tolerance. With q = |k|·height and the sine a of the angle at
/// which the ray from the piston's edge to the focus is inclined, it is
///
///     q·min(a/(2·tolerance), max(1/π, √(a·(1 + a + 4/q)/(40·tolerance))))
///
/// rounded up. In the first case no velocity is off by more than the tolerance, so that steps may
/// be long; in the second a strip is at most half a wavelength high.
///
/// @param height     of a piston, finite and at least 0
/// @param focus      F, finite and not 0
/// @param k          as for Field; of a complex k the real part. For a pulse, that of the highest
///                   frequency, 2π·f/c.
/// @param tolerance  from 1e-12 to below 1
///
/// Throws a FieldError, which names the argument, unless every argument is in this range, and if
/// there would be more than 1e6 strips.
std::size_t lensStrips(double height, double focus, std::complex<double> k,
                       double tolerance = 1e-3);

/// Returns `count` strips of a piston, in the order of their y.
///
/// @param focus  as for lensStrips
/// @param count  1 to 1e6
std::vector<LensStrip> lensStripsOf(const Field::Piston& piston, double focus, std::size_t count);

/// Returns the strips of all pistons, those of the first piston first, with their weights
/// multiplied by exp(ikL). The arguments are as for lensStrips.
///
/// Throws a FieldError also if a piston is invalid, or if there would be more than 1e6 strips in
/// all.
std::vector<Field::Piston> lensed(const std::vector<Field::Piston>& pistons, double focus,
                                  std::complex<double> k, double tolerance = 1e-3);

}  // namespace pistonfield
