#pragma once

#include "lanes/Pack.h"

namespace pistonfield {

/// x rounded to an integer, for numbers of fewer digits than a float or a double has.
template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> nearestInteger(Pack<Set> x) {
  // Above this, a float or a double has no digits after the point.
  constexpr typename Set::Value roundsOff =
      sizeof(typename Set::Value) == sizeof(float) ? 0x1.8p23 : 0x1.8p52;
  return (x + Pack<Set>(roundsOff)) - Pack<Set>(roundsOff);
}

/// exp(x) as 2^n·(1 + rest), with n·ln 2 next to x. x is from −87 to 87 for floats, from −700 to
/// 700 for doubles, and is replaced by the nearer end elsewhere. Relative errors are at most 2
/// units of 2^-24 or 2^-53, of minusOne() 2.5.
template <class Set>
struct Exponential {
  using V = Pack<Set>;
  using Value = typename Set::Value;

  V power, rest;

  PISTONFIELD_HOST_DEVICE explicit Exponential(V x) {
    constexpr bool isFloat = sizeof(Value) == sizeof(float);
    constexpr Value most = isFloat ? 87 : 700;
    // The product of n and the first part of ln 2 is exact.
    constexpr auto ln2 = static_cast<Value>(isFloat ? 0x1.63p-1 : 0x1.62e42fefap-1);
    constexpr auto ln2Rest = static_cast<Value>(isFloat ? -0x1.bd0106p-13 : 0x1.cf79abc9e3b39p-40);
    x = smaller(larger(x, V(-most)), V(most));
    const V n = nearestInteger(x * V(Value(1.4426950408889634)));
    const V f = multiplyAdd(n, V(-ln2Rest), multiplyAdd(n, V(-ln2), x));
    power = powerOfTwo(n);
    // The Taylor series, whose remainder is below 2^-26 or 2^-56 of it.
    V series(Value(0));
    if constexpr (!isFloat) {
      series = next<13>(f, series);
      series = next<12>(f, series);
      series = next<11>(f, series);
      series = next<10>(f, series);
      series = next<9>(f, series);
      series = next<8>(f, series);
    }
    series = next<7>(f, series);
    series = next<6>(f, series);
    series = next<5>(f, series);
    series = next<4>(f, series);
    series = next<3>(f, series);
    series = next<2>(f, series);
    rest = multiplyAdd(f * f, series, f);
  }

  PISTONFIELD_HOST_DEVICE V value() const { return multiplyAdd(power, rest, power); }

  /// exp(x) − 1, which has all digits also for small x.
  PISTONFIELD_HOST_DEVICE V minusOne() const {
    return multiplyAdd(power, rest, power - V(Value(1)));
  }

 private:
  PISTONFIELD_HOST_DEVICE static constexpr double factorial(int n) {
    return n > 1 ? n * factorial(n - 1) : 1;
  }

  template <int n>
  PISTONFIELD_HOST_DEVICE static V next(V f, V series) {
    constexpr auto coefficient = static_cast<Value>(1 / factorial(n));
    return multiplyAdd(f, series, V(coefficient));
  }
};

}  // namespace pistonfield
