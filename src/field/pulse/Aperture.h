#pragma once

#include <complex>
#include <cstddef>
#include <vector>

#include "field/pulse.h"

namespace pistonfield {

/// How the waves of pistons reach a point. Of several apertures, one after the other, times and
/// lengths are sums, and the others products.
struct Reach {
  double first, last;        ///< when the first and the last wave arrive
  double nearest, farthest;  ///< the shortest and the longest path
  double limit;              ///< an upper bound of the pressure's magnitude at any frequency
  double gain;  ///< an upper bound of Σ |weight|·∬ 1/(2πR) dS; infinite behind a piston
};

Reach oneAfterTheOther(const Reach& one, const Reach& other);

/// Pistons with delays, prepared for sums over frequencies. Those that radiate nothing are left
/// out, and the weights of the others are divided by a power of 2, so that the largest is about 1.
class Aperture {
 public:
  explicit Aperture(const std::vector<DelayedPiston>& pistons);

  std::size_t size() const { return pistons_.size(); }

  /// The weights are to be multiplied by 2^exponent.
  int exponent() const { return exponent_; }

  /// Σ |weight|.
  double weight() const { return weight_; }

  /// The largest magnitude of a delay.
  double mostDelay() const;

  /// At a point that is finite. There is a piston.
  Reach reach(const Position& p, double speed) const;

  /// Whether Field accepts this wave number, and points with coordinates up to `mostCoordinate`.
  bool accepts(std::complex<double> k, double mostCoordinate) const;

  /// The pistons with the weights weight·exp(−iω·delay).
  std::vector<Field::Piston> at(double omega) const;

 private:
  std::vector<DelayedPiston> pistons_;
  int exponent_ = 0;
  double weight_ = 0;
  double leastSide_ = 0, mostSide_ = 0, mostCoordinate_ = 0;
};

}  // namespace pistonfield
