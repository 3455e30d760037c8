#include "field/pulse/PulseChecks.h"

#include <cmath>
#include <string>

#include "field/Checks.h"

namespace pistonfield {

void check(const DelayedPiston& delayed, std::size_t index) {
  check(delayed.piston, index);
  const std::string name = "Piston " + std::to_string(index);
  if (delayed.piston.weight.imag() != 0)
    throw FieldError(name + ": its weight must be real. Delay it instead of turning its phase.");
  if (!std::isfinite(delayed.delay)) throw FieldError(name + ": its delay must be finite.");
}

void check(const TimeAxis& times) {
  if (!(times.rate > 0) || !std::isfinite(times.rate) || !std::isfinite(1 / times.rate))
    throw FieldError("The rate of the times must be positive and finite.");
  if (!std::isfinite(times.start)) throw FieldError("The start of the times must be finite.");
}

void check(const PulseOptions& options) {
  if (!(options.tolerance >= 1e-6 && options.tolerance < 1))
    throw FieldError("The tolerance of a pulse must be from 1e-6 to below 1.");
}

}  // namespace pistonfield
