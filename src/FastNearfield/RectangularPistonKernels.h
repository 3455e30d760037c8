#pragma once

#include "core/CudaCompatibility.h"

#include "core/Complex.h"

// The kernels: one thread per point (evaluatePoints() in EvaluatePointsOnGpu.h). halfWidth is half
// the piston's side along x, halfHeight half its side along y. The result of point n goes to
// element n; threads beyond the last point do nothing.

namespace pistonfield {

/// Point (i, j, l) at (i·dx, j·dy, l·dz).
template <class T>
using GridFromCentre = void(ComplexPair<T>* d_array, int sx, int sy, int sz, T dx, T dy, T dz,
                            T halfWidth, T halfHeight, T k);

/// Point (i, j, l) at transform·(i, j, l, 1), the transform as twelve values.
template <class T>
using GridByValues = void(ComplexPair<T>* d_array, int sx, int sy, int sz, T transform00,
                          T transform01, T transform02, T transform03, T transform10, T transform11,
                          T transform12, T transform13, T transform20, T transform21, T transform22,
                          T transform23, T halfWidth, T halfHeight, T k);

/// The same, real and imaginary parts in two arrays.
template <class T>
using SplitGridByValues = void(T* d_arrayr, T* d_arrayi, int sx, int sy, int sz, T transform00,
                               T transform01, T transform02, T transform03, T transform10,
                               T transform11, T transform12, T transform13, T transform20,
                               T transform21, T transform22, T transform23, T halfWidth,
                               T halfHeight, T k);

/// The same with the transform in device memory, row by row.
template <class T>
using GridByTransform = void(ComplexPair<T>* d_array, int sx, int sy, int sz, T* transform,
                             T halfWidth, T halfHeight, T k);
template <class T>
using SplitGridByTransform = void(T* d_arrayr, T* d_arrayi, int sx, int sy, int sz, T* transform,
                                  T halfWidth, T halfHeight, T k);

}  // namespace pistonfield

// Declarations of functions with these signatures.

__global__ pistonfield::GridFromCentre<float> calculate;
__global__ pistonfield::GridFromCentre<double> calculate;
__global__ pistonfield::GridByValues<float> calculate_grid;
__global__ pistonfield::GridByValues<double> calculate_grid;
__global__ pistonfield::SplitGridByValues<float> calculate_grid;
__global__ pistonfield::SplitGridByValues<double> calculate_grid;
__global__ pistonfield::GridByTransform<float> calculate_grid;
__global__ pistonfield::GridByTransform<double> calculate_grid;
__global__ pistonfield::SplitGridByTransform<float> calculate_grid;
__global__ pistonfield::SplitGridByTransform<double> calculate_grid;

/// Point n at pos[3n], pos[3n+1], pos[3n+2].
__global__ void calculate_grid_unstructured(pistonfield::Complex* d_array, int nbPos, float* pos,
                                            float halfWidth, float halfHeight, float k);

/// Point (i, j, l) at (posx[i], posy[j], posz[l]).
__global__ void calculate_grid_structured(pistonfield::Complex* d_array, int sx, int sy, int sz,
                                          float* posx, float* posy, float* posz, float halfWidth,
                                          float halfHeight, float k);
