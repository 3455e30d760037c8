#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>
#include <vector>

#include "FastNearfield/GaussLegendre.h"
#include "FastNearfield/RectangularPiston2.h"
#include "FastNearfield/nodes/SineCosine.h"

// The evaluation on the CPU against a second writing of it, step by step: order of calls, of
// operations and of additions, reuse of the mapped nodes, corners without a value. Bit for bit with
// the same sines and cosines, which SineCosineTest compares with the standard library's.

using pistonfield::RectangularPistonCuda2;

namespace {

struct Here;

/// exp(iθ) with the sine and cosine of the evaluation.
template <class T>
std::complex<T> ownTurn(T theta) {
  const pistonfield::SineCosine<Here, T> e(theta);
  if (std::isfinite(e.sine)) return {e.cosine, e.sine};
  return {std::cos(theta), std::sin(theta)};
}

template <class T>
class Transcription {
 public:
  Transcription() : x(n), w(n), mappedX(n), mappedW(n) {
    pistonfield::legendre_compute(static_cast<int>(n), x.data(), w.data());
    forget();
  }

  void forget() {
    mappedX.assign(n, std::numeric_limits<T>::quiet_NaN());
    mappedW.assign(n, std::numeric_limits<T>::quiet_NaN());
  }

  std::complex<T> pressure(T x1, T x2, T y1, T y2, T k_, T z_, std::complex<T> expKz_) {
    k = k_;
    z = z_;
    expKz = expKz_;
    T s1[2], s2[2], s3[2], s4[2];
    edges(x1, x2, y1, y2, 0, s1, s2);
    edges(y1, y2, x1, x2, x1, s3, s4);
    const T re = ((s1[0] + s2[0]) + s3[0]) + s4[0];
    const T im = ((s1[1] + s2[1]) + s3[1]) + s4[1];
    const T zero = 0;
    const T c = static_cast<T>(-0.15915494309189535);
    return {re * zero - im * c, re * c + im * zero};
  }

  static constexpr std::size_t n = 100;
  std::vector<T> x, w, mappedX, mappedW;

 private:
  /// The two edges at the offsets d1 and d2, from `from` to `to`; where these are near, twice from
  /// `doubledFrom` on.
  void edges(T d1, T d2, T from, T to, T doubledFrom, T* first, T* second) {
    T j[4][2];
    if (near(from, to)) {
      integral(d1 * d1, doubledFrom, to, first);
      scale(2 * d1, first);
      integral(d2 * d2, doubledFrom, to, second);
      negate(second);
      scale(2 * d2, second);
    } else if (split(from, to)) {
      integral(d1 * d1, 0, to, j[0]);
      integral(d1 * d1, from, 0, j[1]);
      integral(d2 * d2, 0, to, j[2]);
      integral(d2 * d2, from, 0, j[3]);
      combine(d1, j[1], j[0], false, first);
      combine(d2, j[3], j[2], true, second);
    } else {
      integral(d1 * d1, from, to, first);
      scale(d1, first);
      integral(d2 * d2, from, to, second);
      negate(second);
      scale(d2, second);
    }
  }

  static bool near(T a, T b) { return std::abs(static_cast<double>(a - b)) < 1e-07; }
  static bool split(T a, T b) {
    const bool aIsNotAbove = !(a > 0);  // NaN counts as at most 0
    return aIsNotAbove == (b > 0);
  }
  static void negate(T* p) {
    p[0] = -p[0];
    p[1] = -p[1];
  }
  static void scale(T c, T* p) {
    const T zero = 0;
    const T re = c * p[0] - zero * p[1];
    const T im = c * p[1] + zero * p[0];
    p[0] = re;
    p[1] = im;
  }
  static void combine(T c, const T* second, const T* first, bool negated, T* sum) {
    sum[0] = second[0] + first[0];
    sum[1] = second[1] + first[1];
    if (negated) negate(sum);
    scale(c, sum);
  }

