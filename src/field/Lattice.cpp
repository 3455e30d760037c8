#include "field/Lattice.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace pistonfield {
namespace {

constexpr double pi = 3.14159265358979323846;

/// Few different ones, so that rows at different distances share them.
constexpr std::array densities = {1, 2, 3, 4, 6, 8, 12, 16, 24, 32};

/// The modified Bessel function of the first kind, of order 0.
double besselI0(double x) {
  double term = 1, sum = 1;
  for (int n = 1; term > sum * 0x1p-56; ++n) {
    term *= x / 2 / n * (x / 2 / n);
    sum += term;
  }
  return sum;
}

}  // namespace

InterpolationKernel::InterpolationKernel(double error)
    : alpha_(std::log(2 / error)), atZero_(besselI0(alpha_)) {}

double InterpolationKernel::operator()(double t, int halfTaps) const {
  if (t == 0) return 1;
  const double u = t / halfTaps, inside = 1 - u * u;
  if (inside <= 0 || t == std::round(t)) return 0;
  return std::sin(pi * t) / (pi * t) * besselI0(alpha_ * std::sqrt(inside)) / atZero_;
}

std::optional<Lattice> latticeFor(double step, double z, double k, double error, int halfTaps) {
  const double turns = pi - std::log(2 / error) / halfTaps;  // κ₁·h
  if (turns <= 0) return std::nullopt;
  const double most = turns / std::hypot(k, std::log(4 / error) / z);
  Lattice lattice;
  lattice.halfTaps = halfTaps;
  for (const int density : densities)
    if (density * step <= most) lattice.stepsASample = density;
  if (step <= most) return lattice;
  const auto* const dense = std::find_if(densities.begin(), densities.end(),
                                         [&](int density) { return step / density <= most; });
  if (dense == densities.end()) return std::nullopt;
  lattice.samplesAStep = *dense;
  return lattice;
}

}  // namespace pistonfield
