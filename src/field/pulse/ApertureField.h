#pragma once

#include <functional>
#include <vector>

#include "field/pulse/Frequencies.h"

namespace pistonfield {

/// The product of the apertures' pressures at points and frequencies.
struct LinkedPressures {
  std::vector<std::complex<double>> values;  ///< those of point n follow those of point n − 1
  double error;  ///< an upper bound of Σ |factor|·error over the frequencies, at each point
  double nodes;  ///< how many values of integrands
};

/// Computes them so that this bound is `tolerance` at most, unless the precision of double numbers
/// does not allow it. The points are finite, and the frequencies at least one. Calls advance(part)
/// between pieces of work; all parts add up to 1.
LinkedPressures linkedPressures(const Link& link, const std::vector<Frequency>& frequencies,
                                const std::vector<Position>& points, double tolerance,
                                const std::function<void(double part)>& advance);

}  // namespace pistonfield
