#include <cmath>

#include "FastNearfield/RectangularPiston2.h"
#include "FastNearfield/nodes/NodeSum.h"
#include "FastNearfield/nodes/SineCosine.h"
#include "core/Progress.h"

// The evaluation of RectangularPistonCuda2 with useGPU off. The gateway does not use it: without a
// GPU its kernels run on the emulation device. The order of its calls, operations and additions is
// fixed, and so are the corners where the result is NaN.

namespace pistonfield {
namespace {

/// c·p, as the complex product (c + 0i)·p.
template <class T>
std::complex<T> times(T c, std::complex<T> p) {
  return {c * p.real() - T(0) * p.imag(), c * p.imag() + T(0) * p.real()};
}

/// p/t, as the complex quotient p/(t + 0i).
template <class T>
std::complex<T> over(std::complex<T> p, T t) {
  const T ratio = T(0) / t;
  const T divisor = t + T(0) * ratio;
  return {(p.real() + p.imag() * ratio) / divisor, (p.imag() - p.real() * ratio) / divisor};
}

struct Anywhere;

/// exp(iθ), with the same bits as in the sum over nodes: at a node whose R equals z the difference
/// of the two exponentials must vanish.
template <class T>
std::complex<T> turn(T theta) {
  const SineCosine<Anywhere, T> e(theta);
  if (std::isfinite(e.sine) && std::isfinite(e.cosine)) return {e.cosine, e.sine};
  return {std::cos(theta), std::sin(theta)};
}

template <class T>
bool nearlyEqual(T a, T b) {
  return static_cast<double>(std::abs(a - b)) < 1e-07;
}

/// Treats NaN as not above 0.
template <class T>
bool crossesZero(T a, T b) {
  return !(a > T(0)) == (b > T(0));
}

}  // namespace

template <class T>
std::complex<T> RectangularPistonCuda2::Integ<T>::operator()(const FirstIntegral<T>& f, T lo,
                                                             T hi) const {
  const int n = rule_->order;
  T* const mappedX = rule_->mappedX;
  T* const mappedW = rule_->mappedW;
  const bool map = !(n > 0 && lo == mappedX[0] && hi == mappedX[n - 1]);
  const T half = (hi - lo) * T(0.5);
  const T mid = (lo + hi) * T(0.5);
  const NodeSum<T> fast =
      sumNodes<T>(instructionSet())({rule_->x, rule_->w, mappedX, mappedW, map, half, mid}, n,
                                    {f.s2, f.k, f.z, f.expKz.real(), f.expKz.imag()});
  if (std::isfinite(fast.re) && std::isfinite(fast.im)) return {fast.re, fast.im};

  // Keeps the products with zero imaginary parts: zero times infinity must give NaN.
  std::complex<T> sum;
  for (int i = 0; i < n; ++i) {
    const T t = mappedX[i] * mappedX[i] + f.s2;
    const T r = std::sqrt(f.z * f.z + t);
    const std::complex<T> e = turn(-(r * f.k));
    sum += times(mappedW[i], over(e - f.expKz, t));
  }
  return sum;
}

template <>
const QuadratureRule<float>* RectangularPistonCuda2::rule<float>() const {
  return floatRule;
}

template <>
const QuadratureRule<double>* RectangularPistonCuda2::rule<double>() const {
  return doubleRule;
}

template <class T>
std::complex<T> RectangularPistonCuda2::doFastNearfield_Private(
    FirstIntegral<T>& f, const T& x1, const T& x2, const T& y1, const T& y2, const T& /*k*/,
    const T& /*z*/, const std::complex<T>& scale) const {
  const Integ<T> I(rule<T>());
  FirstIntegral<T> G1 = f, G2 = f, G3 = f, G4 = f;
  G1.s2 = x1 * x1;
  G2.s2 = x2 * x2;
  G3.s2 = y1 * y1;
  G4.s2 = y2 * y2;

  std::complex<T> S1, S2, S3, S4;
  if (nearlyEqual(y1, y2)) {
    S1 = times(T(2) * x1, I(G1, T(0), y2));
    S2 = times(T(2) * x2, -I(G2, T(0), y2));
  } else if (crossesZero(y1, y2)) {
    const std::complex<T> J1 = I(G1, T(0), y2);
    const std::complex<T> J2 = I(G1, y1, T(0));
    const std::complex<T> J3 = I(G2, T(0), y2);
    const std::complex<T> J4 = I(G2, y1, T(0));
    S1 = times(x1, J2 + J1);
    S2 = times(x2, -(J4 + J3));
  } else {
    S1 = times(x1, I(G1, y1, y2));
    S2 = times(x2, -I(G2, y1, y2));
  }

  // Unlike above, nearly equal ends double the integral over [x1, x2], not that over [0, x2].
  if (nearlyEqual(x1, x2)) {
    S3 = times(T(2) * y1, I(G3, x1, x2));
    S4 = times(T(2) * y2, -I(G4, x1, x2));
  } else if (crossesZero(x1, x2)) {
    const std::complex<T> J1 = I(G3, T(0), x2);
    const std::complex<T> J2 = I(G3, x1, T(0));
    const std::complex<T> J3 = I(G4, T(0), x2);
    const std::complex<T> J4 = I(G4, x1, T(0));
    S3 = times(y1, J2 + J1);
    S4 = times(y2, -(J4 + J3));
  } else {
    S3 = times(y1, I(G3, x1, x2));
    S4 = times(y2, -I(G4, x1, x2));
  }

  const std::complex<T> total = ((S1 + S2) + S3) + S4;
  return {total.real() * scale.real() - total.imag() * scale.imag(),
          total.real() * scale.imag() + total.imag() * scale.real()};
}

template <class T, class GridT>
void RectangularPistonCuda2::computeCPU(T* out, const Grid3DR<GridT>& grid) const {
  const auto halfX = static_cast<T>(s * 0.5);
  const auto halfY = static_cast<T>(0.5 * l);
  const auto waveNumber = static_cast<T>(k);
  const std::complex<T> scale(T(0), static_cast<T>(-0.15915494309189535));
  const std::lock_guard lock(onCPU_);
  {
    const std::lock_guard line(progressMutex());
    progress() << "grid: " << grid.sx() << " " << grid.sy() << " " << grid.sz() << std::endl;
  }

  for (unsigned pz = 0; pz < grid.sz(); ++pz)
    for (unsigned py = 0; py < grid.sy(); ++py)
      for (unsigned px = 0; px < grid.sx(); ++px) {
        MVector<GridT, 3> p = grid.getPosition(px, py, pz);
        const auto x = static_cast<T>(p[0]);
        const auto y = static_cast<T>(p[1]);
        const auto z = static_cast<T>(p[2]);
        FirstIntegral<T> f{T(0), waveNumber, z, turn(-(z * waveNumber))};
        const std::complex<T> pressure = doFastNearfield_Private<T>(
            f, x - halfX, x + halfX, y - halfY, y + halfY, waveNumber, z, scale);
        *out++ = pressure.real();
        *out++ = pressure.imag();
      }
}

template class RectangularPistonCuda2::Integ<float>;
template class RectangularPistonCuda2::Integ<double>;
template std::complex<float> RectangularPistonCuda2::doFastNearfield_Private(
    FirstIntegral<float>&, const float&, const float&, const float&, const float&, const float&,
    const float&, const std::complex<float>&) const;
template std::complex<double> RectangularPistonCuda2::doFastNearfield_Private(
    FirstIntegral<double>&, const double&, const double&, const double&, const double&,
    const double&, const double&, const std::complex<double>&) const;
template void RectangularPistonCuda2::computeCPU(float*, const Grid3DR<double>&) const;
template void RectangularPistonCuda2::computeCPU(double*, const Grid3DR<double>&) const;

}  // namespace pistonfield
