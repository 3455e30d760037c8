#pragma once

#include <mex.h>

namespace pistonfield {

/// A call of pistonfield_pressure for the geometry or the weights of an array, or for the beams of
/// a field. The first argument is a text. Throws a FieldError if an argument of the user is
/// invalid.
void callForArray(int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[]);

}  // namespace pistonfield
