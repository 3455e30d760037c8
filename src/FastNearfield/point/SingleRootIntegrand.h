#pragma once

#include <cmath>

#include "FastNearfield/point/ComplexArithmetic.h"

namespace pistonfield {

/// The textbook form of the integrand in double precision, but with |x|, |y|, the square root,
/// sines and cosines in single precision: the stated accuracy of the double-precision kernels.
template <class V>
class SingleRootIntegrand {
 public:
  using Wave = V;  // k itself

  PISTONFIELD_INLINE SingleRootIntegrand(V z, Wave k) : k_(k), zz_(z * z), E0_(turn(-(k * z))) {}

  PISTONFIELD_INLINE static V distance(V x) { return std::fabs(static_cast<float>(x)); }

  /// R, the distance of the point from the node.
  PISTONFIELD_INLINE V path(V D) const { return std::sqrt(static_cast<float>(zz_ + D)); }

  PISTONFIELD_INLINE ScaledPair<V> value(V D, V path) const {
    const ComplexPair<V> e = turn(-(k_ * path));
    return {V(1) / D, {e.re - E0_.re, e.im - E0_.im}};
  }

  PISTONFIELD_INLINE static ComplexPair<V> complete(ComplexPair<V> sum) {
    constexpr V inverse2Pi = 0.15915494309189535;
    return {sum.im * inverse2Pi, -sum.re * inverse2Pi};
  }

  PISTONFIELD_INLINE static ComplexPair<V> zeroIfPhaseIsLost(ComplexPair<V> p, V /*across*/,
                                                             V /*along*/) {
    return p;
  }

 private:
  /// exp(iθ).
  PISTONFIELD_INLINE static ComplexPair<V> turn(V theta) {
    const auto angle = static_cast<float>(theta);
#ifdef __CUDA_ARCH__
    float sine, cosine;
    sincosf(angle, &sine, &cosine);
    return {cosine, sine};
#else
    return {std::cos(angle), std::sin(angle)};
#endif
  }

  V k_, zz_;
  ComplexPair<V> E0_;
};

}  // namespace pistonfield
