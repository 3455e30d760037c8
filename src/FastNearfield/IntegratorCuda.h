#pragma once

// Loading a quadrature rule into the device's constant memory, where the kernels read it.
//
// `name` is the transducer model whose tables are written; the only model is "RectangularPiston".
// Load a rule inside a CudaDeviceThread and before the first launch. It remains loaded until it is
// replaced or the outermost CudaDeviceThread ends. Loading waits while another thread holds the
// device. Progress lines go to standard output. Invalid arguments and failures of the CUDA runtime
// call the error handler. RectangularPistonCuda.cu has the tables of single precision and
// setIntegratorWeightsSym, RectangularPistonCuda.dp.cu those of double precision.

extern "C" {

/// Computes the Gauss–Legendre rule of `order` nodes, 1 … 512, and loads it in both precisions, or
/// in single precision only if the device has no double precision.
void setCudaIntegratorParameters(const char* name, int order);

/// Loads a symmetric rule of N nodes, 1 … 512. `x` and `w` hold the (N + 1)/2 abscissas and weights
/// of its non-positive half in ascending order.
void setIntegratorWeightsSym(const char* name, const float* x, const float* w, int N);

/// The same in double precision. If the device has no double precision, prints
/// "Support for double not found" to standard error and loads nothing.
void setIntegratorWeightsSym_d(const char* name, const double* x, const double* w, int N);
}
