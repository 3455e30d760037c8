#include "field/pulse/PulseChecks.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "field/Checks.h"

namespace pistonfield {
namespace {

constexpr double mostPeriods = 1e12;

}  // namespace

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

void checkPeriods(const std::vector<DelayedPiston>& pistons, const Excitation& excitation,
                  double frequency) {
  if (!(std::fabs(excitation.start) * frequency <= mostPeriods))
    throw FieldError("The start of the excitation must be at most 1e12 periods.");
  for (std::size_t n = 0; n < pistons.size(); ++n)
    if (!(std::fabs(pistons[n].delay) * frequency <= mostPeriods))
      throw FieldError("Piston " + std::to_string(n) + ": its delay must be at most 1e12 periods.");
}

void checkPeriods(const TimeAxis& times, double frequency) {
  const double end = times.start + static_cast<double>(times.count) / times.rate,
               most = std::max(std::fabs(times.start), std::fabs(end));
  if (!(most * frequency <= mostPeriods && most * times.rate < 0x1p52))
    throw FieldError(
        "The times are too far from 0: double precision cannot tell them apart. Give lengths, the "
        "speed of sound and times in one unit each.");
}

}  // namespace pistonfield
