#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "field.h"

// Arrays of equal pistons, and the weights that shape, steer and focus their beam:
//
//     #include <pistonfield/arrays.h>
//
//     using namespace pistonfield;
//     const double k = 2 * pi * 5e6 / 1540;                        // 1/m: 5 MHz in tissue
//     std::vector<Field::Piston> array = linearArray(128, 0.3e-3, 0.27e-3, 5e-3);
//     array = weighted(array, apodization("hann", {128}));
//     array = focused(array, {0, 0, 30e-3}, k);
//     const std::vector<std::complex<double>> p = Field(array, k).at({{0, 0, 30e-3}});
//
// All lengths, and 1/k, are in one unit. A function throws a FieldError, which names the argument,
// unless every argument is in the range that the comment gives. Elements are counted from 0.

namespace pistonfield {

/// A row of `count` elements along x in the plane z = 0, centred on the origin, from left to right.
/// Element n has the centre
///
///     x = (n − (count − 1)/2)·pitch,  y = z = 0
///
/// @param count   1 to 1e6
/// @param pitch   the distance between the centres of neighbours, above 0
/// @param width   of an element, along x: above 0 and, unless count is 1, at most the pitch (to
///                1e-6 of it). The gap between neighbours is pitch − width.
/// @param height  of an element, along y: above 0
std::vector<Field::Piston> linearArray(std::size_t count, double pitch, double width,
                                       double height);

/// counts[0] by counts[1] elements along x and y in the plane z = 0, centred on the origin. Element
/// i + counts[0]·j has the centre
///
///     x = (i − (counts[0] − 1)/2)·pitches[0],  y = (j − (counts[1] − 1)/2)·pitches[1],  z = 0
///
/// @param counts   along x and y: each from 1, their product at most 1e6
/// @param pitches  the distances between the centres of neighbours along x and y, above 0
/// @param width    of an element, along x: above 0, at most pitches[0] as for a row
/// @param height   of an element, along y: above 0, at most pitches[1]
std::vector<Field::Piston> matrixArray(const std::array<std::size_t, 2>& counts,
                                       const std::array<double, 2>& pitches, double width,
                                       double height);

/// `count` elements on an arc in the plane y = 0. The middle of the arc is the origin, and the
/// centre of curvature (0, 0, −radius). With the angle
///
///     a = (n − (count − 1)/2)·pitch/radius
///
/// element n has the centre radius·(sin a, 0, cos a − 1) and radiates towards (sin a, 0, cos a),
/// away from the centre of curvature. If the radius is negative, the array is concave: it curves
/// forward, and its elements radiate towards the centre of curvature.
///
/// @param count   1 to 1e6
/// @param pitch   the distance between the centres of neighbours along the arc, above 0
/// @param radius  of the arc, negative for a concave array: at least count·pitch/(2π) in magnitude,
///                so that the elements fit on the circle (to 1e-6)
/// @param width   of an element, along the arc: above 0, at most the pitch as for a row
/// @param height  of an element, along y: above 0
std::vector<Field::Piston> convexArray(std::size_t count, double pitch, double radius, double width,
                                       double height);

/// The weights of an array's elements, by the name of a window, in the order of the elements. The
/// window covers the aperture, which includes half a pitch beyond the outermost centres: element n
/// of N is at
///
///     u = (2n + 1 − N)/N
///
/// where −1 and 1 are the edges of the aperture. The weights of a matrix array are the products of
/// those along x and along y. All are from 0 to 1, and 1 at u = 0.
///
///     "rectangular"  1
///     "hann"         cos²(πu/2)
///     "hamming"      0.54 + 0.46·cos πu
///     "tukey"        cos²(πv/(2·parameter)) where v = |u| − 1 + parameter is above 0, 1 elsewhere
///     "gauss"        exp(−(parameter·u)²/2)
///
/// @param name       in upper or lower case
/// @param counts     {count} of a row or an arc, or {counts[0], counts[1]} of a matrix array: each
///                   from 1, their product at most 1e6
/// @param parameter  of "tukey", the part of the aperture that is tapered, 0 to 1 (default: 0.5);
///                   of "gauss", half the aperture in standard deviations, 0 to 10 (default: 2.5);
///                   the other windows have none
std::vector<double> apodization(const std::string& name, const std::vector<std::size_t>& counts,
                                std::optional<double> parameter = std::nullopt);

/// The pistons with their weights multiplied by `weights`, which has one number for each piston.
std::vector<Field::Piston> weighted(std::vector<Field::Piston> pistons,
                                    const std::vector<double>& weights);

/// The pistons with their weights multiplied by the phases that send a plane wave in a direction:
///
///     exp(−ik·c·d/|d|)  for the centre c and the direction d
///
/// @param direction  finite and not 0; its length does not matter
/// @param k          finite; a focus or a direction sets phases, so of a complex k the real part
std::vector<Field::Piston> steered(std::vector<Field::Piston> pistons, const Position& direction,
                                   std::complex<double> k);

/// The pistons with their weights multiplied by the phases with which the waves from all centres
/// arrive at a point in phase:
///
///     exp(ik·(|f − c| − |f|))  for the centre c and the focus f
///
/// A piston at the origin keeps its phase.
///
/// @param focus  finite
/// @param k      as for steered
std::vector<Field::Piston> focused(std::vector<Field::Piston> pistons, const Position& focus,
                                   std::complex<double> k);

}  // namespace pistonfield
