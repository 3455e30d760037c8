#pragma once

#include <complex>
#include <functional>
#include <vector>

#include "field/pulse/Link.h"

namespace pistonfield {

/// A frequency of a sum over frequencies: the signal is Σ Re(factor·Π P·exp(iω·(t − start))).
struct Frequency {
  double omega;
  std::complex<double> k;
  std::complex<double> factor;
};

struct Frequencies {
  std::vector<Frequency> kept;
  double rest;  ///< an upper bound of what the others contribute, which are left out
};

/// The frequencies of a band of signals that last so long, at points of this extent: multiples of
/// 2π/period, for which the sum is exact but for repeating the signals with this period. As many
/// are left out as contribute up to `most` together. Throws a FieldError if one that matters is
/// out of Field's range.
Frequencies frequencies(const Link& link, const Extent& extent, const Band& band, double duration,
                        double most, const std::function<void(double)>& progress);

/// About the most that the signals can be, for pistons that do not cancel each other.
double mostExpected(const Link& link, const Extent& extent);

}  // namespace pistonfield
