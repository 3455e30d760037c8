#pragma once

#include <complex>
#include <mutex>

#include "QuadratureRule.h"
#include "Transducer.h"

namespace pistonfield {

/// A flat rectangular piston in the plane z = 0, centred on the origin: side s along x, side l
/// along y, both full lengths; wave number k in 1/(unit of the sides).
///
/// By the fast near-field method its pressure, with the time factor exp(+iωt), is
///
///     p = −i/(2π)·[ x1·∫ g(x1) dσ − x2·∫ g(x2) dσ   over [y1, y2]
///                 + y1·∫ g(y1) dσ − y2·∫ g(y2) dσ ]  over [x1, x2],
///
///     g(d) = (exp(−ik√(z² + σ² + d²)) − exp(−ikz)) / (σ² + d²),
///
/// with x1, x2 = x ∓ s/2 and y1, y2 = y ∓ l/2. For z ≥ 0 this equals (k/2π)·∬ exp(−ikR)/R dS over
/// the piston. The evaluation on the CPU uses a rule of order 100. With u = 2⁻²⁴ or 2⁻⁵³ and the
/// distance R to the farthest corner, its rounding error is less than 5·u·(1 + |k|R) for z ≥ 0 and
/// less than 12·u·(1 + |k|R) behind the piston, but up to 3000·u·(1 + |k|R) behind it next to the
/// planes through its edges. The error of the rule adds to that; it grows next to an edge and with
/// sides above some 50 wavelengths. Results for sides below 1e-7, in the unit of the lengths, are
/// wrong.
///
/// Any number of threads may call `compute` at once. Threads that compute on the device run one
/// after the other (see CudaDeviceThread), as do threads that compute with the same piston on the
/// CPU.
class RectangularPistonCuda2 : public Piston {
 public:
  /// Stores l, s and k and computes the rules of order 100 in both precisions.
  RectangularPistonCuda2(double l, double s, double k);
  RectangularPistonCuda2(const RectangularPistonCuda2&) = delete;
  RectangularPistonCuda2& operator=(const RectangularPistonCuda2&) = delete;

  /// Writes the real and imaginary part at each point of the grid, first axis fastest, to
  /// 2·nbPositions() elements.
  ///
  /// If `useGPU` is set, it computes on the device. The calling thread must hold a CudaDeviceThread
  /// and have loaded a quadrature rule in it (IntegratorCuda.h); otherwise, and if the device
  /// fails, it calls the error handler. The grid's m(3,3) is taken as 1.
  ///
  /// If not, it computes on the CPU. Exactly above three corners, (s/2, l/2), (s/2, −l/2) and
  /// (−s/2, l/2), the result is NaN.
  ///
  /// Progress lines go to standard output.
  void compute(float* out, const Grid3DR<double>& grid) const override;

  /// The same into a storage: on the device into its device side, on the CPU into its host side. A
  /// storage of doubles works on the CPU only; with `useGPU` set it fails a plain assertion, which
  /// aborts. A size other than 2·nbPositions() calls the error handler.
  void compute(CudaStorage* data, const Grid3DR<double>& grid) const override;

  /// The same in double precision. On the device, square roots, sines and cosines have single
  /// precision only.
  virtual void compute(double* out, const Grid3DR<double>& grid) const;

  /// The integrand g of one point and one edge. It is NaN where σ² + s2 = 0.
  template <class T>
  struct FirstIntegral {
    using return_type = std::complex<T>;
    T s2;               ///< square of d, the distance from the line of the edge
    T k;                ///< wave number
    T z;                ///< height above the plane of the piston
    return_type expKz;  ///< exp(−ikz)
  };

  /// Gauss–Legendre quadrature of a FirstIntegral<T> from lo to hi. It leaves the nodes of [lo, hi]
  /// in the rule's mapped arrays, and uses the nodes that are there if lo and hi equal the first
  /// and the last of them.
  ///
  /// It performs the operations of a complex sum over the nodes in ascending order. Its sines and
  /// cosines have errors of up to 0.85·2⁻⁵³ in double and 0.502·2⁻²⁴ in single precision, and those
  /// of the standard library for phases above 2²⁸. The sum differs from one with std::exp by at
  /// most 8·u·Σ|w/t|, where u is 2⁻⁵³ or 2⁻²⁴, w a node's weight and t = σ² + s2. It has the same
  /// bits on every machine if no phase exceeds 2²⁸.
  template <class T>
  class Integ {
   public:
    explicit Integ(const QuadratureRule<T>* rule) : rule_(rule) {}
    std::complex<T> operator()(const FirstIntegral<T>& f, T lo, T hi) const;

   private:
    const QuadratureRule<T>* rule_;
  };

  /// Returns the pressure at one point. `f` holds its k, z and expKz; x1 … y2 are as above; `scale`
  /// is the factor before the bracket. The arguments k and z are not read. The result is NaN at the
  /// three corners where an interval of zero length meets s2 = 0. Not re-entrant: it writes to the
  /// piston's rules.
  template <class T>
  std::complex<T> doFastNearfield_Private(FirstIntegral<T>& f, const T& x1, const T& x2,
                                          const T& y1, const T& y2, const T& k, const T& z,
                                          const std::complex<T>& scale) const;

  /// Computes every point of a grid on the CPU in precision T. Writes 2·nbPositions() values.
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

  /// Whether `compute` uses the device.
  bool useGPU = true;

 private:
  mutable std::mutex onCPU_;  // held while an evaluation on the CPU writes to the rules
};

}  // namespace pistonfield
