#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "field/Checks.h"
#include "field/Evaluation.h"
#include "field/Guarded.h"
#include "field/Vectors.h"
#include "field/pulse.h"
#include "field/pulse/ExcitationSpline.h"
#include "field/pulse/PulseByFrequency.h"
#include "field/pulse/PulseChecks.h"
#include "field/pulse/PulseInTime.h"
#include "field/pulse/PulseSpectrum.h"

namespace pistonfield {
namespace {

constexpr double pi = 3.14159265358979323846;

}  // namespace

Pulse::Pulse(std::vector<DelayedPiston> pistons, const Medium& medium, Excitation excitation)
    : pistons_(std::move(pistons)), medium_(medium), excitation_(std::move(excitation)) {
  check(medium_);
  const ExcitationSpline spline(excitation_);
  const double frequency = PulseSpectrum(spline).centre() / (2 * pi);
  wavelengths_ = frequency / medium_.speed;
  if (wavelengths_ != 0 && !(wavelengths_ >= 1e-99 && wavelengths_ <= 1e99))
    throw FieldError("The wavelength must be from 1e-99 to 1e99. Give lengths in another unit.");
  for (std::size_t n = 0; n < pistons_.size(); ++n) {
    Field::Piston& piston = pistons_[n].piston;
    check(pistons_[n], n);
    piston.axes = orthonormal(piston.axes);
    if (wavelengths_ != 0) checkScale(piston, wavelengths_, n, "the speed of sound");
  }
  checkPeriods(pistons_, excitation_, frequency);
}

TimeAxis Pulse::times(const std::vector<Position>& points, double rate) const {
  return times(points.data(), points.size(), rate);
}

TimeAxis Pulse::times(const Position* points, std::size_t count, double rate) const {
  return timesOfWaves({pistons_}, medium_, ExcitationSpline(excitation_), points, count, rate);
}

std::vector<double> Pulse::at(const std::vector<Position>& points, const TimeAxis& times,
                              const PulseOptions& options, PulseReport* report) const {
  return at(points.data(), points.size(), times, options, report);
}

std::vector<double> Pulse::at(const Position* points, std::size_t count, const TimeAxis& times,
                              const PulseOptions& options, PulseReport* report) const {
  check(options);
  check(times);
  checkPeriods(times, wavelengths_ * medium_.speed);
  const ExcitationSpline spline(excitation_);
  if (!((spline.end() - spline.begin()) * times.rate <= 1e7))
    throw FieldError(
        "The rate of the times gives more than 1e7 samples of the excitation. Choose a lower "
        "rate.");
  if (times.count > 0 &&
      count > std::numeric_limits<std::ptrdiff_t>::max() / sizeof(double) / times.count)
    throw FieldError("There are more pressures than an array can hold. Compute fewer at once.");
  if (report) *report = {};
  if (count == 0 || times.count == 0) return {};
  return guarded(options, [&](const PulseOptions& watched) {
    // Times are rounded, too: by as much as those of such a coordinate.
    const double end = times.start + static_cast<double>(times.count) / times.rate;
    double mostCoordinate = std::max(std::fabs(times.start), std::fabs(end)) * medium_.speed / 5;
    const auto take = [&](const Position& p) {
      for (const double coordinate : p)
        mostCoordinate = std::max(mostCoordinate, std::fabs(coordinate));
    };
    for (std::size_t n = 0; n < count; ++n) {
      if (!finite(points[n])) continue;
      take(points[n]);
      for (const double coordinate : points[n])
        if (!(std::fabs(coordinate) * wavelengths_ <= mostWavelengths))
          throw FieldError(
              "A point is farther than 1e9 wavelengths from the origin. Give lengths and the speed "
              "of sound in one unit.");
    }
    for (const DelayedPiston& delayed : pistons_) take(delayed.piston.centre);
    if (medium_.attenuation > 0)
      return pulseByFrequency({pistons_}, medium_, ExcitationSpline(excitation_), points, count,
                              times, watched, report);
    PulseReport used;
    std::vector<double> pressures = pulsesInTime(
        pistons_, medium_.speed, excitation_, mostCoordinate, points, count, times, watched, used);
    if (report) *report = used;
    return pressures;
  });
}

}  // namespace pistonfield
