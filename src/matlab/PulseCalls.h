#pragma once

#include <mex.h>

#include <optional>

#include "matlab/ProgressBar.h"

namespace pistonfield {

/// A call of pistonfield_pressure for pressures or echoes against time, or for excitations and
/// delays. The first argument is a text. Returns false if it names another call. `bar` is set if
/// the call has one. Throws a FieldError if an argument of the user is invalid, or a Stopped.
bool callForPulse(int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[],
                  std::optional<ProgressBar>& bar);

}  // namespace pistonfield
