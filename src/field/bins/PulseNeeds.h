#pragma once

#include <cstring>

#include "FastNearfield/intervals/IntervalOrder.h"
#include "field/bins/PulseOnPoints.h"

namespace pistonfield {

/// Bounds of up to `most` intervals.
struct PulseIntervals {
  static constexpr int most = 16;  // a multiple of every set's lanes
  alignas(64) float leastD[most], mostD[most], leastZ[most], leastFrom[most], mostTo[most],
      mostLength[most];
};

/// The orders that integrals along edges need for a pulse, d·∫ (v(t − R) − v(t − z))/D dσ. All
/// lengths are in bins.
///
/// With the spectrum's mass A and slope B, the integral's magnitude is at most
///
///     S = (β − α)·d·min(B/(R₀ + z), 2A/D₀),
///
/// and its error at each frequency follows from that of exp(iωt) on [−1, 1] (IntervalOrder.h). The
/// table of orders has the sum over frequencies.
template <class Set>
struct PulseNeeds {
  using V = Pack<Set>;

  alignas(64) float magnitude[PulseIntervals::most];
  float oscillation[PulseIntervals::most];  ///< the order that the oscillation needs alone
  float order[PulseIntervals::most];        ///< not rounded

  PulseNeeds(const PulseIntervals& in, int count, float tolerance, const PulseOrders& orders) {
    for (int n = 0; n < count; n += V::lanes) find(in, n, tolerance, orders);
  }

 private:
  /// Of the tolerance. The order of a rule is too small by one of up to 1.13 in the error, in the
  /// worst cases that were found.
  static constexpr float quadratureShare = 0.9f;

  /// x = fraction·2^exponent, 1/2 ≤ fraction < 1.
  struct Parts {
    float fraction;
    int exponent;

    explicit Parts(float x) {
      unsigned bits = 0;
      std::memcpy(&bits, &x, sizeof bits);
      exponent = static_cast<int>(bits >> 23) - 126;
      bits = (bits & 0x007fffffU) | 0x3f000000U;
      std::memcpy(&fraction, &bits, sizeof fraction);
    }
  };

  /// The order for an error of 1/precision and the path T.
  static float orderOf(const float (&table)[PulseOrders::errors][PulseOrders::paths],
                       float precision, float path) {
    const int bits = Parts(precision).exponent;
    if (bits >= PulseOrders::errors) return 3e38f;
    const float* const orders = table[bits > 0 ? bits : 0];
    const Parts T(path);
    const int octave = T.exponent - 1 - PulseOrders::leastPath;
    if (octave < 0) return orders[0];
    const bool isUpper = T.fraction >= 0.75f;
    const int n = 2 * octave + (isUpper ? 1 : 0);
    if (n + 1 >= PulseOrders::paths) return 3e38f;
    const float share = isUpper ? 4 * T.fraction - 3 : 4 * T.fraction - 2;
    return orders[n] + share * (orders[n + 1] - orders[n]);
  }

  void find(const PulseIntervals& in, int n, float tolerance, const PulseOrders& orders) {
    const V z = V::load(in.leastZ + n), leastD = V::load(in.leastD + n),
            mostD = V::load(in.mostD + n), from = V::load(in.leastFrom + n),
            to = V::load(in.mostTo + n), length = V::load(in.mostLength + n), zero(0.0f);
    const V dd = leastD * leastD, rho2 = larger(multiplyAdd(z, z, dd), V(1e-30f)),
            nearest = larger(from, zero), area = length * mostD;
    const V R0 = rootEstimate(multiplyAdd(nearest, nearest, rho2));
    const V smooth = area * inverseEstimate(R0 + z),
            steep = V(2.0f) * area * inverseEstimate(multiplyAdd(nearest, nearest, dd) + V(1e-30f));
    const V S = smaller(V(orders.slope) * smooth, V(orders.mass) * steep);
    S.store(magnitude + n);

    const IntervalShape<Set> shape(rho2, from, to, length);
    const V share(quadratureShare * tolerance), precision = inverseEstimate(share);
    // Between the slope at the farther end and the mean slope.
    const V path = V(0.35f) * shape.endTurns + V(0.15f) * shape.meanTurns;
    alignas(64) float paths[V::lanes], smooths[V::lanes], steeps[V::lanes];
    path.store(paths);
    (smooth * precision).store(smooths);
    (steep * precision).store(steeps);
    for (int lane = 0; lane < V::lanes; ++lane) {
      const float bySlope = orderOf(orders.bySlope, smooths[lane], paths[lane]),
                  byMass = orderOf(orders.byMass, steeps[lane], paths[lane]);
      oscillation[n + lane] = bySlope < byMass ? bySlope : byMass;
    }
    const V strength = log2Above(mostD * V(orders.slope) * precision + V(1e-18f)) +
                       V(0.125f) * (log2Above(multiplyAdd(from, from, rho2)) +
                                    log2Above(multiplyAdd(to, to, rho2))) -
                       V(0.25f) * log2Below(rho2);
    const V L = logarithmOver(S, 2, share),
            both = orderForBoth(smaller(V::load(oscillation + n), V(1e9f)),
                                shape.orderForBranch(strength));
    (both + V(0.6f) + V(0.1f) * larger(L - V(18.0f), zero)).store(order + n);
  }
};

}  // namespace pistonfield
