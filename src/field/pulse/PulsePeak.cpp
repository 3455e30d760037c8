#include "field/pulse/PulsePeak.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <mutex>

#include "field/Vectors.h"
#include "field/pulse/PulseSum.h"
#include "parallel/Spread.h"

namespace pistonfield {
namespace {

constexpr double pi = 3.14159265358979323846;

/// Of a group's points, evaluated together.
struct Group {
  double x[pulsePoints], y[pulsePoints], z[pulsePoints];
};

/// The last group repeats its last point.
std::vector<Group> groupsOf(const std::vector<Position>& points) {
  std::vector<Group> groups((points.size() + pulsePoints - 1) / pulsePoints);
  for (std::size_t n = 0; n < groups.size() * pulsePoints; ++n) {
    const Position& p = points[std::min(n, points.size() - 1)];
    Group& group = groups[n / pulsePoints];
    group.x[n % pulsePoints] = p[0];
    group.y[n % pulsePoints] = p[1];
    group.z[n % pulsePoints] = p[2];
  }
  return groups;
}

/// When the waves of a piston arrive at a group, at the earliest and at the latest.
struct Interval {
  double first, last;
};

std::vector<Interval> arrivalsAt(const Group& group, const std::vector<DelayedPiston>& pistons,
                                 double speed) {
  std::vector<Interval> arrivals;
  arrivals.reserve(pistons.size());
  for (const DelayedPiston& delayed : pistons) {
    double nearest = std::numeric_limits<double>::infinity(), farthest = 0;
    for (int n = 0; n < pulsePoints; ++n) {
      const Position apart =
          difference({group.x[n], group.y[n], group.z[n]}, delayed.piston.centre);
      const double distance = std::sqrt(dot(apart, apart));
      nearest = std::min(nearest, distance);
      farthest = std::max(farthest, distance);
    }
    const double extent = hypotenuse(delayed.piston.width, delayed.piston.height) / 2;
    arrivals.push_back({delayed.delay + std::max(nearest - extent, 0.0) / speed,
                        delayed.delay + (farthest + extent) / speed});
  }
  std::sort(arrivals.begin(), arrivals.end(),
            [](const Interval& one, const Interval& other) { return one.first < other.first; });
  return arrivals;
}

/// The largest magnitude at a group, in the first few blocks of time in which waves arrive.
double largestAt(const Group& group, const std::vector<Interval>& arrivals, const PulseSum& sum,
                 double begin, PulseSum::Scratch& scratch) {
  constexpr int mostBlocks = 8;
  constexpr double mostSamples = 1 << 16;
  const double rate = sum.sampleRate();
  const auto count = static_cast<std::size_t>(std::min(sum.pulseSamples() + 2048, mostSamples));
  double largest = 0, from = -std::numeric_limits<double>::infinity();
  std::size_t next = 0;
  for (int block = 0; block < mostBlocks; ++block) {
    while (next < arrivals.size() && arrivals[next].last <= from) ++next;
    if (next == arrivals.size()) break;
    const double start = std::floor((std::max(arrivals[next].first, from) + begin) * rate);
    sum.evaluate(group.x, group.y, group.z, static_cast<long long>(start), count, scratch,
                 [&](int, std::size_t, std::size_t samples, const double* values) {
                   for (std::size_t n = 0; n < samples; ++n)
                     largest = std::max(largest, std::fabs(values[n]));
                 });
    from = (start + static_cast<double>(count)) / rate - begin;
  }
  return largest;
}

}  // namespace

double peakOfPulses(const std::vector<DelayedPiston>& pistons, const ExcitationSpline& spline,
                    const PulseSpectrum& spectrum, double speed, double mostCoordinate,
                    const Points& points, const std::function<void(double)>& progress) {
  const std::vector<Position> some = somePoints(points);
  if (some.empty()) return 1;
  const std::vector<Group> groups = groupsOf(some);
  double mostExpected = 0;
  for (const DelayedPiston& delayed : pistons)
    mostExpected += 2 * std::fabs(delayed.piston.weight.real()) * spectrum.mass();
  constexpr int mostSteps = 11;  // rounding errors end them before
  double tolerance = mostExpected;
  for (int step = 0; step < mostSteps; ++step) {
    tolerance /= 20;
    const PulseSum sum(pistons, spline, spectrum, speed, mostCoordinate, tolerance,
                       8 * spectrum.centre() / (2 * pi));
    if (sum.excess() > 1) break;
    double peak = 0;
    bool isLost = false;
    std::mutex mutex;
    constexpr std::size_t together = 4;  // so that the caller may interrupt
    for (std::size_t first = 0; first < groups.size(); first += together) {
      progress(0);
      const std::size_t inPiece = std::min(together, groups.size() - first);
      parallel::spread(inPiece, 1, [&](std::uint64_t begin, std::uint64_t end) {
        PulseSum::Scratch scratch;
        double largest = 0;
        for (std::size_t n = first + begin; n < first + end; ++n)
          largest = std::max(largest, largestAt(groups[n], arrivalsAt(groups[n], pistons, speed),
                                                sum, spline.begin(), scratch));
        const std::lock_guard lock(mutex);
        peak = std::max(peak, largest);
        isLost |= scratch.isLost;
      });
    }
    if (isLost) break;
    if (peak > 4 * tolerance) return peak - tolerance;
  }
  return 0;
}

}  // namespace pistonfield
