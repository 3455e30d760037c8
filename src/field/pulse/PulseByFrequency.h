#pragma once

#include <cstddef>
#include <vector>

#include "field/pulse.h"
#include "field/pulse/ExcitationSpline.h"

namespace pistonfield {

/// The signals of Pulse::at, as a sum over frequencies; for two apertures, those of Echo::at. The
/// arguments have been checked, and the options are those of a guarded call.
///
/// Each signal is evaluated over the time in which waves pass its point, with the tails that
/// attenuation adds, and is 0 at other times. As many frequencies are evaluated as this time and
/// the tolerance need, which is relative to a peak that is estimated first.
std::vector<double> pulseByFrequency(const std::vector<std::vector<DelayedPiston>>& apertures,
                                     const Medium& medium, const ExcitationSpline& excitation,
                                     const Position* points, std::size_t count,
                                     const TimeAxis& times, const PulseOptions& options,
                                     PulseReport* report);

/// The time axis of Pulse::times and Echo::times.
TimeAxis timesOfWaves(const std::vector<std::vector<DelayedPiston>>& apertures,
                      const Medium& medium, const ExcitationSpline& excitation,
                      const Position* points, std::size_t count, double rate);

}  // namespace pistonfield
