#pragma once

#include <complex>
#include <cstddef>
#include <memory>
#include <vector>

#include "benchmarks/rayleigh/RayleighSum.h"

namespace rayleigh {

/// A piston's pressures in planes as a convolution of cells with the field of one cell, in single
/// precision; lengths in wavelengths. `step` divides the piston's sides into even numbers of cells.
class FftConvolution {
 public:
  /// Points (i·step, j·step) for |i|, |j| ≤ `reach`.
  FftConvolution(double width, double height, double step, int reach);
  ~FftConvolution();

  /// Writes the pressures at the distance z, x varying fastest.
  void plane(double z, std::complex<float>* pressures);

 private:
  struct Transforms;
  double step_;
  int reach_, cellsX_, cellsY_;
  RayleighSum cell_;
  std::unique_ptr<Transforms> transforms_;
};

}  // namespace rayleigh
