#pragma once

#include <complex>
#include <mutex>

#include "FastNearfield/QuadratureRule.h"
#include "FastNearfield/Transducer.h"

namespace pistonfield {

/// A flat rectangular piston, centred on the origin of the plane z = 0: side s along x, side l
/// along y, both full lengths; wave number k in 1/(unit of the sides).
///
/// Its pressure, with the time factor exp(+iωt), is by the fast near-field method
///
///     p = −i/(2π)·[ x1·∫ g(x1) dσ − x2·∫ g(x2) dσ   over [y1, y2]
///                 + y1·∫ g(y1) dσ − y2·∫ g(y2) dσ ]  over [x1, x2],
///
///     g(d) = (exp(−ik√(z² + σ² + d²)) − exp(−ikz)) / (σ² + d²),
///
/// with x1, x2 = x ∓ s/2 and y1, y2 = y ∓ l/2; for z ≥ 0 that is (k/2π)·∬ exp(−ikR)/R dS over the
/// piston. On the CPU the rule has order 100. For z ≥ 0 rounding moves its result by less than
/// 5·u·(1 + |k|R), u being 2⁻²⁴ or 2⁻⁵³ and R the distance to the farthest corner; behind the
/// piston by less than 12·u·(1 + |k|R), and next to the planes through its edges there by 3000. The
/// rule's own error comes on top: it grows next to an edge, and with sides above some 50
/// wavelengths. Sides below 1e-7, in the unit of the lengths, give other values.
///
/// Any number of threads may call `compute` at once. Those that compute on the device wait for each
/// other as CudaDeviceThread says; so do those that compute with the same piston on the CPU.
class RectangularPistonCuda2 : public Piston {
 public:
  /// Stores l, s and k as they are, and computes the rules of order 100 in both precisions.
  RectangularPistonCuda2(double l, double s, double k);
  RectangularPistonCuda2(const RectangularPistonCuda2&) = delete;
  RectangularPistonCuda2& operator=(const RectangularPistonCuda2&) = delete;

  /// Writes the real and imaginary part at each point of the grid, first axis fastest, to
  /// 2·nbPositions() elements.
  ///
  /// With `useGPU` on the device. The calling thread must have a CudaDeviceThread and have loaded a
  /// quadrature rule in it (IntegratorCuda.h): without one an error goes to the error handler, as
  /// do failures of the device. The grid's m(3,3) is taken for 1.
  ///
  /// Otherwise on the CPU. Exactly above three corners, (s/2, l/2), (s/2, −l/2) and (−s/2, l/2),
  /// the result is NaN.
  ///
  /// Progress goes to standard output.
  void compute(float* out, const Grid3DR<double>& grid) const override;

  /// A storage of floats: on the GPU into its device side, on the CPU into its host side. One of
  /// doubles: on the CPU only. A size other than 2·nbPositions() goes to the error handler; doubles
  /// with `useGPU` set fail a plain assertion, which aborts.
  void compute(CudaStorage* data, const Grid3DR<double>& grid) const override;

  /// The same as into floats, in double precision. On the GPU square roots, sines and cosines keep
  /// single precision.
  virtual void compute(double* out, const Grid3DR<double>& grid) const;

  /// The integrand g of one point and one edge. Where σ² + s2 = 0 it is NaN.
  template <class T>
  struct FirstIntegral {
    using return_type = std::complex<T>;
    T s2;               ///< square of d, the distance from the line of the edge
    T k;                ///< wave number
    T z;                ///< height above the plane of the piston
    return_type expKz;  ///< exp(−ikz)
  };

  /// Gauss–Legendre quadrature of a FirstIntegral<T> from lo to hi, with the nodes of a rule.
  /// Leaves the nodes of [lo, hi] in the rule, and takes those that are there when the interval
  /// begins and ends exactly on the outermost of them.
  ///
  /// Operations and additions are those of a complex sum over the nodes in their order, but sines
  /// and cosines have an error of up to 0.85·2⁻⁵³, and for floats 0.502·2⁻²⁴ (the standard
  /// library's above 2²⁸). With std::exp the sum would differ by at most 8·u·Σ|w/t|, u being 2⁻⁵³
  /// or 2⁻²⁴, w a node's weight and t = σ² + s2. It is the same on every machine, if no phase is
  /// above 2²⁸.
  template <class T>
  class Integ {
   public:
    explicit Integ(const QuadratureRule<T>* rule) : rule_(rule) {}
    std::complex<T> operator()(const FirstIntegral<T>& f, T lo, T hi) const;

   private:
    const QuadratureRule<T>* rule_;
  };

  /// The pressure at one point: `f` holds its k, z and expKz; x1 … y2 are as above, `scale` is the
  /// factor before the bracket. k and z are not read. NaN at the three corners where an interval of
  /// zero length meets s2 = 0. Not re-entrant: it writes into the piston's rules.
  template <class T>
  std::complex<T> doFastNearfield_Private(FirstIntegral<T>& f, const T& x1, const T& x2,
                                          const T& y1, const T& y2, const T& k, const T& z,
                                          const std::complex<T>& scale) const;

  /// Every point of a grid on the CPU, in precision T, into 2·nbPositions() values.
  template <class T, class GridT>
  void computeCPU(T* out, const Grid3DR<GridT>& grid) const;

  const double l;
  const double s;
  const double k;

 private:
  template <class T>
  const QuadratureRule<T>* rule() const;

  QuadratureRule<double> doubleTable_;
  QuadratureRule<float> floatTable_;

 public:
  const QuadratureRule<float>* const floatRule;
  const QuadratureRule<double>* const doubleRule;

  /// Whether fields are evaluated on the GPU.
  bool useGPU = true;

 private:
  mutable std::mutex onCPU_;  // held while an evaluation on the CPU writes into the rules
};

}  // namespace pistonfield
