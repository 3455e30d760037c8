#include "field/Lattice.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace pistonfield {
namespace {

constexpr double pi = 3.14159265358979323846;

/// Samples' distances in steps of a row, {numerator, denominator}: few different ones, so that rows
/// share their filters.
constexpr std::array<std::array<int, 2>, 24> distances = {
    {{1, 32}, {1, 24}, {1, 16}, {1, 12}, {1, 8},  {1, 6},  {1, 4},  {1, 3},
     {1, 2},  {2, 3},  {1, 1},  {5, 4},  {3, 2},  {2, 1},  {5, 2},  {3, 1},
     {4, 1},  {5, 1},  {6, 1},  {8, 1},  {12, 1}, {16, 1}, {24, 1}, {32, 1}}};

/// ln x for x > 1. The C library's log of today needs a newer library than the modules do.
double logarithm(double x) { return std::log1p(x - 1); }

}  // namespace

InterpolationKernel::InterpolationKernel(double error) : alpha_(logarithm(2 / error)) {}

void InterpolationKernel::factors(double t, int halfTaps, double* factors) const {
  std::fill_n(factors, 2 * halfTaps, 0.0);
  factors += halfTaps - 1;
  if (t == 0) {
    factors[0] = 1;
    return;
  }
  // sin(πt), also for t next to 1
  double sine = std::sin(pi * std::min(t, 1 - t)) / (pi * std::sinh(alpha_));
  if (halfTaps % 2 == 0) sine = -sine;
  for (int n = 1 - halfTaps; n <= halfTaps; ++n, sine = -sine) {
    const double apart = t - n, u = apart / halfTaps, s = std::sqrt(1 - u * u);
    factors[n] = sine / apart * (alpha_ * s > 1e-4 ? std::sinh(alpha_ * s) / s : alpha_);
  }
}

std::optional<Lattice> latticeFor(double step, double z, double k, double error, int halfTaps) {
  const double turns = pi - logarithm(2 / error) / halfTaps;  // κ₁·h
  if (turns <= 0) return std::nullopt;
  const double steepness = logarithm(4 / error) / z;
  const double most = turns / std::sqrt(k * k + steepness * steepness);
  std::size_t n = distances.size();
  while (n > 0 && step * distances[n - 1][0] / distances[n - 1][1] > most) --n;
  if (n == 0) return std::nullopt;
  return Lattice{distances[n - 1][1], distances[n - 1][0], halfTaps};
}

}  // namespace pistonfield
