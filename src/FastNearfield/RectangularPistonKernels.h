#pragma once

#include <cuda_runtime.h>

#include "FastNearfield/Complex.h"

// The single-precision kernels. One thread a point; a is half the piston's side along x, b half its
// side along y. The result of point n goes to element n; threads beyond the last point do nothing.

/// Point (i, j, l) at (i·dx, j·dy, l·dz).
__global__ void calculate(pistonfield::Complex* d_array, int sx, int sy, int sz, float dx, float dy,
                          float dz, float a, float b, float k);

/// Point (i, j, l) at transform·(i, j, l, 1): the transform as twelve values or in memory, the
/// results as pairs or in two arrays.
__global__ void calculate_grid(pistonfield::Complex* d_array, int sx, int sy, int sz,
                               float transform00, float transform01, float transform02,
                               float transform03, float transform10, float transform11,
                               float transform12, float transform13, float transform20,
                               float transform21, float transform22, float transform23, float a,
                               float b, float k);
__global__ void calculate_grid(float* d_arrayr, float* d_arrayi, int sx, int sy, int sz,
                               float transform00, float transform01, float transform02,
                               float transform03, float transform10, float transform11,
                               float transform12, float transform13, float transform20,
                               float transform21, float transform22, float transform23, float a,
                               float b, float k);
__global__ void calculate_grid(pistonfield::Complex* d_array, int sx, int sy, int sz,
                               float* transform, float a, float b, float k);
__global__ void calculate_grid(float* d_arrayr, float* d_arrayi, int sx, int sy, int sz,
                               float* transform, float a, float b, float k);

/// Point n at pos[3n], pos[3n+1], pos[3n+2].
__global__ void calculate_grid_unstructured(pistonfield::Complex* d_array, int nbPos, float* pos,
                                            float a, float b, float k);

/// Point (i, j, l) at (posx[i], posy[j], posz[l]).
__global__ void calculate_grid_structured(pistonfield::Complex* d_array, int sx, int sy, int sz,
                                          float* posx, float* posy, float* posz, float a, float b,
                                          float k);
