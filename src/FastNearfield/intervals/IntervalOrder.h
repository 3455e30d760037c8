#pragma once

#include "FastNearfield/intervals/Wave.h"
#include "lanes/Pack.h"

// How many nodes an interval of an edge needs, and which precision, for a tolerance. All lengths
// are in wavelengths, so that k = 2π.
//
// The integral is
//
//     I = d·∫ (exp(−ikR) − exp(−ikz)) / (d² + σ²) dσ,   R = √(z² + d² + σ²),   from α to β.
//
// Its magnitude is at most
//
//     S = (β − α)·d·min(k/(R₀ + z), 2/D₀),   R₀ and D₀ = d² + σ² at the end nearer to the foot.
//
// Two things limit how fast the error of a Gauss rule falls with its order n. One is the
// oscillation: the phase turns by at most 2ω, ω = k(β − α)/2·slope, where slope = dR/dσ is largest
// at the end farther from the foot. The error of exp(iωt) on [−1, 1] is below S·exp(ω·sinh ξ − 2nξ)
// for every ξ > 0, so that n = min over ξ of (L + ω·sinh ξ)/2ξ with L = ln(S/tolerance). The other
// is the branch point of R at σ = ±i√(z² + d²): the largest ellipse around the interval that
// excludes it has semi-axes whose sum is r half-lengths,
//
//     r = q + √(q² − 1),   q = (R(α) + R(β))/(β − α),
//
// and the error that it causes is about d·k·(R(α)·R(β))^¼/ρ^½·r^(−2n), ρ = √(z² + d²).
//
// The order is the fourth root of the sum of both fourth powers, plus 0.6 and, for L > 18, 0.1 more
// for each unit of L, rounded up. This, the mean of slopes below and two factors, oscillationMargin
// of S and branchMargin of the branch point's error, were measured (docs/theory.md).
//
// In a lossy medium k is a complex number, of which the bounds take the magnitude: with it they
// hold for exp(−ikR) − exp(−ikz) divided by exp(−ikz).

namespace pistonfield {

/// log₂ x for normal x > 0. The result is 0 to 0.0861 too small.
template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> log2Below(Pack<Set> x) {
  return bitsAsNumber(x) * Pack<Set>(0x1p-23f) - Pack<Set>(127.0f);
}

/// The result is 0 to 0.0861 too large.
template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> log2Above(Pack<Set> x) {
  return bitsAsNumber(x) * Pack<Set>(0x1p-23f) - Pack<Set>(127.0f - 0.0861f);
}

/// 2^x for |x| < 126. The result is up to 6.2 % too large.
template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> exp2Above(Pack<Set> x) {
  return numberAsBits((x + Pack<Set>(127.0f)) * Pack<Set>(0x1p23f));
}

/// exp(−decay·path), up to 6.2 % too large; at least 2^-120.
template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> decayAbove(Pack<Set> path, const Wave& wave) {
  return wave.decay > 0
             ? exp2Above(larger(path * Pack<Set>(-1.44269504f * wave.decay), Pack<Set>(-120.0f)))
             : Pack<Set>(1.0f);
}

/// At the branch point R is 0: with loss exp(−ikR) is larger there than at a path by 2 to the power
/// of this times the path.
PISTONFIELD_HOST_DEVICE inline float growthToBranch(const Wave& wave) {
  return 1.44269504f * wave.decay;
}

/// What the order of a rule depends on, of the distance R on an interval, R² = ρ² + σ². `from`: at
/// least 0; or at least −`to`, and all lengths are equal.
template <class Set>
struct IntervalShape {
  using V = Pack<Set>;

  V endTurns;   ///< the interval's length, times dR/dσ at the farther end
  V meanTurns;  ///< the same for the mean slope
  V lnr;        ///< ln r, at most a few percent too small

  PISTONFIELD_HOST_DEVICE IntervalShape(V rho2, V from, V to, V length) {
    constexpr float ln2 = 0.693147f;
    const V one(1.0f), tiny(1e-18f), nearest = larger(from, V(0.0f));
    const V end = from + length;  // of the interval that is nearest to the branch point
    const V R1 = rootEstimate(multiplyAdd(from, from, rho2));
    const V R2 = rootEstimate(multiplyAdd(to, to, rho2));
    const V R0 = rootEstimate(multiplyAdd(nearest, nearest, rho2));

    endTurns = length * to * inverseEstimate(R2);
    meanTurns = (to - nearest) * (to + nearest) * inverseEstimate(R2 + R0);  // R(β) − R₀

    const V q = smaller((R1 + rootEstimate(multiplyAdd(end, end, rho2))) *
                            inverseEstimate(length + tiny) * V(1 - 0x1p-10f),
                        V(1e6f));
    const V r = q + rootEstimate(larger(multiplyAdd(q, q, -one), V(1e-12f)));
    // Two lower bounds of ln r: the first is close for r near 1.
    lnr = larger(V(2.0f) * (r - one) * inverseEstimate(r + one), V(ln2) * log2Below(r));
  }

