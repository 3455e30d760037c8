#pragma once

#include "../core/Complex.h"

// The field of a rectangular piston on a regular grid, evaluated on the device in double precision.
// Square roots, sines and cosines, and the distance of a point from the planes of symmetry, have
// single precision only. Otherwise these launchers are like those of single precision: a is the
// side along y, b the side along x, k the wave number; they require a current device and a rule
// loaded in double precision; failures of the CUDA runtime call the error handler. They print
// nothing.

extern "C" {

/// A grid placed by a transform: 16 values on the host, a 4×4 matrix row by row whose last row is
/// not used.
void RectangularPiston_func_d(pistonfield::Complexd* data, int sx, int sy, int sz,
                              double* transform, double a, double b, double k);

/// The same with real and imaginary parts in separate arrays.
void RectangularPiston_func2_d(double* datar, double* datai, int sx, int sy, int sz,
                               double* transform, double a, double b, double k);

/// A grid placed by the first three rows of a transform.
void do_calculate_grid_d(pistonfield::Complexd* data, int sx, int sy, int sz, double transform00,
                         double transform01, double transform02, double transform03,
                         double transform10, double transform11, double transform12,
                         double transform13, double transform20, double transform21,
                         double transform22, double transform23, double a, double b, double k);

/// A grid that starts at the piston's centre: point (i, j, l) is at (i·dx, j·dy, l·dz).
void do_calculate_d(pistonfield::Complexd* data, int sx, int sy, int sz, double dx, double dy,
                    double dz, double a, double b, double k);
}
