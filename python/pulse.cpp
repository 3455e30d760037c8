#include <cstddef>
#include <utility>
#include <vector>

#include "Calls.h"
#include "field/echo.h"
#include "field/pulse.h"
#include "field/pulse/EvenTimes.h"

// The functions for pulses, in which pistons have delays.

namespace pistonfield {
namespace {

using DelayedPistons = std::vector<DelayedPiston>;

DelayedPistons delayedPistonsOf(const double* rows, const double* delays, std::size_t count) {
  DelayedPistons pistons = delayed(pistonsOf(rows, count));
  for (std::size_t m = 0; m < count; ++m) pistons[m].delay = delays[m];
  return pistons;
}

Medium mediumOf(const double* numbers) {
  Medium medium;
  medium.speed = numbers[0];
  medium.attenuation = numbers[1];
  medium.exponent = numbers[2];
  medium.reference = numbers[3];
  return medium;
}

std::vector<double> delaysOf(const DelayedPistons& pistons) {
  std::vector<double> delays;
  delays.reserve(pistons.size());
  for (const DelayedPiston& piston : pistons) delays.push_back(piston.delay);
  return delays;
}

/// The start, the rate and the samples.
std::vector<double> numbersOf(const Excitation& excitation) {
  std::vector<double> numbers{excitation.start, excitation.rate};
  numbers.insert(numbers.end(), excitation.samples.begin(), excitation.samples.end());
  return numbers;
}

/// Where and when something is computed against time. `times` may be nullptr.
struct Request {
  const double* points;
  std::size_t pointCount;
  double rate;
  const double* times;
  std::size_t timeCount;
  double tolerance;
};

/// Sets the result of the source that make() returns.
template <class Make>
bool runAgainstTime(Work& work, const Request& request, Make make) {
  return work.run(false, [=, &work] {
    const auto source = make();
    const Position* const points = positionsOf(request.points);
    const TimeAxis times = request.times
                               ? axisThrough(request.times, request.timeCount, request.rate)
                               : source.times(points, request.pointCount, request.rate);
    PulseOptions options;
    options.tolerance = request.tolerance;
    options.progress = work.progress();
    PulseReport report;
    auto values = source.at(points, request.pointCount, times, options, &report);
    work.setResult(std::move(values), times, report);
  });
}

}  // namespace

extern "C" {

/// As pistonfield_at.
PISTONFIELD_EXPORT bool pistonfield_pulse(Work* work, const double* pistons,
                                          std::size_t pistonCount, const double* delays,
                                          const double* medium, const double* samples,
                                          std::size_t sampleCount, double sampleRate, double start,
                                          const double* points, std::size_t pointCount, double rate,
                                          const double* times, std::size_t timeCount,
                                          double tolerance) {
  return runAgainstTime(*work, {points, pointCount, rate, times, timeCount, tolerance}, [=] {
    return Pulse(delayedPistonsOf(pistons, delays, pistonCount), mediumOf(medium),
                 {{samples, samples + sampleCount}, sampleRate, start});
  });
}

/// As pistonfield_at.
PISTONFIELD_EXPORT bool pistonfield_echo(Work* work, const double* transmit,
                                         std::size_t transmitCount, const double* transmitDelays,
                                         const double* receive, std::size_t receiveCount,
                                         const double* receiveDelays, const double* medium,
                                         const double* samples, std::size_t sampleCount,
                                         double sampleRate, double start, const double* points,
                                         std::size_t pointCount, double rate, const double* times,
                                         std::size_t timeCount, double tolerance) {
  return runAgainstTime(*work, {points, pointCount, rate, times, timeCount, tolerance}, [=] {
    return Echo(delayedPistonsOf(transmit, transmitDelays, transmitCount),
                delayedPistonsOf(receive, receiveDelays, receiveCount), mediumOf(medium),
                {{samples, samples + sampleCount}, sampleRate, start});
  });
}

/// Sets the start, the rate and the samples.
PISTONFIELD_EXPORT void pistonfield_tone_burst(Work* work, double frequency, double cycles,
                                               double rate, const char* window) {
  runShort(*work, [=] { return numbersOf(toneBurst(frequency, cycles, rate, window)); });
}

/// Sets the start, the rate and the samples.
PISTONFIELD_EXPORT void pistonfield_gauss_pulse(Work* work, double frequency, double bandwidth,
                                                double rate) {
  runShort(*work, [=] { return numbersOf(gaussPulse(frequency, bandwidth, rate)); });
}

PISTONFIELD_EXPORT void pistonfield_steer_delays(Work* work, const double* pistons,
                                                 std::size_t count, const double* direction,
                                                 double speed) {
  runShort(*work, [=] {
    return delaysOf(steered(delayed(pistonsOf(pistons, count)), *positionsOf(direction), speed));
  });
}

PISTONFIELD_EXPORT void pistonfield_focus_delays(Work* work, const double* pistons,
                                                 std::size_t count, const double* focus,
                                                 double speed) {
  runShort(*work, [=] {
    return delaysOf(focused(delayed(pistonsOf(pistons, count)), *positionsOf(focus), speed));
  });
}

}  // extern "C"
}  // namespace pistonfield