  /// The order that the branch point needs: its error is 2^strength·r^(−2n) tolerances.
  PISTONFIELD_HOST_DEVICE V orderForBranch(V strength) const {
    constexpr float ln2 = 0.693147f;
    return larger(strength, V(0.0f)) * V(0.5f * ln2) * inverseEstimate(larger(lnr, V(1e-6f)));
  }
};

/// The order with which both reasons are met.
template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> orderForBoth(Pack<Set> oscillation, Pack<Set> branch) {
  const Pack<Set> o2 = oscillation * oscillation, b2 = branch * branch;
  return rootEstimate(rootEstimate(multiplyAdd(o2, o2, b2 * b2)));
}

/// How many nodes integrals over exp(−ikR) need, R² = ρ² + σ².
template <class Set>
struct NodeNeeds {
  using V = Pack<Set>;

  V oscillation;  ///< the order that the oscillation needs alone
  V order;        ///< with the branch point

  /// L = ln(S/tolerance). The error that the branch point causes is 2^strength·r^(−2n) tolerances.
  PISTONFIELD_HOST_DEVICE NodeNeeds(V rho2, V from, V to, V length, V L, V strength,
                                    const Wave& wave) {
    const float pi = 0.5f * wave.waveNumber;
    const IntervalShape<Set> shape(rho2, from, to, length);
    // Between the slope at the farther end and the mean slope.
    const V omega = V(0.7f * pi) * shape.endTurns + V(0.3f * pi) * shape.meanTurns + V(1e-6f);
    // The minimum over ξ is ω/2 + L·J(log₂(L/ω)). log₂ J is fitted by a polynomial, within 0.07.
    const V l = smaller(larger(log2Below(L * inverseEstimate(omega)), V(-9.0f)), V(16.0f));
    V logJ = multiplyAdd(l, V(1.44254e-4f), V(4.43785e-3f));
    logJ = multiplyAdd(l, logJ, V(-0.304180f));
    logJ = multiplyAdd(l, logJ, V(-0.901854f + 0.07f));
    oscillation = multiplyAdd(L, exp2Above(logJ), V(0.5f) * omega);
    order = orderForBoth(oscillation, shape.orderForBranch(strength));
  }
};

/// L = ln(magnitude·margin/tolerance), at least 0.1.
template <class Set>
PISTONFIELD_HOST_DEVICE Pack<Set> logarithmOver(Pack<Set> magnitude, float margin,
                                                Pack<Set> tolerance) {
  using V = Pack<Set>;
  constexpr float ln2 = 0.693147f;
  return larger(V(ln2) * log2Above(magnitude * V(margin) * inverseEstimate(tolerance) + V(1e-18f)),
                V(0.1f));
}

/// Bounds of an interval at several points.
template <class V>
struct IntervalBounds {
  V leastD, mostD;  ///< the magnitude of d
  V leastZ;
  V leastFrom;   ///< α: at least 0; or at least −β, and all lengths are equal
  V mostTo;      ///< β
  V mostLength;  ///< β − α
};

/// What intervals need, one a lane, for a tolerance of each integral.
template <class Set>
struct IntervalNeeds {
  using V = Pack<Set>;

  V magnitude;    ///< S
  V oscillation;  ///< the order that the oscillation needs alone
  V order;        ///< the order, not rounded
  V rounding;     ///< the bound of the rounding error, in units of the precision
  V ends;         ///< the same for α and β, if they are rounded

  PISTONFIELD_HOST_DEVICE IntervalNeeds(const IntervalBounds<V>& in, V tolerance,
                                        const Wave& wave = {}) {
    const float k = wave.waveNumber;
    const V zero(0.0f), tiny(1e-18f);
    const V nearest = larger(in.leastFrom, zero), to = in.mostTo, length = in.mostLength;
    const V dd = in.leastD * in.leastD,
            rho2 = larger(multiplyAdd(in.leastZ, in.leastZ, dd), V(1e-30f));
    const V R0 = rootEstimate(multiplyAdd(nearest, nearest, rho2));
    const V D0 = multiplyAdd(nearest, nearest, dd);
    const V smooth = length * in.mostD * V(k) * inverseEstimate(R0 + in.leastZ);
    const V steep = in.mostD * V(2.0f) * inverseEstimate(D0 + V(1e-30f));
    magnitude = smaller(smooth, length * steep);
    rounding = V(3.0f) * smooth + V(4.0f) * magnitude;
    ends = V(2.0f) * to * smaller(in.mostD * V(k) * inverseEstimate(R0 + in.leastZ), steep);

    const V L = logarithmOver(magnitude, oscillationMargin, tolerance);
    const V strength =
        log2Above(in.mostD * V(k * branchMargin) * inverseEstimate(tolerance) + tiny) +
        V(0.125f) * (log2Above(multiplyAdd(in.leastFrom, in.leastFrom, rho2)) +
                     log2Above(multiplyAdd(to, to, rho2))) -
        V(0.25f) * log2Below(rho2) + in.leastZ * V(growthToBranch(wave));
    const NodeNeeds<Set> needs(rho2, in.leastFrom, to, length, L, strength, wave);
    oscillation = needs.oscillation;
    order = needs.order + V(0.6f) + V(0.1f) * larger(L - V(18.0f), zero);
  }

  static constexpr float oscillationMargin = 2, branchMargin = 1;
};

}  // namespace pistonfield
