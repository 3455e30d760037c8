#pragma once

#include <cstddef>
#include <vector>

#include "field/pulse.h"

// What the classes that compute pulses require. Each check throws a FieldError.

namespace pistonfield {

void check(const DelayedPiston& delayed, std::size_t index);
void check(const TimeAxis& times);
void check(const PulseOptions& options);

/// That double precision has the phases, for periods of the excitation's mean frequency.
void checkPeriods(const std::vector<DelayedPiston>& pistons, const Excitation& excitation,
                  double frequency);
void checkPeriods(const TimeAxis& times, double frequency);

}  // namespace pistonfield
