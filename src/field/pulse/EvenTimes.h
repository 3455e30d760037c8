#pragma once

#include <cstddef>

#include "field/pulse.h"

namespace pistonfield {

/// The axis through times that users list: one or more, finite, in equal steps upwards, within a
/// millionth of a step. One time is an axis of this rate. Throws a FieldError otherwise.
TimeAxis axisThrough(const double* times, std::size_t count, double rate);

}  // namespace pistonfield
