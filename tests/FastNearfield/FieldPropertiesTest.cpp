#include <cmath>
#include <complex>
#include <random>
#include <vector>

#include "FastNearfield/Launchers.h"
#include "FastNearfield/RectangularPiston2.h"
#include "support/LiteralPressure.h"

// Physical properties of the field of every piston: its limit far away, and that the fields of a
// piston's parts add up to its own.

using launchers::Complex;
using launchers::GuardedVector;
using pistonfield::Grid3DR;
using pistonfield::RectangularPistonCuda2;

namespace {

using Pressure = std::complex<double>;

struct Point {
  double x, y, z;
};

/// Sides l along y and s along x.
struct Piston {
  double l, s, k;

  /// The bound promised for single precision at p: 3·2⁻²⁴·(1 + kR).
  double tolerance(const Point& p) const {
    return support::tolerance(p.x, p.y, p.z, s / 2, l / 2, k);
  }
  /// The same for double precision.
  double doubleTolerance(const Point& p) const { return std::ldexp(tolerance(p), 24 - 53); }
};

class FieldPropertiesTest : public launchers::Test {
 protected:
  void SetUp() override {
    Test::SetUp();
    setCudaIntegratorParameters("RectangularPiston", 64);
  }

  double between(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
  }

  /// A random multiple of 1/64, so that sums and halves are exact in single precision.
  double step(int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random) / 64.0;
  }

  static Pressure onTheCpu(const Piston& piston, const Point& p) {
    const Grid3DR<double> grid(1, 1, 1, {1, 0, 0, p.x, 0, 1, 0, p.y, 0, 0, 1, p.z, 0, 0, 0, 1});
    double out[2];
    RectangularPistonCuda2(piston.l, piston.s, piston.k).computeCPU<double, double>(out, grid);
    return {out[0], out[1]};
  }

  static Pressure onTheDevice(const Piston& piston, const Point& p) {
    float position[] = {static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z)};
    GuardedVector<Complex> data(1);
    RectangularPiston_func_unstructured(data.data(), 1, position, static_cast<float>(piston.l),
                                        static_cast<float>(piston.s), static_cast<float>(piston.k));
    return launchers::widened(data.read())[0];
  }

  std::mt19937 random{21};
};

// Far away, R = r − u·q + O(q²/r) for the point q of the piston in the direction u, so that
//
//     (k/2π)·∬ exp(−ikR)/R dS → k·s·l/(2πr) · exp(−ikr) · sinc(k·s·ux/2) · sinc(k·l·uy/2).

double sinc(double x) { return std::sin(x) / x; }

/// What the far field in the direction of a point is of its amplitude.
double pattern(const Piston& piston, const Point& p) {
  const double r = std::hypot(p.x, p.y, p.z);
  return sinc(piston.k * piston.s * p.x / r / 2) * sinc(piston.k * piston.l * p.y / r / 2);
}

TEST_F(FieldPropertiesTest, FarAwayItIsTheProductOfTwoSincs) {
  int negative = 0;
  for (int repeat = 0; repeat < 1000; ++repeat) {
    const auto s = static_cast<float>(between(0.8, 1)), l = static_cast<float>(between(0.8, 1)),
               k = static_cast<float>(between(9, 11));
    const Piston piston = {double{l}, double{s}, double{k}};
    Point p{};  // that single precision has, where the pattern is large enough
    do {
      const double x = between(-0.9, 0.9), y = between(-0.9, 0.9);
      if (x * x + y * y > 0.9) continue;
      const double r = 120, z = r * std::sqrt(1 - x * x - y * y);
      p = {double{static_cast<float>(r * x)}, double{static_cast<float>(r * y)},
           double{static_cast<float>(z)}};
    } while (p.z == 0 || std::abs(pattern(piston, p)) < 0.1);
    const double r = std::hypot(p.x, p.y, p.z);
    const double amplitude = piston.k * piston.s * piston.l / (2 * M_PI * r);
    const Pressure field = amplitude * pattern(piston, p) * std::polar(1.0, -piston.k * r);
    // The neglected terms: h being half the diagonal, R − (r − u·q) is at most h²/(2(r − h)), and
    // 1/R differs from 1/r by at most h/(r(r − h)).
    const double h = std::hypot(piston.s, piston.l) / 2;
    const double bound = amplitude * (piston.k * h * h / 2 + h) / (r - h) + piston.tolerance(p);
    EXPECT_LE(std::abs(onTheDevice(piston, p) - field), bound) << repeat;
    EXPECT_LE(bound, 0.5 * std::abs(field));
    if (pattern(piston, p) < 0) ++negative;
  }
  EXPECT_GT(negative, 100);
}

// A piston cut in two. Each part is evaluated at the point's position relative to that part.

class CutTest : public FieldPropertiesTest {
 protected:
  struct Part {
    Piston piston;
    double x, y;  // of its centre
    Point seen(const Point& p) const { return {p.x - x, p.y - y, p.z}; }
  };

  /// A point in front of the piston and far enough from it for both rules to have sufficient nodes.
  Point anyPoint() { return {step(-192, 192), step(-192, 192), step(32, 256)}; }

  Piston anyPiston() { return {step(32, 128), step(32, 128), between(1, 15)}; }

  static std::vector<Part> cutAcrossX(const Piston& whole, double first) {
    const double rest = whole.s - first;
    return {{{whole.l, first, whole.k}, -rest / 2, 0}, {{whole.l, rest, whole.k}, first / 2, 0}};
  }
  static std::vector<Part> cutAcrossY(const Piston& whole, double first) {
    const double rest = whole.l - first;
    return {{{first, whole.s, whole.k}, 0, -rest / 2}, {{rest, whole.s, whole.k}, 0, first / 2}};
  }

  /// The sum of the parts' pressures minus that of the whole, relative to the bound on the rounding
  /// errors.
  static double residue(const Piston& whole, const std::vector<Part>& parts, const Point& p,
                        Pressure (*evaluate)(const Piston&, const Point&),
                        double (Piston::*tolerance)(const Point&) const) {
    Pressure sum = -evaluate(whole, p);
    double bound = (whole.*tolerance)(p);
    for (const Part& part : parts) {
      sum += evaluate(part.piston, part.seen(p));
      bound += (part.piston.*tolerance)(part.seen(p));
    }
    return std::abs(sum) / bound;
  }

  void expectSums(Pressure (*evaluate)(const Piston&, const Point&),
                  double (Piston::*tolerance)(const Point&) const) {
    for (int repeat = 0; repeat < 300; ++repeat) {
      Piston whole = anyPiston();
      whole.k = double{static_cast<float>(whole.k)};
      const Point p = anyPoint();
      const double first = step(8, 24);
      EXPECT_LE(residue(whole, cutAcrossX(whole, first), p, evaluate, tolerance), 1) << repeat;
      EXPECT_LE(residue(whole, cutAcrossY(whole, first), p, evaluate, tolerance), 1) << repeat;
    }
  }
};

TEST_F(CutTest, InSinglePrecisionThePartsAddUp) { expectSums(onTheDevice, &Piston::tolerance); }

TEST_F(CutTest, InDoublePrecisionThePartsAddUp) { expectSums(onTheCpu, &Piston::doubleTolerance); }

}  // namespace
