#include "field/pulse/PulseByFrequency.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <mutex>
#include <optional>

#include "field/Checks.h"
#include "field/Points.h"
#include "field/SortedPoints.h"
#include "field/Vectors.h"
#include "field/pulse/Frequencies.h"
#include "field/pulse/Link.h"
#include "field/pulse/PulseChecks.h"
#include "field/pulse/SumOfFrequencies.h"
#include "parallel/Spread.h"

namespace pistonfield {
namespace {

using Progress = std::function<void(double)>;

constexpr double pi = 3.14159265358979323846, infinity = std::numeric_limits<double>::infinity();

/// How often the peak is searched for, with tolerances from a twentieth of what is expected down to
/// some 1e-8.
constexpr int mostPasses = 6;

std::vector<Target> targetsAmong(const Link& link, const Position* points, std::size_t count,
                                 const Progress& progress) {
  const SortedPoints sorted(points, count, progress);
  std::size_t pistons = 1;
  for (const Aperture& aperture : link.apertures) pistons += aperture.size();
  const std::size_t inPiece = (1 << 20) / pistons + 1;
  std::vector<Target> targets;
  for (std::size_t n = 0; n < count; ++n) {
    if (progress && n % inPiece == 0) progress(0);
    const std::size_t index = sorted.indices()[n];
    if (!finite(points[index])) continue;
    targets.push_back({points[index], index, link.reach(points[index])});
    if (link.isLossy() && std::isinf(targets.back().reach.gain))
      throw FieldError(
          "A point lies straight behind a piston, where the waves of a medium that attenuates "
          "would grow. Leave out points behind pistons.");
  }
  return targets;
}

/// A lower bound of the largest magnitude at any time, from some of the points; 0 if nothing moves.
double peakOf(const Link& link, const std::vector<Target>& all, const Progress& progress) {
  std::vector<Position> points;
  points.reserve(all.size());
  for (const Target& target : all) points.push_back(target.point);
  std::vector<Target> targets;
  for (const Position& p : somePoints(ListPoints(points.data(), points.size())))
    targets.push_back({p, targets.size(), link.reach(p)});
  const double most = mostExpected(link, extentOf(targets));
  if (most == 0) return 0;
  const auto silent = [&](double) {
    if (progress) progress(0);
  };
  double tolerance = most / 20;
  for (int pass = 0; pass < mostPasses; ++pass, tolerance /= 20) {
    SumOfFrequencies sum(link, targets, tolerance, progress);
    if (sum.count() == 0) continue;
    // What follows the excitation itself is smaller.
    const double step = pi / sum.mostOmega(), before = link.excitation.begin();
    std::size_t count = 0;
    for (const Target& target : targets)
      count = std::max(count, static_cast<std::size_t>((target.reach.last - target.reach.first +
                                                        link.excitation.end() - before) /
                                                       step));
    count += 2;
    std::vector<double> signals(targets.size() * count);
    sum.add(
        targets,
        [&](const Target& target) {
          return Axis{target.reach.first + before, step, count,
                      signals.data() + target.index * count};
        },
        silent);
    double peak = 0;
    for (const double p : signals) peak = std::max(peak, std::fabs(p));
    if (peak > 4 * sum.bound()) return peak - sum.bound();
    if (!(sum.bound() <= tolerance)) break;
  }
  refuseTolerance(infinity);
}

[[noreturn]] void refuse(const SumOfFrequencies& sum, double peak) {
  if (sum.neglected() > 1.001 * sum.mostNeglected())
    throw FieldError(
        "In this medium waves last too long for the tolerance. Give a larger tolerance, or a "
        "medium or points for which the attenuation is less.");
  const double kept = 1.1 * sum.bound() / peak;
  refuseTolerance(kept);
}

/// Writes the signals of all targets, for an absolute tolerance of tolerance·peak.
void write(const Link& link, const std::vector<Target>& targets, const TimeAxis& times,
           double tolerance, double peak, const Progress& progress, double* signals,
           PulseReport* report) {
  int exponent = 0;
  for (const Aperture& aperture : link.apertures) exponent += aperture.exponent();
  SumOfFrequencies sum(link, targets, tolerance * peak, progress);
  sum.add(
      targets,
      [&](const Target& target) {
        return Axis{times.start, 1 / times.rate, times.count, signals + target.index * times.count};
      },
      progress);
  if (!(sum.bound() <= tolerance * peak)) refuse(sum, peak);
  for (const Target& target : targets)
    for (std::size_t m = 0; m < times.count && exponent != 0; ++m) {
      double& p = signals[target.index * times.count + m];
      p = std::ldexp(p, exponent);
    }
  if (report) *report = {std::ldexp(sum.bound(), exponent), sum.nodes(), sum.count()};
}

std::optional<Link> linkOf(const std::vector<std::vector<DelayedPiston>>& apertures,
                           const Medium& medium, const ExcitationSpline& excitation) {
  Link link{{}, medium, excitation};
  for (const std::vector<DelayedPiston>& pistons : apertures) {
    link.apertures.emplace_back(pistons);
    if (link.apertures.back().size() == 0) return std::nullopt;
  }
  return link;
}

}  // namespace

std::vector<double> pulseByFrequency(const std::vector<std::vector<DelayedPiston>>& apertures,
                                     const Medium& medium, const ExcitationSpline& excitation,
                                     const Position* points, std::size_t count,
                                     const TimeAxis& times, const PulseOptions& options,
                                     PulseReport* report) {
  if (report) *report = {};
  if (times.count > 0 && count > std::vector<double>().max_size() / times.count)
    throw std::length_error("signals");
  std::vector<double> signals(count * times.count);
  for (std::size_t n = 0; n < count; ++n)
    if (!finite(points[n]))
      std::fill_n(signals.begin() + static_cast<std::ptrdiff_t>(n * times.count), times.count,
                  std::numeric_limits<double>::quiet_NaN());
  const std::optional<Link> link = linkOf(apertures, medium, excitation);
  if (signals.empty() || !link) return signals;
  const std::vector<Target> targets = targetsAmong(*link, points, count, options.progress);
  if (targets.empty()) return signals;
  const double peak = peakOf(*link, targets, options.progress);
  if (peak > 0)
    write(*link, targets, times, options.tolerance, peak, options.progress, signals.data(), report);
  return signals;
}

TimeAxis timesOfWaves(const std::vector<std::vector<DelayedPiston>>& apertures,
                      const Medium& medium, const ExcitationSpline& excitation,
                      const Position* points, std::size_t count, double rate) {
  check(TimeAxis{0, rate, 0});
  const std::optional<Link> link = linkOf(apertures, medium, excitation);
  double first = infinity, last = -infinity;
  std::mutex mutex;
  parallel::spread(link ? count : 0, 64, [&](std::uint64_t from, std::uint64_t to) {
    double firstOfSome = infinity, lastOfSome = -infinity;
    for (std::uint64_t n = from; n < to; ++n) {
      if (!finite(points[n])) continue;
      const Reach reach = link->reach(points[n]);
      firstOfSome = std::min(firstOfSome, reach.first);
      lastOfSome = std::max(lastOfSome, reach.last);
    }
    const std::lock_guard lock(mutex);
    first = std::min(first, firstOfSome);
    last = std::max(last, lastOfSome);
  });
  if (!(first <= last)) return {0, rate, 0};
  const double begin = std::floor((first + excitation.begin()) * rate),
               end = std::ceil((last + excitation.end()) * rate);
  if (!(std::fabs(begin) < 0x1p53) || !(std::fabs(end) < 0x1p53))
    throw FieldError("There are more times than an array can hold. Choose a lower rate.");
  return {begin / rate, rate, static_cast<std::size_t>(end - begin) + 1};
}

}  // namespace pistonfield
