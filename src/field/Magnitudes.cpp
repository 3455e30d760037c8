#include "field/Magnitudes.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "field/Checks.h"
#include "field/Parts.h"

namespace pistonfield {
namespace {

/// The smallest peak pressure that is told from 0, relative to that at the pistons.
constexpr double leastPeak = 1e-30;

}  // namespace

std::complex<double> scaled(std::complex<double> number, int exponent) {
  return {std::ldexp(number.real(), exponent), std::ldexp(number.imag(), exponent)};
}

int takeScale(std::vector<Field::Piston>& pistons) {
  double largest = 0;
  for (const Field::Piston& piston : pistons)
    largest = std::max({largest, std::fabs(piston.weight.real()), std::fabs(piston.weight.imag())});
  const int exponent = largest > 0 ? std::ilogb(largest) : 0;
  for (Field::Piston& piston : pistons) piston.weight = scaled(piston.weight, -exponent);
  pistons.erase(std::remove_if(pistons.begin(), pistons.end(), isSilent), pistons.end());
  return exponent;
}

double peakOf(const std::vector<Field::Piston>& whole, std::complex<double> k, const Points& points,
              const std::function<void(double)>& progress) {
  std::vector<Field::Piston> pistons = whole;
  double shift = 0;
  const double* sideOfParts = std::begin(sidesOfParts);
  const std::vector<Position> some = somePoints(points);
  if (some.empty()) return 1;  // the pressures are NaN
  double mostExpected = 0;     // of the magnitude, about
  for (const Field::Piston& piston : pistons) mostExpected += 2 * std::abs(piston.weight);
  std::vector<std::complex<double>> p(some.size());
  double tolerance = mostExpected / 20;
  while (tolerance > mostExpected * leastPeak) {
    Work work(
        [&](double) {
          if (progress) progress(0);
        },
        1);
    const ListPoints list(some.data(), some.size());
    Evaluation evaluation(pistons, k, tolerance, shift);
    evaluation.run(list, p.data(), work);
    double peak = 0;
    for (const std::complex<double>& value : p)
      if (std::abs(value) > peak) peak = std::abs(value);
    // With loss, all that there is may be rounding errors, unless in parts.
    const double excess = k.imag() != 0 ? std::max(evaluation.used().excess, 1.0) : 1;
    if (peak > 4 * tolerance * excess) return peak - tolerance * excess;
    if (excess > 1) {
      if (sideOfParts == std::end(sidesOfParts)) return 0;
      std::vector<Field::Piston> parts = inParts(whole, k, list, *sideOfParts++);
      if (parts.size() > pistons.size()) {
        pistons = std::move(parts);
        shift = roundingOfParts(whole);
      }
      continue;
    }
    tolerance /= 20;
  }
  return k.imag() != 0 ? 0 : mostExpected * leastPeak;
}

void refuseFarPoint() {
  throw FieldError(
      "A point is farther than 1e9 wavelengths from the origin. Give lengths and 1/k in one "
      "unit.");
}

void refuse(double tolerance, const Used& used) {
  if (std::isinf(used.excess)) refuseFarPoint();
  refuseTolerance(1.1 * tolerance * used.excess);
}

}  // namespace pistonfield
