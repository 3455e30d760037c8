#pragma once

#include "FastNearfield/PointsAndResults.h"
#include "FastNearfield/point/HalfAngleIntegrand.h"
#include "FastNearfield/point/PointPressure.h"
#include "FastNearfield/point/SingleRootIntegrand.h"

namespace pistonfield {

/// A piston and a rule as kernels take them.
template <class T>
struct KernelPiston {
  T halfWidth, halfHeight, k;
  SymmetricRule<T> rule;
};

/// The pressure at one point, with the integrand of the precision: all that a GPU thread computes.
PISTONFIELD_HOST_DEVICE inline Complex kernelPressure(const Point<float>& p,
                                                      const KernelPiston<float>& piston) {
  return pointPressure<HalfAngleIntegrand>(p.x, p.y, p.z, piston.halfWidth, piston.halfHeight,
                                           piston.k, piston.rule);
}

PISTONFIELD_HOST_DEVICE inline Complexd kernelPressure(const Point<double>& p,
                                                       const KernelPiston<double>& piston) {
  return pointPressure<SingleRootIntegrand>(p.x, p.y, p.z, piston.halfWidth, piston.halfHeight,
                                            piston.k, piston.rule);
}

}  // namespace pistonfield
