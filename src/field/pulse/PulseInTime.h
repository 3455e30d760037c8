#pragma once

#include <cstddef>
#include <vector>

#include "field/pulse.h"

namespace pistonfield {

/// The pulses of pistons in a medium without attenuation, as Pulse::at returns them: waves of nodes
/// on the edges are added in time. `mostCoordinate` is that of a point.
std::vector<double> pulsesInTime(std::vector<DelayedPiston> pistons, double speed,
                                 const Excitation& excitation, double mostCoordinate,
                                 const Position* points, std::size_t count, const TimeAxis& times,
                                 const PulseOptions& options, PulseReport& report);

}  // namespace pistonfield
