#include "field/pulse/PulseSum.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "field/pulse/PulseOrderTable.h"

namespace pistonfield {
namespace {

constexpr double pi = 3.14159265358979323846;

/// Of the tolerance.
constexpr double quadratureShare = 0.6, interpolationShare = 0.3, roundingShare = 0.1;

/// Of a piston.
constexpr double mostIntervals = 8;

/// If a sample has more bins, samples are evaluated one by one.
constexpr double mostPhases = 256;

/// So that no float underflows.
constexpr double leastTolerance = 1e-32;

double perimeter(const Field::Piston& piston) { return 2 * (piston.width + piston.height); }

/// Bounds of the error of v(t − τ) if τ is divided among bins, and of the derivative of this error
/// by τ, per bin: Lagrange's remainder for exp(iωt), or, for high frequencies, the sum of the
/// magnitudes of the polynomials or their slopes.
struct BinErrors {
  double value = 0, slope = 0;

  BinErrors(const PulseSpectrum& spectrum, double step) {
    for (const PulseSpectrum::Part& part : spectrum.parts()) {
      const double turn = part.omega * step, square = turn * turn;
      const double eighth = square * square * square * square;
      // max |Π(x − k)|/8! = 1.0681e-3, for the product's slope 144/8!, and 43.07/9!
      const double atMost = 3, slopeAtMost = 10;
      value += part.mass * std::min(1.069e-3 * eighth, atMost);
      slope += std::min(part.mass * (3.572e-3 + 1.187e-4 * turn) * eighth,
                        part.slope * step + slopeAtMost * part.mass);
    }
  }
};

}  // namespace

PulseSum::PulseSum(const std::vector<DelayedPiston>& pistons, const ExcitationSpline& spline,
                   const PulseSpectrum& spectrum, double speed, double mostCoordinate,
                   double tolerance, double sampleRate)
    : spline_(spline),
      speed_(speed),
      sampleRate_(sampleRate),
      functions_(pulseFunctions(instructionSet())) {
  chooseBins(pistons, spectrum, interpolationShare * tolerance);
  orders_ = pulseOrders(spectrum, binStep_);
  const double interpolation = interpolationError(pistons, spectrum, binStep_),
               rounding = roundingError(pistons, spectrum, mostCoordinate);
  excess_ = std::max(rounding / (roundingShare * tolerance),
                     interpolation / (interpolationShare * tolerance));
  bound_ = quadratureShare * tolerance + interpolation + rounding;
  const double binsPerUnit = 1 / (speed * binStep_);
  for (const DelayedPiston& delayed : pistons) {
    const Field::Piston& piston = delayed.piston;
    TimedPiston timed{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
      timed.centre[axis] = piston.centre[axis];
      for (std::size_t n = 0; n < 3; ++n) timed.axes[axis][n] = piston.axes[axis][n] * binsPerUnit;
    }
    timed.halfWidth = piston.width / 2 * binsPerUnit;
    timed.halfHeight = piston.height / 2 * binsPerUnit;
    timed.weight = piston.weight.real();
    timed.delay = delayed.delay / binStep_;
    const double share =
        quadratureShare * tolerance * 2 * pi /
        (mostIntervals * static_cast<double>(pistons.size()) * std::fabs(piston.weight.real()));
    if (!(share > leastTolerance)) excess_ = std::numeric_limits<double>::infinity();
    timed.tolerance = static_cast<float>(std::min(share, 1e30));
    pistons_.push_back(timed);
  }
  setOffset(0);
}

double PulseSum::interpolationError(const std::vector<DelayedPiston>& pistons,
                                    const PulseSpectrum& spectrum, double step) const {
  const BinErrors errors(spectrum, step);
  double sum = 0;
  // The edges' integrals ∫ |d|/D dσ are at most 2π together. That of |d|·(R − z)/D = |d|/(R + z) is
  // at most their length.
  for (const DelayedPiston& delayed : pistons)
    sum += std::fabs(delayed.piston.weight.real()) *
           std::min(2 * errors.value,
                    errors.slope * perimeter(delayed.piston) / (speed_ * step) / (2 * pi));
  return sum;
}

void PulseSum::chooseBins(const std::vector<DelayedPiston>& pistons, const PulseSpectrum& spectrum,
                          double tolerance) {
  double step = pi / spectrum.centre();
  for (int n = 0; n < 200 && interpolationError(pistons, spectrum, step) > tolerance; ++n)
    step *= 0.9;
  // Bins and samples are commensurate, so that the pulse is sampled once.
  const double bins = 1 / (sampleRate_ * step);
  if (bins > mostPhases &&
      (1 / sampleRate_ > spline_.end() - spline_.begin() || bins > mostPhases * mostPhases / 4)) {
    table_.step = table_.phases = 1;
    sampleRate_ = 1 / step;
  } else {
    table_.step = bins < 1 ? static_cast<int>(std::min(1 / bins, 1e6)) : 1;
    table_.phases = bins > 1 ? static_cast<int>(std::ceil(bins)) : 1;
  }
  binStep_ = table_.step / (sampleRate_ * table_.phases);
}

double PulseSum::roundingError(const std::vector<DelayedPiston>& pistons,
                               const PulseSpectrum& spectrum, double mostCoordinate) const {
  constexpr double unit = 0x1p-53;
  double sum = 0;
  for (const DelayedPiston& delayed : pistons) {
    const double path = 20 * mostCoordinate + perimeter(delayed.piston);
    const double shift = unit * (path / speed_ + 4 * std::fabs(delayed.delay));  // in time
    // An edge that is shifted changes the pressure by at most v'·shift·∫ dσ/(2πR); edges are
    // shifted by different amounts. And the rounding of products and sums.
    sum += std::fabs(delayed.piston.weight.real()) *
           (12 * shift * spectrum.slope() + 0x1p7 * unit * spectrum.mass());
  }
  return sum;
}

void PulseSum::setOffset(double offset) {
  offset_ = offset;
  const double first = std::floor((spline_.begin() - offset) * sampleRate_);
  // Of the last phase, which is almost a sample later.
  const double last = std::ceil((spline_.end() - offset) * sampleRate_) + 1;
  table_.first = static_cast<int>(first);
  table_.length = static_cast<int>(last - first) + 1;
  table_.stride = table_.length + 2 * PulseTable::padding;
  values_.assign(static_cast<std::size_t>(table_.stride) * static_cast<std::size_t>(table_.phases),
                 0);
  for (int phase = 0; phase < table_.phases; ++phase)
    for (int n = 0; n < table_.length; ++n)
      values_[static_cast<std::size_t>(phase) * static_cast<std::size_t>(table_.stride) +
              static_cast<std::size_t>(n + PulseTable::padding)] =
          spline_.at(offset + (first + n) / sampleRate_ - phase * binStep_);
  table_.values = values_.data() + PulseTable::padding;
}

Bins PulseSum::window(long long sample, std::size_t count, Scratch& scratch) const {
  const double bins = binsPerSample(), margin = 2 * binsOfNode;
  const double first = static_cast<double>(sample) * bins + (offset_ - spline_.end()) / binStep_,
               last = static_cast<double>(sample) * bins + static_cast<double>(count) * bins +
                      (offset_ - spline_.begin()) / binStep_;
  const double origin = std::floor(first - margin);
  const auto binCount = static_cast<std::size_t>(std::ceil(last - origin + margin));
  const std::size_t needed = binCount * pulsePoints;
  if (scratch.bins.size() < needed) scratch.bins.assign(needed, 0);
  if (scratch.samples.size() < count + PulseTable::padding)
    scratch.samples.resize(count + PulseTable::padding);
  return {scratch.bins.data(), origin, static_cast<int>(binCount)};
}

Arrivals PulseSum::addPistons(const double* x, const double* y, const double* z, const Bins& bins,
                              Scratch& scratch) const {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  Arrivals arrivals{};
  for (int n = 0; n < pulsePoints; ++n) {
    arrivals.first[n] = arrivals.least[n] = infinity;
    arrivals.last[n] = arrivals.most[n] = -infinity;
  }
  for (const TimedPiston& piston : pistons_)
    functions_.add(orders_, piston, x, y, z, bins, arrivals);
  scratch.nodes += arrivals.nodes;
  scratch.isLost |= arrivals.isLost;
  return arrivals;
}

PulseSum::Range PulseSum::convolve(const Arrivals& arrivals, int n, const Bins& bins,
                                   long long sample, std::size_t count, Scratch& scratch) const {
  if (!(arrivals.first[n] <= arrivals.last[n])) return {0, 0};
  double* const values = bins.values + static_cast<std::ptrdiff_t>(n) * bins.count;
  const int from = static_cast<int>(std::max(arrivals.least[n] - binsOfNode, 0.0)),
            to = static_cast<int>(
                std::min(arrivals.most[n] + binsOfNode, static_cast<double>(bins.count)));
  // The samples that waves reach.
  const double start = static_cast<double>(sample) + offset_ * sampleRate_,
               first = (arrivals.first[n] * binStep_ + spline_.begin()) * sampleRate_ - start,
               last = (arrivals.last[n] * binStep_ + spline_.end()) * sampleRate_ - start;
  const auto end = static_cast<double>(count);
  Range range{0, 0};
  if (from < to && last > 0 && first < end) {
    range.first = static_cast<std::size_t>(std::ceil(std::max(first, 0.0)));
    const auto beyond = static_cast<std::size_t>(std::min(std::floor(last) + 1, end));
    range.count = beyond > range.first ? beyond - range.first : 0;
  }
  if (range.count > 0) {
    const std::size_t padded = (range.count + PulseTable::padding - 1) / PulseTable::padding *
                               std::size_t{PulseTable::padding};
    std::fill_n(scratch.samples.begin(), padded, 0.0);
    functions_.convolve(table_, values, static_cast<long long>(bins.origin), from, to,
                        sample + static_cast<long long>(range.first), static_cast<int>(padded),
                        scratch.samples.data());
  }
  if (from < to) std::fill(values + from, values + to, 0.0);
  return range;
}

}  // namespace pistonfield
