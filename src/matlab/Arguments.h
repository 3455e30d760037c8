#pragma once

#include <mex.h>

// The checks and conversions of the gateway's arguments. Each ends the call with its message when
// an argument is not what it must be.

namespace pistonfield {

/// The gateway's arguments in order.
enum Argument { POINTS, IGNORED, L, S, K, MODE, NABSCISSAS };

/// A quadrature rule as the user names it: an order, or a table with that many rows.
struct Quadrature {
  int nabs;
  bool isTable;
  const double* table;  // may be null when it has no rows
};

void checkCounts(int nlhs, int nrhs);
void checkPointsType(const mxArray* points);

/// An order or an M×2 table; says on standard output when it is a table.
Quadrature readQuadrature(int nrhs, const mxArray* const* prhs);

/// The first value of a numeric array; of a sparse one the first that is not zero, if any.
double readScalar(const mxArray* const* prhs, Argument argument);

/// The number of points, at most 2³¹ − 1; `points` must have three rows.
unsigned countPoints(const mxArray* points);

/// Whether the mode names the GPU; a call without one does.
bool readUseGPU(int nrhs, const mxArray* const* prhs);

/// Whether `array` is a character array, of any shape, whose text is `text`, exactly.
bool isText(const mxArray* array, const char* text);

}  // namespace pistonfield
