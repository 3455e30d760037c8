#pragma once

#include <limits>
#include <vector>

#include "field/Powers.h"
#include "field/pulse/Aperture.h"
#include "field/pulse/ExcitationSpline.h"

namespace pistonfield {

/// What carries an excitation to points: one aperture, or two for an echo, in a medium. The signal
/// is 1/2π ∫ V(ω)·Π i·P(ω)·exp(iωt) dω with the pressures P of the apertures.
struct Link {
  std::vector<Aperture> apertures;
  Medium medium;
  ExcitationSpline excitation;

  bool isLossy() const { return medium.attenuation > 0; }

  Reach reach(const Position& p) const {
    Reach all = apertures.front().reach(p, medium.speed);
    for (std::size_t n = 1; n < apertures.size(); ++n)
      all = oneAfterTheOther(all, apertures[n].reach(p, medium.speed));
    return all;
  }
};

/// Frequencies from about `low` to about `high`. The weights of neighbouring bands add up to 1, and
/// are so smooth that what a band takes from a signal hardly lasts longer than 12/low.
struct Band {
  double low = 0, high = std::numeric_limits<double>::infinity();

  double weight(double omega) const {
    return below(omega / high) - (low > 0 ? below(omega / low) : 0);
  }

  /// Above it, weights are negligible.
  double most() const { return 7 * high; }

 private:
  /// exp(−x²)·(1 + x² + x⁴/2 + x⁶/6), which is 1 − x⁸/24 at first.
  static double below(double x) {
    const double square = x * x;
    if (square > 700) return 0;
    return exponential(-square) * (1 + square * (1 + square / 2 * (1 + square / 3)));
  }
};

/// The extremes among points of how they are reached.
struct Extent {
  double duration = 0;  ///< from the first to the last wave
  double nearest = 0, farthest = 0;
  double limit = 0, gain = 0;
  double mostCoordinate = 0;
};

}  // namespace pistonfield
