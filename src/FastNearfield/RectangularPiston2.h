#pragma once

#include "FastNearfield/QuadratureRule.h"
#include "FastNearfield/Transducer.h"

namespace pistonfield {

/// A flat rectangular piston, centred on the origin of the plane z = 0: side s along x, side l
/// along y, both full lengths; wave number k in 1/(unit of the sides).
class RectangularPistonCuda2 : public Piston {
 public:
  /// Stores l, s and k as they are, and computes the rules of order 100 in both precisions.
  RectangularPistonCuda2(double l, double s, double k);
  RectangularPistonCuda2(const RectangularPistonCuda2&) = delete;
  RectangularPistonCuda2& operator=(const RectangularPistonCuda2&) = delete;

  const double l;
  const double s;
  const double k;

 private:
  QuadratureRule<double> doubleTable_;
  QuadratureRule<float> floatTable_;

 public:
  const QuadratureRule<float>* const floatRule;
  const QuadratureRule<double>* const doubleRule;

  /// Whether fields are evaluated on the GPU.
  bool useGPU = true;
};

}  // namespace pistonfield
