#include "field/echo.h"

#include <utility>

#include "field/Checks.h"
#include "field/Guarded.h"
#include "field/pulse/PulseByFrequency.h"
#include "field/pulse/PulseChecks.h"
#include "field/pulse/PulseSpectrum.h"

namespace pistonfield {
namespace {

constexpr double pi = 3.14159265358979323846;

}  // namespace

Echo::Echo(std::vector<DelayedPiston> transmit, std::vector<DelayedPiston> receive,
           const Medium& medium, Excitation excitation)
    : apertures_{std::move(transmit), std::move(receive)},
      medium_(medium),
      excitation_(std::move(excitation)) {
  frequency_ = PulseSpectrum(ExcitationSpline(excitation_)).centre() / (2 * pi);
  for (const std::vector<DelayedPiston>& pistons : apertures_) {
    for (std::size_t n = 0; n < pistons.size(); ++n) check(pistons[n], n);
    checkPeriods(pistons, excitation_, frequency_);
  }
  check(medium_);
}

TimeAxis Echo::times(const Position* scatterers, std::size_t count, double rate) const {
  return timesOfWaves(apertures_, medium_, ExcitationSpline(excitation_), scatterers, count, rate);
}

TimeAxis Echo::times(const std::vector<Position>& scatterers, double rate) const {
  return times(scatterers.data(), scatterers.size(), rate);
}

std::vector<double> Echo::at(const Position* scatterers, std::size_t count, const TimeAxis& times,
                             const PulseOptions& options, PulseReport* report) const {
  check(times);
  check(options);
  checkPeriods(times, frequency_);
  return guarded(options, [&](const PulseOptions& watched) {
    return pulseByFrequency(apertures_, medium_, ExcitationSpline(excitation_), scatterers, count,
                            times, watched, report);
  });
}

std::vector<double> Echo::at(const std::vector<Position>& scatterers, const TimeAxis& times,
                             const PulseOptions& options, PulseReport* report) const {
  return at(scatterers.data(), scatterers.size(), times, options, report);
}

}  // namespace pistonfield
