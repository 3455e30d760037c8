#pragma once

#include <functional>
#include <vector>

#include "field/Points.h"
#include "field/pulse/PulseSpectrum.h"

namespace pistonfield {

/// A lower bound of the largest magnitude of the pulses at the points at any time, from some points
/// and times. 0 if it is nothing but rounding errors; 1 if no point is finite. Arguments are those
/// of PulseSum.
double peakOfPulses(const std::vector<DelayedPiston>& pistons, const ExcitationSpline& spline,
                    const PulseSpectrum& spectrum, double speed, double mostCoordinate,
                    const Points& points, const std::function<void(double)>& progress);

}  // namespace pistonfield