  void integral(T s2, T lo, T hi, T* sum) {
    if (!(lo == mappedX[0] && hi == mappedX[n - 1])) {
      const T half = (hi - lo) * T(0.5);
      const T mid = (lo + hi) * T(0.5);
      for (std::size_t i = 0; i < n; ++i) {
        mappedX[i] = half * x[i] + mid;
        mappedW[i] = half * w[i];
      }
    }
    const T zero = 0;
    sum[0] = sum[1] = 0;
    for (std::size_t i = 0; i < n; ++i) {
      const T t = mappedX[i] * mappedX[i] + s2;
      const T r = std::sqrt(z * z + t);
      const std::complex<T> e = ownTurn(-(r * k));
      const T a = e.real() - expKz.real();
      const T b = e.imag() - expKz.imag();
      const T rho = zero / t;
      const T qr = (a + b * rho) / (t + zero * rho);
      const T qi = (b - a * rho) / (t + zero * rho);
      sum[0] += mappedW[i] * qr - zero * qi;
      sum[1] += mappedW[i] * qi + zero * qr;
    }
  }

  T k = 0, z = 0;
  std::complex<T> expKz;
};

template <class T>
bool same(T a, T b) {
  return a == b || (std::isnan(a) && std::isnan(b));
}

template <class T>
class CpuLiteralTest : public testing::Test {
 protected:
  using Rule = pistonfield::QuadratureRule<T>;

  const Rule& rule() const {
    if constexpr (std::is_same_v<T, float>)
      return *piston.floatRule;
    else
      return *piston.doubleRule;
  }

  void expectSameMappedNodes() const {
    for (std::size_t i = 0; i < 100; ++i) {
      ASSERT_TRUE(same(rule().mappedX[i], transcription.mappedX[i])) << i;
      ASSERT_TRUE(same(rule().mappedW[i], transcription.mappedW[i])) << i;
    }
  }

  /// Compares both implementations at one point, given by its offsets from the edges.
  void expectSame(T x1, T x2, T y1, T y2, T z = T(0.7), T k = T(12.3)) {
    const std::complex<T> expKz(std::cos(-(z * k)), std::sin(-(z * k)));
    typename RectangularPistonCuda2::FirstIntegral<T> f{T(99), k, z, expKz};
    const std::complex<T> actual = piston.template doFastNearfield_Private<T>(
        f, x1, x2, y1, y2, k, z, {T(0), static_cast<T>(-0.15915494309189535)});
    const std::complex<T> expected = transcription.pressure(x1, x2, y1, y2, k, z, expKz);
    EXPECT_TRUE(same(actual.real(), expected.real()) && same(actual.imag(), expected.imag()))
        << actual << " for " << expected << " at " << x1 << ", " << x2 << ", " << y1 << ", " << y2;
    expectSameMappedNodes();
  }

