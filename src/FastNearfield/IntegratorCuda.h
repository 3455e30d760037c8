#pragma once

// The quadrature rule in the device's constant memory, where all kernels read it.
//
// `name` is the transducer model whose tables are written; "RectangularPiston" is the one there is.
// Load a rule after the device has been chosen and before the first launch. It stays until replaced
// or until the outermost CudaDeviceThread ends; loading waits while another thread has one.
// Progress goes to standard output; conditions and failures of the CUDA runtime go to the error
// handler. The tables stand with the kernels that read them: those of single precision in
// RectangularPistonCuda.cu, those of double precision in RectangularPistonCuda.dp.cu.

extern "C" {

/// Computes the Gauss–Legendre rule of `order` nodes, 1 … 512, and loads it in both precisions. A
/// device without double precision gets the single-precision tables only.
void setCudaIntegratorParameters(const char* name, int order);

/// Loads a symmetric rule of N nodes, 1 … 512: the (N + 1)/2 abscissas and weights of its
/// non-positive half, from the most negative upward.
void setIntegratorWeightsSym(const char* name, const float* x, const float* w, int N);

/// The same in double precision. Where the device has no double precision, says
/// "Support for double not found" on standard error and changes nothing.
void setIntegratorWeightsSym_d(const char* name, const double* x, const double* w, int N);
}
