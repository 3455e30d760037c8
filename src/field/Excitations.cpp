#include <algorithm>
#include <cmath>
#include <utility>

#include "field/Vectors.h"
#include "field/Windows.h"
#include "field/pulse.h"

namespace pistonfield {
namespace {

constexpr double pi = 3.14159265358979323846, ln2 = 0.693147180559945309;

void checkPositive(const char* argument, double value) {
  if (!(value > 0) || !std::isfinite(value))
    throw FieldError(std::string(argument) + " must be positive and finite.");
}

void checkRate(double frequency, double rate) {
  checkPositive("frequency", frequency);
  checkPositive("rate", rate);
  if (!(rate >= 8 * frequency && rate <= 1e4 * frequency))
    throw FieldError("rate must be at least 8 times the frequency, at most 1e4 times.");
}

}  // namespace

Excitation toneBurst(double frequency, double cycles, double rate, const std::string& window) {
  checkRate(frequency, rate);
  if (!(cycles > 0 && cycles <= 1e4)) throw FieldError("cycles must be above 0, at most 1e4.");
  const Window shape(window, std::nullopt, "window");
  const double duration = cycles / frequency;
  const auto last = static_cast<std::size_t>(std::floor(duration * rate * (1 + 1e-12)));
  Excitation burst;
  burst.rate = rate;
  for (std::size_t n = 0; n <= last; ++n) {
    const double t = static_cast<double>(n) / rate;
    burst.samples.push_back(std::sin(2 * pi * frequency * t) * shape.at(2 * t / duration - 1));
  }
  return burst;
}

Excitation gaussPulse(double frequency, double bandwidth, double rate) {
  checkRate(frequency, rate);
  if (!(bandwidth >= 0.01 && bandwidth <= 2)) throw FieldError("bandwidth must be from 0.01 to 2.");
  // exp(−(width·t)²), of which 100 dB are 5·ln 10.
  const double width = pi * frequency * bandwidth / (2 * std::sqrt(ln2)),
               end = std::sqrt(5 * 2.302585092994046) / width;
  const double last = std::ceil(end * rate);
  Excitation pulse;
  pulse.rate = rate;
  pulse.start = -last / rate;
  const auto count = static_cast<std::size_t>(2 * last) + 1;
  for (std::size_t n = 0; n < count; ++n) {
    const double t = (static_cast<double>(n) - last) / rate;
    pulse.samples.push_back(std::cos(2 * pi * frequency * t) *
                            exponential(-(width * t) * (width * t)));
  }
  return pulse;
}

std::vector<DelayedPiston> delayed(const std::vector<Field::Piston>& pistons) {
  std::vector<DelayedPiston> result;
  result.reserve(pistons.size());
  for (const Field::Piston& piston : pistons) result.push_back({piston, 0});
  return result;
}

std::vector<DelayedPiston> steered(std::vector<DelayedPiston> pistons, const Position& direction,
                                   double speed) {
  checkPositive("speed", speed);
  const double largest =
      std::max({std::fabs(direction[0]), std::fabs(direction[1]), std::fabs(direction[2])});
  if (!finite(direction) || !(largest > 0))
    throw FieldError("direction must be three finite real numbers, not all 0.");
  const Position scaled = {direction[0] / largest, direction[1] / largest, direction[2] / largest};
  for (DelayedPiston& delayed : pistons)
    delayed.delay += dot(delayed.piston.centre, scaled) / length(scaled) / speed;
  return pistons;
}

std::vector<DelayedPiston> focused(std::vector<DelayedPiston> pistons, const Position& focus,
                                   double speed) {
  checkPositive("speed", speed);
  if (!finite(focus)) throw FieldError("focus must be three finite real numbers.");
  for (DelayedPiston& delayed : pistons)
    delayed.delay -= longerPath(delayed.piston.centre, focus) / speed;
  return pistons;
}

}  // namespace pistonfield
