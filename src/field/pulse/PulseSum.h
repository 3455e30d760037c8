#pragma once

#include <cstddef>
#include <vector>

#include "field/bins/PulseOnPoints.h"
#include "field/pulse/PulseSpectrum.h"

namespace pistonfield {

/// The sum of pistons' pulses at groups of points, for an absolute tolerance. Any number of threads
/// may add groups at once.
class PulseSum {
 public:
  /// Pistons have sides and weights other than 0, and delays that include the excitation's start,
  /// which is 0 in the spline. Points and centres have coordinates of at most `mostCoordinate`.
  PulseSum(const std::vector<DelayedPiston>& pistons, const ExcitationSpline& spline,
           const PulseSpectrum& spectrum, double speed, double mostCoordinate, double tolerance,
           double sampleRate);

  /// The part of the tolerance that rounding errors would need over the part that they may take:
  /// above 1, the tolerance cannot be kept.
  double excess() const { return excess_; }

  /// An upper bound of the errors unless `Scratch::isLost`.
  double bound() const { return bound_; }

  /// Samples per unit of time: that of the constructor, unless the samples are farther apart than
  /// the pulse is long. Then they are evaluated one by one, as if others were between them.
  double sampleRate() const { return sampleRate_; }

  /// Sets the time of sample 0, from 0 to below a step. No thread adds groups meanwhile.
  void setOffset(double offset);

  /// How long the pulse and a bin are.
  double pulseSamples() const { return static_cast<double>(table_.length); }
  double binsPerSample() const { return static_cast<double>(table_.phases) / table_.step; }

  /// What a thread uses.
  struct Scratch {
    std::vector<double> bins;     ///< zeros
    std::vector<double> samples;  ///< of a point
    double nodes = 0;
    bool isLost = false;  ///< whether the tolerance is not kept
  };

  /// Calls take(n, first, count, samples) for each point n of a group with samples other than 0:
  /// for `count` samples, of those from `sample` on that number `first` and the next. Coordinates
  /// are finite.
  template <class Take>
  void evaluate(const double* x, const double* y, const double* z, long long sample,
                std::size_t count, Scratch& scratch, const Take& take) const {
    const Bins bins = window(sample, count, scratch);
    const Arrivals arrivals = addPistons(x, y, z, bins, scratch);
    for (int n = 0; n < pulsePoints; ++n) {
      const Range range = convolve(arrivals, n, bins, sample, count, scratch);
      if (range.count > 0) take(n, range.first, range.count, scratch.samples.data());
    }
  }

 private:
  struct Range {
    std::size_t first, count;
  };

  void chooseBins(const std::vector<DelayedPiston>& pistons, const PulseSpectrum& spectrum,
                  double tolerance);
  double interpolationError(const std::vector<DelayedPiston>& pistons,
                            const PulseSpectrum& spectrum, double step) const;
  double roundingError(const std::vector<DelayedPiston>& pistons, const PulseSpectrum& spectrum,
                       double mostCoordinate) const;
  Bins window(long long sample, std::size_t count, Scratch& scratch) const;
  Arrivals addPistons(const double* x, const double* y, const double* z, const Bins& bins,
                      Scratch& scratch) const;
  Range convolve(const Arrivals& arrivals, int n, const Bins& bins, long long sample,
                 std::size_t count, Scratch& scratch) const;

  const ExcitationSpline& spline_;
  double speed_, sampleRate_;
  double binStep_ = 0;  // the length of a bin
  double offset_ = 0;
  double excess_ = 0, bound_ = 0;
  PulseFunctions functions_;
  PulseOrders orders_{};
  std::vector<TimedPiston> pistons_;
  PulseTable table_{};
  std::vector<double> values_;
};

}  // namespace pistonfield
