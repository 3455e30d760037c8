#pragma once

#include <mex.h>

#include <complex>
#include <cstddef>
#include <vector>

#include "field/field.h"

// What pistonfield_pressure reads from arrays of the host, and writes to them.

namespace pistonfield {

/// Ends the call with an error if it is not one of the calls of the functions in functions/.
void require(bool isValid);

/// Returns whether the array is full, double and real.
bool isReal(const mxArray* array);

/// The columns of a matrix, which must be real with three rows.
const Position* positionsOf(const mxArray* matrix);

/// The values of an array, which must be `count` numbers, full and double.
std::vector<std::complex<double>> numbersOf(const mxArray* array, std::size_t count);

/// The pistons of a struct of double arrays: widths, heights, centres, axes and weights.
std::vector<Field::Piston> pistonsOf(const mxArray* structure);

/// The values as an array of the host. Octave writes to a new array, so it is created only when
/// nothing but `values` takes memory.
mxArray* arrayOf(const std::vector<std::complex<double>>& values, const std::vector<mwSize>& sizes);

}  // namespace pistonfield
