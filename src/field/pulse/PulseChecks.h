#pragma once

#include <cstddef>

#include "field/pulse.h"

// What the classes that compute pulses require. Each check throws a FieldError.

namespace pistonfield {

void check(const DelayedPiston& delayed, std::size_t index);
void check(const TimeAxis& times);
void check(const PulseOptions& options);

}  // namespace pistonfield
