#pragma once

#include "../core/Complex.h"

// The field of a rectangular piston at many points, evaluated on the device in single precision:
//
//     p = −i/(2π)·Σ over the four edges ± d·∫ (exp(−ikR) − exp(−ikz)) / (d² + σ²) dσ,
//
// which for z ≥ 0 is (k/2π)·∬ exp(−ikR)/R dS over the piston. Lengths and 1/k in one unit.
//
// In all functions a is the piston's side along y, b its side along x (both full lengths) and k the
// wave number. They require a current device and a loaded quadrature rule. Results of a grid of
// sx × sy × sz points are stored with the first axis varying fastest. Functions ending in `_device`
// take device pointers (without a GPU: host pointers) to arrays that do not overlap, launch a
// kernel and do not wait for it; the others take host pointers to arrays that may overlap, and
// return when the results have arrived. After an error the contents of the result arrays are
// undefined. Only one thread at a time may call these functions; RectangularPistonCuda2::compute is
// thread-safe. Progress lines go to standard output. Failures of the CUDA runtime call the error
// handler.

extern "C" {

/// If not 0, every launcher except `do_calculate` and `do_calculate_d` waits for its kernel and
/// measures its time.
extern int do_timing;

/// The time of the last measured launch in microseconds.
extern double global_time;

/// A list of points: pos holds x, y, z of each of the nbPositions points; data receives as many
/// values.
void RectangularPiston_func_unstructured(pistonfield::Complex* data, int nbPositions, float* pos,
                                         float a, float b, float k);
void RectangularPiston_func_unstructured_device(pistonfield::Complex* d_array, int nbPos,
                                                float* d_pos, float a, float b, float k);

/// A regular grid placed by a transform: point (i, j, l) is at the first three components of
/// transform·(i, j, l, 1). `transform` holds 16 values on the host, a 4×4 matrix row by row; its
/// last row is not used.
void RectangularPiston_func(pistonfield::Complex* data, int sx, int sy, int sz, float* transform,
                            float a, float b, float k);
void RectangularPiston_func_device(pistonfield::Complex* d_array, int sx, int sy, int sz,
                                   float* transform, float a, float b, float k);

/// The same with real and imaginary parts in separate arrays.
void RectangularPiston_func2(float* datar, float* datai, int sx, int sy, int sz, float* transform,
                             float a, float b, float k);
void RectangularPiston_func2_device(float* d_arrayr, float* d_arrayi, int sx, int sy, int sz,
                                    float* transform, float a, float b, float k);

/// A rectilinear grid given by its axes: sx, sy and sz coordinates.
void RectangularPiston_func_structured(pistonfield::Complex* data, int sx, int sy, int sz,
                                       float* posx, float* posy, float* posz, float a, float b,
                                       float k);
void RectangularPiston_func_structured_device(pistonfield::Complex* d_array, int sx, int sy, int sz,
                                              float* d_posx, float* d_posy, float* d_posz, float a,
                                              float b, float k);

/// A regular grid placed by the twelve values of the first three rows of a transform.
void do_calculate_grid(pistonfield::Complex* data, int sx, int sy, int sz, float transform00,
                       float transform01, float transform02, float transform03, float transform10,
                       float transform11, float transform12, float transform13, float transform20,
                       float transform21, float transform22, float transform23, float a, float b,
                       float k);

/// A regular grid that starts at the piston's centre: point (i, j, l) is at
/// (i·dx, j·dy, l·dz).
void do_calculate(pistonfield::Complex* data, int sx, int sy, int sz, float dx, float dy, float dz,
                  float a, float b, float k);

/// Turns n real parts followed by n imaginary parts into n pairs, in place.
void resort(float* data, int n);
}
