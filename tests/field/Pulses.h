#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include "field/Guarded.h"
#include "field/pulse.h"
#include "field/pulse/PulseByFrequency.h"

// What tests of pulses share.

/// Some cycles of a sine from the time 0 on, under a window whose spectrum falls with the seventh
/// power of the frequency, so that sums need not go far beyond it.
inline pistonfield::Excitation burst(double frequency, double cycles, double rate) {
  constexpr double pi = 3.14159265358979323846;
  pistonfield::Excitation excitation;
  excitation.rate = rate;
  for (int n = 0; n * frequency < cycles * rate; ++n) {
    const double t = n / rate;
    const double root = std::sin(pi * t * frequency / cycles), window = std::pow(root, 6);
    excitation.samples.push_back(std::sin(2 * pi * frequency * t) * window);
  }
  return excitation;
}

inline pistonfield::DelayedPiston delayedBy(double delay,
                                            const pistonfield::Field::Piston& piston) {
  return {piston, delay};
}

inline pistonfield::PulseOptions pulseTo(double tolerance) {
  pistonfield::PulseOptions options;
  options.tolerance = tolerance;
  return options;
}

/// The pressure of pistons by frequencies.
inline std::vector<double> byFrequency(const std::vector<pistonfield::DelayedPiston>& pistons,
                                       const pistonfield::Medium& medium,
                                       const pistonfield::Excitation& excitation,
                                       const std::vector<pistonfield::Position>& points,
                                       const pistonfield::TimeAxis& times,
                                       const pistonfield::PulseOptions& options = {},
                                       pistonfield::PulseReport* report = nullptr) {
  return pistonfield::guarded(options, [&](const pistonfield::PulseOptions& watched) {
    return pistonfield::pulseByFrequency({pistons}, medium,
                                         pistonfield::ExcitationSpline(excitation), points.data(),
                                         points.size(), times, watched, report);
  });
}

/// The time axis of the waves, with a margin on both sides.
inline pistonfield::TimeAxis timesOf(
    const std::vector<std::vector<pistonfield::DelayedPiston>>& apertures,
    const pistonfield::Medium& medium, const pistonfield::Excitation& excitation,
    const std::vector<pistonfield::Position>& points, double rate, double margin = 0) {
  pistonfield::TimeAxis times =
      pistonfield::timesOfWaves(apertures, medium, pistonfield::ExcitationSpline(excitation),
                                points.data(), points.size(), rate);
  times.start -= margin;
  times.count += static_cast<std::size_t>(2 * margin * rate);
  return times;
}

inline double largestOf(const std::vector<double>& signal) {
  double largest = 0;
  for (const double p : signal) largest = std::max(largest, std::fabs(p));
  return largest;
}

/// The largest difference; infinite if one is not a number.
inline double differenceOf(const std::vector<double>& p, const std::vector<double>& q) {
  double largest = p.size() == q.size() ? 0 : INFINITY;
  for (std::size_t n = 0; n < std::min(p.size(), q.size()); ++n) {
    const double difference = std::fabs(p[n] - q[n]);
    if (!(difference <= largest)) largest = std::isnan(difference) ? INFINITY : difference;
  }
  return largest;
}
