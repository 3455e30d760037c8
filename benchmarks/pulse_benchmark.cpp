#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <vector>

#include <pistonfield/arrays.h>
#include <pistonfield/field.h>
#include <pistonfield/pulse.h>

#include "benchmarks/InTurns.h"

// Pulses, compared with a sum over frequencies of Field's pressures. pulse_loop.m is the same sum
// in Octave, for pistonfield.

namespace {

using namespace pistonfield;

constexpr double pi = 3.14159265358979323846;

/// Two cycles from one piston at 10^4 points, 256 samples of a time in which all waves pass. The
/// wavelength and the speed of sound are 1.
struct OnePiston {
  std::vector<DelayedPiston> pistons = {{[] {
                                           Field::Piston piston;
                                           piston.width = 5;
                                           piston.height = 7.5;
                                           return piston;
                                         }(),
                                         0}};
  Excitation excitation = toneBurst(1, 2, 16);
  TimeAxis times{1.8, 256 / duration, 256};
  std::vector<Position> points;
  static constexpr double duration = 12;

  OnePiston() {
    for (int j = 0; j < 100; ++j)
      for (int i = 0; i < 100; ++i) points.push_back({-5 + 10 * i / 99.0, 0.7, 2 + 5 * j / 99.0});
  }

  std::vector<double> inTime(double tolerance) const {
    PulseOptions options;
    options.tolerance = tolerance;
    return Pulse(pistons, Medium{1}, excitation).at(points, times, options);
  }

  /// The spectrum of the samples, and for each frequency Field's pressures.
  std::vector<double> byFrequency(int frequencies) const {
    std::vector<double> p(points.size() * times.count);
    FieldOptions options;
    options.tolerance = 3e-3;
    std::vector<std::complex<double>> turns(times.count);
    for (int n = 1; n <= frequencies; ++n) {
      const double omega = 2 * pi * n / duration;
      std::complex<double> V = 0;
      for (std::size_t m = 0; m < excitation.samples.size(); ++m)
        V += excitation.samples[m] / excitation.rate *
             std::polar(1.0, -omega * static_cast<double>(m) / excitation.rate);
      for (std::size_t m = 0; m < times.count; ++m)
        turns[m] = 2 / duration * V * std::complex<double>(0, 1) *
                   std::polar(1.0, omega * (times.start + static_cast<double>(m) / times.rate));
      const std::vector<std::complex<double>> P =
          Field({pistons[0].piston}, omega).at(points, options);
      for (std::size_t point = 0; point < points.size(); ++point) {
        double* const row = &p[point * times.count];
        const double re = P[point].real(), im = P[point].imag();
        for (std::size_t m = 0; m < times.count; ++m)
          row[m] += re * turns[m].real() - im * turns[m].imag();
      }
    }
    return p;
  }
};

double error(const std::vector<double>& p, const std::vector<double>& exact) {
  double most = 0, peak = 0;
  for (std::size_t n = 0; n < p.size(); ++n) {
    most = std::max(most, std::fabs(p[n] - exact[n]));
    peak = std::max(peak, std::fabs(exact[n]));
  }
  return most / peak;
}

/// How many times as fast as the sum over 24 frequencies, and the errors of both relative to the
/// peak.
void toFrequencies(benchmark::State& state) {
  const OnePiston scene;
  constexpr double tolerance = 9e-3;
  constexpr int frequencies = 24;
  const std::vector<double> seconds =
      turns::seconds(state, {{[] {}, [&] { scene.inTime(tolerance); }},
                             {[] {}, [&] { scene.byFrequency(frequencies); }}});
  const std::vector<double> exact = scene.inTime(1e-5);
  state.counters["ms"] = 1e3 * seconds[0];
  state.counters["loop_ms"] = 1e3 * seconds[1];
  state.counters["ratio"] = seconds[1] / seconds[0];
  state.counters["error"] = error(scene.inTime(tolerance), exact);
  state.counters["loop_error"] = error(scene.byFrequency(frequencies), exact);
}

/// 128 focused elements at 10^4 points. The argument is −log10 of the tolerance.
void ofArray(benchmark::State& state) {
  const std::vector<DelayedPiston> array =
      focused(delayed(linearArray(128, 1, 0.9, 16)), {0, 0, 130}, 1);
  std::vector<Position> points;
  for (int j = 0; j < 100; ++j)
    for (int i = 0; i < 100; ++i) points.push_back({-40 + 80 * i / 99.0, 0, 20 + 2.0 * j});
  const Pulse pulse(array, Medium{1}, toneBurst(1, 2, 16));
  const TimeAxis times = pulse.times(points, 4);
  PulseOptions options;
  options.tolerance = std::pow(10, -static_cast<double>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(pulse.at(points, times, options));
  state.counters["us_per_point"] = benchmark::Counter(
      static_cast<double>(points.size()) * 1e-6,
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

BENCHMARK(toFrequencies)->Apply(turns::compare);
BENCHMARK(ofArray)->Unit(benchmark::kMillisecond)->UseRealTime()->Arg(2)->Arg(4);

}  // namespace
