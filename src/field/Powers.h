#pragma once

#include <cmath>
#include <limits>

// Exponentials, logarithms and powers of real numbers, with relative errors below 1e-15. The C
// library's own of today need a newer library than the modules do.

namespace pistonfield {

/// ln 2, of which the first part is exact in products with exponents.
constexpr double lnTwoHigh = 0x1.62e42fefap-1, lnTwoLow = 0x1.cf79abc9e3b39p-40;

/// exp(x); 0 where it is too small, and infinite where it is too large.
inline double exponential(double x) {
  if (x < -746) return 0;
  if (x > 710) return std::numeric_limits<double>::infinity();
  const double powerOfTwo = std::nearbyint(x / (lnTwoHigh + lnTwoLow));
  const double rest = (x - powerOfTwo * lnTwoHigh) - powerOfTwo * lnTwoLow;
  return std::ldexp(1 + std::expm1(rest), static_cast<int>(powerOfTwo));
}

/// x as 2^exponent·(1 + excess), where 1 + excess is between √½ and √2.
struct Split {
  int exponent;
  double excess;
};

/// x is positive and finite.
inline Split split(double x) {
  int exponent = 0;
  double mantissa = std::frexp(x, &exponent);
  if (mantissa < 0.70710678118654752) {
    mantissa *= 2;
    --exponent;
  }
  return {exponent, mantissa - 1};
}

/// ln x for a positive and finite x.
inline double logarithm(double x) {
  const Split parts = split(x);
  return parts.exponent * lnTwoHigh + (parts.exponent * lnTwoLow + std::log1p(parts.excess));
}

/// x^y for a positive and finite x, and |y| ≤ 3.
inline double power(double x, double y) {
  const Split parts = split(x);
  // y·exponent, whose fraction the rounding of the product would spoil.
  const double product = parts.exponent * y, lost = std::fma(parts.exponent, y, -product);
  const double whole = std::nearbyint(product), fraction = (product - whole) + lost;
  const double rest = fraction * (lnTwoHigh + lnTwoLow) + y * std::log1p(parts.excess);
  return std::ldexp(1 + std::expm1(rest), static_cast<int>(whole));
}

}  // namespace pistonfield
