#pragma once

#include <cuda_runtime.h>

#include "FastNearfield/Complex.h"

// The double-precision kernels, with the parameters and the points of their single-precision
// namesakes.

__global__ void calculate(pistonfield::Complexd* d_array, int sx, int sy, int sz, double dx,
                          double dy, double dz, double a, double b, double k);
__global__ void calculate_grid(pistonfield::Complexd* d_array, int sx, int sy, int sz,
                               double transform00, double transform01, double transform02,
                               double transform03, double transform10, double transform11,
                               double transform12, double transform13, double transform20,
                               double transform21, double transform22, double transform23, double a,
                               double b, double k);
__global__ void calculate_grid(double* d_arrayr, double* d_arrayi, int sx, int sy, int sz,
                               double transform00, double transform01, double transform02,
                               double transform03, double transform10, double transform11,
                               double transform12, double transform13, double transform20,
                               double transform21, double transform22, double transform23, double a,
                               double b, double k);
__global__ void calculate_grid(pistonfield::Complexd* d_array, int sx, int sy, int sz,
                               double* transform, double a, double b, double k);
__global__ void calculate_grid(double* d_arrayr, double* d_arrayi, int sx, int sy, int sz,
                               double* transform, double a, double b, double k);
