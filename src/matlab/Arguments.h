#pragma once

#include <mex.h>

// Reads and checks the gateway's arguments, in double precision. Each function ends the call with
// an error message if its argument is invalid. PressuresAt.h converts the points.

namespace pistonfield {

/// The gateway's arguments in order.
enum Argument { POINTS, IGNORED, L, S, K, MODE, NABSCISSAS };

/// The quadrature rule of a call: its order, or a table with that many rows.
struct Quadrature {
  int nabs;
  bool isTable;
  const double* table;  // may be null if it has no rows
};

void checkCounts(int nlhs, int nrhs);
void checkPointsType(const mxArray* points);

/// Reads an order or an M×2 table. Prints a line to standard output for a table.
Quadrature readQuadrature(int nrhs, const mxArray* const* prhs);

/// Returns the first value of a numeric array. For a sparse array that is the first nonzero value,
/// or 0 if there is none.
double readScalar(const mxArray* const* prhs, Argument argument);

/// Returns the number of points, at most 2³¹ − 1. `points` must have three rows.
unsigned countPoints(const mxArray* points);

/// Returns whether the mode selects the device (a GPU or the emulation device), which is the
/// default.
bool selectsDevice(int nrhs, const mxArray* const* prhs);

/// Returns whether `array` is a character array of any shape that holds exactly `text`.
bool isText(const mxArray* array, const char* text);

}  // namespace pistonfield
