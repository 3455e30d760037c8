#pragma once

#include <mex.h>

#include <complex>
#include <cstddef>
#include <string>
#include <vector>

#include "field/field.h"

// What pistonfield_pressure reads from arrays of the host, and writes to them. The texts, the reals
// and the scalar of a call that users make may be anything; the other readers require what they
// read.

namespace pistonfield {

/// Ends the call with an error if it is not one of the calls of the functions in functions/.
void require(bool isValid);

/// Returns whether the array is full, double and real.
bool isReal(const mxArray* array);

/// A text of at most 15 characters, or "".
std::string textOf(const mxArray* array);

/// The values of an array, or none unless it is full, double and real.
std::vector<double> realsOf(const mxArray* array);

/// One real number, or NaN.
double scalarOf(const mxArray* array);

/// One real number.
double numberOf(const mxArray* array);

/// The columns of a matrix, which must be real with three rows.
const Position* positionsOf(const mxArray* matrix);

/// The values of an array, which must be `count` numbers, full and double.
std::vector<std::complex<double>> numbersOf(const mxArray* array, std::size_t count);

/// The field of a struct, which must be full and double.
const mxArray* memberOf(const mxArray* structure, const char* name);

/// The values of a field of a struct, which must be `count` real numbers.
const double* realsIn(const mxArray* structure, const char* name, std::size_t count);

/// The pistons of a struct with the fields widths, heights, centres, axes and weights.
std::vector<Field::Piston> pistonsOf(const mxArray* structure);

/// The values as an array of the host. Octave writes to a new array, so it is created only when
/// nothing but `values` takes memory.
mxArray* arrayOf(const std::vector<std::complex<double>>& values, const std::vector<mwSize>& sizes);
mxArray* arrayOf(const std::vector<double>& values, const std::vector<mwSize>& sizes);

/// The same with one column.
mxArray* columnOf(const std::vector<double>& values);

/// A real array of zeros.
mxArray* realArray(const std::vector<mwSize>& sizes);

}  // namespace pistonfield
