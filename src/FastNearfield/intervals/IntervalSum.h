#pragma once

#include "FastNearfield/intervals/Exponential.h"
#include "FastNearfield/intervals/GaussRules.h"
#include "FastNearfield/point/ComplexArithmetic.h"
#include "FastNearfield/point/HalfTurns.h"
#include "lanes/Pack.h"

namespace pistonfield {

/// The fraction of a number of half turns, from −1/2 to 1/2.
template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> fractionOf(Pack<Set> halfTurns) {
  return halfTurns - nearestInteger(halfTurns);
}

template <class Set>
PISTONFIELD_HOST_DEVICE SineCosineOfHalfTurns<Pack<Set>> sineCosine(Pack<Set> r) {
  if constexpr (sizeof(typename Set::Value) == sizeof(float))
    return sineCosineOfHalfTurns(r);
  else
    return preciseSineCosineOfHalfTurns(r);
}

/// The rule of n nodes.
template <class Set>
struct IntervalRule {
  using Value = typename Set::Value;

  PISTONFIELD_HOST_DEVICE IntervalRule(GaussRuleTable<Value> rules, int n) : order(n) {
    const int first = (n * (n - 1) - rules.least * (rules.least - 1)) / 2;
    fromStart = rules.fromStart + first;
    w = rules.w + first;
  }

  const Value *fromStart, *w;
  int order;
};

/// Two quotients of a node: a difference of paths, numerator/ends, and 1/divisor.
template <class Set>
struct Quotients {
  using V = Pack<Set>;
  V path, inverse;

  PISTONFIELD_HOST_DEVICE Quotients(V numerator, V ends, V divisor) {
    if constexpr (sizeof(typename Set::Value) == sizeof(float)) {
      if constexpr (!Set::dividesSlowly()) {
        path = quotient(numerator, ends);
        inverse = quotient(V(1.0f), divisor);
      } else {
        both(numerator, ends, divisor, pistonfield::inverse(divisor * ends));
      }
    } else {
      both(numerator, ends, divisor, quotient(V(1.0), divisor * ends));
    }
  }

 private:
  PISTONFIELD_HOST_DEVICE void both(V numerator, V ends, V divisor, V inverseOfBoth) {
    path = numerator * (divisor * inverseOfBoth);
    inverse = ends * inverseOfBoth;
  }
};

/// d·∫ h/D dσ from `from` to `to`, by the rule. D = d² + σ², R = √(z² + D), δ = 2π(R − z); all
/// lengths are in wavelengths. The integral of (exp(−ikR) − exp(−ikz))/D is −2·exp(−ikz) times
/// this.
///
/// Without loss h = −(exp(−iδ) − 1)/2 = sin(δ/2)·(sin(δ/2) + i·cos(δ/2)). In a medium in which a
/// wave decays by `decay` nepers a wavelength, k has the imaginary part −decay/λ, and with
/// E = exp(−decay·(R − z)) − 1 it is h·(1 + E) − E/2. No digits are lost in either.
template <bool isLossy = false, class Set>
PISTONFIELD_HOST_DEVICE ComplexPair<Pack<Set>> intervalSum(
    Pack<Set> d, Pack<Set> z, Pack<Set> from, Pack<Set> to, IntervalRule<Set> rule,
    Pack<Set> decay = Pack<Set>(typename Set::Value(0))) {
  using V = Pack<Set>;
  using Value = typename Set::Value;
  const V h = (to - from) * V(Value(0.5));
  const V zz = z * z;
  // Where d is 0 the result is, too. The product below must not be 0.
  const V dd = larger(d * d, V(Value(sizeof(Value) == sizeof(float) ? 1e-24 : 1e-200)));
  ComplexPair<V> sum{V(Value(0)), V(Value(0))};
  for (int j = 0; j < rule.order; ++j) {
    const V sigma = multiplyAdd(V(rule.fromStart[j]), h, from);
    const V D = multiplyAdd(sigma, sigma, dd);
    const V ends = squareRoot(zz + D) + z;  // R + z
    const Quotients<Set> q(D, ends, D);
    const auto [sine, cosine] = sineCosine(fractionOf(q.path));
    const V weight = V(rule.w[j]) * q.inverse;
    V scale = weight * sine;
    if constexpr (isLossy) {
      const V E = Exponential<Set>(-decay * q.path).minusOne();
      sum.re = multiplyAdd(weight * V(Value(-0.5)), E, sum.re);
      scale = multiplyAdd(scale, E, scale);
    }
    sum = multiplyAdd(scale, ComplexPair<V>{sine, cosine}, sum);
  }
  const V dh = d * h;
  return {dh * sum.re, dh * sum.im};
}

}  // namespace pistonfield