  const RectangularPistonCuda2 piston{1, 1, 1};
  Transcription<T> transcription;
};

using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(CpuLiteralTest, Precisions);

TYPED_TEST(CpuLiteralTest, EveryCaseIsTheSameBitForBit) {
  using T = TypeParam;
  const T nan = std::numeric_limits<T>::quiet_NaN();
  const std::vector<std::pair<T, T>> pairs = {{T(0.11), T(1.3)},
                                              {T(-0.37), T(0.9)},
                                              {T(-1.7), T(-0.2)},
                                              {T(0), T(1.1)},
                                              {T(-1.1), T(0)},
                                              {T(0.9), T(-0.4)},
                                              {T(-0.3), T(-0.3)},
                                              {T(0.2), T(0.2) + T(0.6e-7)},
                                              {T(-3e-8), T(3e-8)},
                                              {nan, T(1)},
                                              {T(1), nan},
                                              {nan, nan},
                                              {T(0.2), T(0.2) + T(1.0000001e-7)}};
  for (const auto& [x1, x2] : pairs)
    for (const auto& [y1, y2] : pairs)
      for (const T z : {T(0.7), T(-0.7), T(0)}) this->expectSame(x1, x2, y1, y2, z);
}

TYPED_TEST(CpuLiteralTest, LargePhasesAreTheStandardLibrarys) {
  using T = TypeParam;
  const T infinity = std::numeric_limits<T>::infinity();
  // With the first value, the phase is below 2^28 at some nodes and above it at others.
  for (const T k : {T(3e8), T(-3e8), T(1e12), std::numeric_limits<T>::max(), infinity})
    this->expectSame(T(-0.37), T(0.9), T(0.11), T(1.3), T(0.7), k);
  for (const T z : {T(1e30), -infinity}) this->expectSame(T(-0.37), T(0.9), T(0.11), T(1.3), z);
  this->expectSame(T(-0.37), infinity, T(0.11), T(1.3));
  // Quotients that overflow.
  const T tiny = std::numeric_limits<T>::min() * T(0.01);
  this->expectSame(std::sqrt(tiny), T(0.9), T(0), tiny, T(-0.7));
}

TYPED_TEST(CpuLiteralTest, TheFirstCallOfASplitIsItsUpperPart) {
  using T = TypeParam;
  // Mapped nodes that match the interval [0, y2], so that the first integral over it uses them.
  auto& rule = const_cast<pistonfield::QuadratureRule<T>&>(this->rule());
  for (std::size_t i = 0; i < 100; ++i) {
    const T node = T(0.9) * static_cast<T>(i) / 99;
    rule.mappedX[i] = this->transcription.mappedX[i] = node;
    rule.mappedW[i] = this->transcription.mappedW[i] = T(0.5);
  }
  rule.mappedX[99] = this->transcription.mappedX[99] = T(0.9);
  this->expectSame(T(0.11), T(1.3), T(-0.37), T(0.9));
}

TYPED_TEST(CpuLiteralTest, AnIntervalThatEndsOnTheOutermostNodesReusesThem) {
  using T = TypeParam;
  pistonfield::QuadratureRule<T> rule(100), fresh(100);
  const RectangularPistonCuda2::FirstIntegral<T> f{T(0.25), T(12.5), T(0.5), {T(1), T(-0.03)}};
  RectangularPistonCuda2::Integ<T> integral(&rule);
  const std::complex<T> first = integral(f, T(-0.5), T(1.25));
  const T lo = rule.mappedX[0], hi = rule.mappedX[99];
  EXPECT_EQ(integral(f, lo, hi), first);
  EXPECT_NE(RectangularPistonCuda2::Integ<T>(&fresh)(f, lo, hi), first);
  // Both ends must meet.
  integral(f, lo, std::nextafter(hi, T(2)));
  EXPECT_NE(rule.mappedX[0], lo);
}

TYPED_TEST(CpuLiteralTest, AGridFormsItsOffsetsInItsPrecision) {
  using T = TypeParam;
  const double px = 1.0 / 3, py = -0.7, pz = 40.1, s = 0.1, l = 0.3, k = 900.7;
  const RectangularPistonCuda2 other(l, s, k);
  T out[2];
  testing::internal::CaptureStdout();
  other.computeCPU<T, double>(
      out, {1, 1, 1, {1, 0, 0, 3 * px, 0, 1, 0, 3 * py, 0, 0, 1, 3 * pz, 0, 0, 0, 3}});
  testing::internal::GetCapturedStdout();
  const auto b = static_cast<T>(s * 0.5), a = static_cast<T>(0.5 * l),
             waveNumber = static_cast<T>(k);
  const auto x = static_cast<T>(3 * px / 3), y = static_cast<T>(3 * py / 3),
             z = static_cast<T>(3 * pz / 3);
  const std::complex<T> expected = this->transcription.pressure(
      x - b, x + b, y - a, y + a, waveNumber, z, ownTurn(-(z * waveNumber)));
  EXPECT_EQ(out[0], expected.real());
  EXPECT_EQ(out[1], expected.imag());
}

}  // namespace
