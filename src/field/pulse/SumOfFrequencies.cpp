#include "field/pulse/SumOfFrequencies.h"

#include <cstdint>
#include <limits>

#include "field/DeviceEvaluation.h"
#include "field/pulse/ApertureField.h"
#include "field/pulse/TimeSum.h"
#include "parallel/Spread.h"

namespace pistonfield {
namespace {

using Complex = std::complex<double>;
using Progress = std::function<void(double)>;

/// Of a tolerance, what each approximation may take.
constexpr double shareOfTails = 0.25, shareOfFrequencies = 0.25, shareOfPressures = 0.45;

/// The bands of signals of this extent, each of which has frequencies with a step of its own.
///
/// In a medium that attenuates, low frequencies last longer than others: tails fall with a power of
/// the time. They need frequencies that are close to each other, but only low ones.
std::vector<Band> bandsOf(const Link& link, const Extent& extent, double tolerance,
                          const Progress& progress) {
  std::vector<Band> bands(1);
  if (!link.isLossy()) return bands;
  const WaveDuration whole = waveDuration(link, extent, bands.back(), tolerance, progress);
  const double core = extent.duration + link.excitation.end() - link.excitation.begin();
  double duration = extent.duration + whole.end - whole.begin;
  double low = 24 / core;
  while (duration > 4 * core) {
    bands.back().low = low;
    bands.push_back({0, low});
    duration /= 4;
    low /= 4;
  }
  return bands;
}

}  // namespace

Extent extentOf(const std::vector<Target>& targets) {
  Extent extent;
  extent.nearest = std::numeric_limits<double>::infinity();
  for (const Target& target : targets) {
    const Reach& reach = target.reach;
    extent.duration = std::max(extent.duration, reach.last - reach.first);
    extent.nearest = std::min(extent.nearest, reach.nearest);
    extent.farthest = std::max(extent.farthest, reach.farthest);
    extent.limit = std::max(extent.limit, reach.limit);
    extent.gain = std::max(extent.gain, reach.gain);
    for (const double coordinate : target.point)
      extent.mostCoordinate = std::max(extent.mostCoordinate, std::fabs(coordinate));
  }
  return extent;
}

SumOfFrequencies::SumOfFrequencies(const Link& link, const std::vector<Target>& targets,
                                   double tolerance, const Progress& progress)
    : link_(link) {
  const Extent extent = extentOf(targets);
  limit_ = extent.limit;
  const std::vector<Band> bands =
      bandsOf(link, extent, shareOfTails * tolerance / extent.gain, progress);
  tolerance_ = tolerance / static_cast<double>(bands.size());
  for (const Band& band : bands) {
    const WaveDuration duration =
        waveDuration(link, extent, band, shareOfTails * tolerance_ / extent.gain, progress);
    parts_.push_back(
        {duration, frequencies(link, extent, band, extent.duration + duration.end - duration.begin,
                               shareOfFrequencies * tolerance_, progress)});
    neglected_ +=
        parts_.back().frequencies.rest + (duration.rest > 0 ? extent.gain * duration.rest : 0);
  }
  bound_ = neglected_;
}

std::size_t SumOfFrequencies::count() const {
  std::size_t count = 0;
  for (const Part& part : parts_) count += part.frequencies.kept.size();
  return count;
}

double SumOfFrequencies::mostOmega() const {
  double most = 0;
  for (const Part& part : parts_)
    if (!part.frequencies.kept.empty()) most = std::max(most, part.frequencies.kept.back().omega);
  return most;
}

double SumOfFrequencies::mostNeglected() const {
  return (shareOfTails + shareOfFrequencies) * tolerance_ * static_cast<double>(parts_.size());
}

void SumOfFrequencies::add(const std::vector<Target>& targets, const AxisOf& axisOf,
                           const Progress& progress) {
  Work work(progress, static_cast<double>(targets.size() * parts_.size()));
  for (const Part& part : parts_) {
    const auto axisOfPart = [&](const Target& target) {
      return axisOf(target).between(target.reach.first + part.duration.begin,
                                    target.reach.last + part.duration.end);
    };
    add(part, targets, axisOfPart, work);
  }
}

void SumOfFrequencies::add(const Part& part, const std::vector<Target>& targets,
                           const AxisOf& axisOf, Work& work) {
  const std::vector<Frequency>& kept = part.frequencies.kept;
  std::vector<Target> passed;
  std::size_t mostTimes = 0;
  for (const Target& target : targets)
    if (const Axis axis = axisOf(target); axis.count > 0) {
      passed.push_back(target);
      mostTimes = std::max(mostTimes, axis.count);
    }
  work.advance(static_cast<double>(targets.size() - passed.size()));
  if (kept.empty() || passed.empty()) return;
  std::vector<double> omegas;
  omegas.reserve(kept.size());
  for (const Frequency& one : kept) omegas.push_back(one.omega);
  const TimeSum timeSum(omegas, axisOf(passed.front()).step, mostTimes);
  const std::size_t inBlock = pointsInBlock(kept.size(), mostTimes);
  double error = 0;
  for (std::size_t first = 0; first < passed.size(); first += inBlock) {
    const std::size_t count = std::min(inBlock, passed.size() - first);
    const auto advance = [&](double done) {
      work.advance(0.9 * done * static_cast<double>(count));
    };
    std::vector<Position> points;
    for (std::size_t n = first; n < first + count; ++n) points.push_back(passed[n].point);
    const LinkedPressures pressures =
        linkedPressures(link_, kept, points, shareOfPressures * tolerance_, advance);
    error = std::max(error, pressures.error);
    nodes_ += pressures.nodes;
    const std::size_t inPiece = timesInPiece(kept.size(), count);
    for (std::size_t from = 0; from < mostTimes; from += inPiece) {
      parallel::spread(count, 1, [&](std::uint64_t begin, std::uint64_t end) {
        std::vector<Complex> coefficients(kept.size());
        for (std::uint64_t n = begin; n < end; ++n) {
          const Axis axis = axisOf(passed[first + n]);
          if (from >= axis.count) continue;
          for (std::size_t m = 0; m < kept.size(); ++m)
            coefficients[m] = kept[m].factor * pressures.values[n * kept.size() + m];
          const double start = axis.start + static_cast<double>(from) * axis.step;
          timeSum.add(coefficients, start - link_.excitation.start(),
                      std::min(inPiece, axis.count - from), axis.signal + from);
        }
      });
      work.advance(0.1 * static_cast<double>(count) *
                   static_cast<double>(std::min(inPiece, mostTimes - from)) /
                   static_cast<double>(mostTimes));
    }
  }
  bound_ += error + roundingOf(kept, passed, axisOf);
}

/// The phases ω·t of times and delays are rounded.
double SumOfFrequencies::roundingOf(const std::vector<Frequency>& kept,
                                    const std::vector<Target>& targets,
                                    const AxisOf& axisOf) const {
  double most = 0;
  for (const Target& target : targets) {
    const Axis axis = axisOf(target);
    most = std::max(most, std::fabs(axis.start - link_.excitation.start()) +
                              static_cast<double>(axis.count) * axis.step);
  }
  for (const Aperture& aperture : link_.apertures) most += aperture.mostDelay();
  double turns = 0;  // per unit of time
  for (const Frequency& one : kept) turns += std::abs(one.factor) * one.omega;
  return 0x1p-51 * turns * most * limit_;
}

/// So that a piece takes some tenths of a second.
std::size_t SumOfFrequencies::timesInPiece(std::size_t frequencies, std::size_t points) {
  constexpr double mostSums = 2e8;
  const double blocks =
      mostSums / static_cast<double>(frequencies) / static_cast<double>(points) / 64;
  return 64 * static_cast<std::size_t>(std::clamp(blocks, 1.0, 1e9));
}

/// So that the pressures of a block take up to some 64 MB, and each step some tenths of a second.
std::size_t SumOfFrequencies::pointsInBlock(std::size_t frequencies, std::size_t times) const {
  constexpr double mostPressures = 1.5e6, mostWork = 1 << 17, mostSums = 2e8;
  double pistons = 0;
  for (const Aperture& aperture : link_.apertures)
    pistons = std::max(pistons, static_cast<double>(aperture.size()));
  const double ofFrequencies = mostPressures / static_cast<double>(frequencies);
  const auto onDevice =
      std::min(static_cast<std::size_t>(ofFrequencies), DeviceEvaluation::mostPoints);
  if (DeviceEvaluation::isFaster(onDevice, static_cast<std::size_t>(pistons))) return onDevice;
  const double sums = static_cast<double>(frequencies) * static_cast<double>(times);
  return static_cast<std::size_t>(
      std::max(16.0, std::min({ofFrequencies, mostWork / pistons, mostSums / sums})));
}

}  // namespace pistonfield
