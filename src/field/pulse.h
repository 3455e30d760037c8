#pragma once

#include <complex>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "field.h"
#include "medium.h"

// The pressure of pistons that move in a pulse, against time:
//
//     #include <pistonfield/arrays.h>
//     #include <pistonfield/pulse.h>
//
//     using namespace pistonfield;
//     std::vector<DelayedPiston> array = delayed(linearArray(128, 0.3e-3, 0.27e-3, 5e-3));
//     array = focused(array, {0, 0, 40e-3}, 1540);
//     const Pulse pulse(array, Medium{1540}, toneBurst(5e6, 2, 100e6));
//     const std::vector<Position> points = {{0, 0, 40e-3}};
//     const TimeAxis times = pulse.times(points, 100e6);
//     const std::vector<double> p = pulse.at(points, times);    // times.count numbers a point
//
// Lengths are in metres or another unit, and times in seconds or another; the speed of sound is in
// units of length per unit of time. If the medium attenuates, units are metres and seconds.
//
// The pressure is without the factor ρc: 1 is the pressure of a plane wave with the velocity 1. It
// is the Rayleigh integral against time,
//
//     p(r, t) = Σ weight·1/(2πc) ∬ v'(t − delay − R/c)/R dS
//
// over the face of each piston, in front of it, for the velocity v(t) of the excitation. In a
// medium that attenuates, it is the sum of its frequencies, each of which has its complex wave
// number: with V(ω) = ∫ v(t)·exp(−iωt) dt,
//
//     p(r, t) = 1/2π ∫ V(ω)·i·P(r, ω)·exp(iωt) dω
//
// for the pressure P that Field gives for the wave number medium.waveNumber(ω) and the weights
// weight·exp(−iω·delay).
//
// Any number of threads may use one object, or several, at once. Nothing is printed, and nothing
// outside of the arguments is read or written.

namespace pistonfield {

/// A velocity v against time, from its samples: the cubic spline
///
///     v(t) = Σ c_n·B((t − start)·rate − n)
///
/// that has these values at the samples' times. B is the cubic B-spline, which is 0 beyond ±2; so
/// v begins two steps before the first sample and ends two after the last, and samples should begin
/// and end near 0.
struct Excitation {
  std::vector<double> samples;  ///< at least one, of at most 1e100 in magnitude
  double rate = 0;              ///< samples per unit of time, above 0
  double start = 0;             ///< the time of the first sample
};

/// A sine of so many cycles under a window w, for "hann" sin²(π·t·frequency/cycles):
///
///     v(t) = w(t)·sin(2π·frequency·t),  0 ≤ t ≤ cycles/frequency
///
/// @param frequency  f, above 0
/// @param cycles     above 0, at most 1e4; 2.5 are two and a half
/// @param rate       of the samples, from 8 to 1e4 times the frequency
/// @param window     of apodization (arrays.h), with its default parameter: "hann", "rectangular",
///                   "hamming", "tukey" or "gauss"
Excitation toneBurst(double frequency, double cycles, double rate,
                     const std::string& window = "hann");

/// A cosine under a Gaussian whose spectrum has dropped by 6 dB at f·(1 ± bandwidth/2):
///
///     v(t) = cos(2πft)·exp(−(πft·bandwidth)²/(4·ln 2)),  −T ≤ t ≤ T
///
/// At T the Gaussian has dropped by 100 dB; the middle of the pulse is at the time 0. Beyond a
/// bandwidth of 1, negative frequencies reach into the band, and the lower edge drops less: by 4 dB
/// at 1.5.
///
/// @param frequency  f, above 0
/// @param bandwidth  from 0.01 to 2, of f
/// @param rate       of the samples, from 8 to 1e4 times the frequency
Excitation gaussPulse(double frequency, double bandwidth, double rate);

/// A piston that begins to move later than the excitation, by its delay.
struct DelayedPiston {
  Field::Piston piston;  ///< its weight is real
  double delay = 0;
};

/// The pistons with the delay 0.
std::vector<DelayedPiston> delayed(const std::vector<Field::Piston>& pistons);

/// The pistons with delays increased by those that send a plane wave in a direction:
/// c·d/(|d|·speed) for the centre c and the direction d.
///
/// @param direction  finite and not 0
/// @param speed      above 0
std::vector<DelayedPiston> steered(std::vector<DelayedPiston> pistons, const Position& direction,
                                   double speed);

/// The pistons with delays increased by those with which the waves from all centres c arrive at the
/// focus f at one time: (|f| − |f − c|)/speed. A piston at the origin keeps its delay. Subtract the
/// least delay if none may be negative.
///
/// @param focus  finite
/// @param speed  above 0
std::vector<DelayedPiston> focused(std::vector<DelayedPiston> pistons, const Position& focus,
                                   double speed);

/// `count` times start, start + 1/rate, …
struct TimeAxis {
  double start = 0;
  double rate = 0;
  std::size_t count = 0;
};

struct PulseOptions {
  /// The largest error of a pressure, relative to the largest magnitude of all pressures, at any
  /// time, at the points of the call: from 1e-6 to below 1.
  double tolerance = 1e-4;

  /// As FieldOptions::progress.
  std::function<void(double fraction)> progress;
};

/// What a call used.
struct PulseReport {
  double bound = 0;             ///< an upper bound of a pressure's absolute error
  double nodes = 0;             ///< how many values of integrands
  std::size_t frequencies = 0;  ///< how many were evaluated; 0 if the pulse was summed in time
};

/// The pressure of one or more pistons against time.
class Pulse {
 public:
  /// Throws a FieldError if an argument is invalid. For the wavelength at the excitation's centre
  /// of energy, sides, centres and points must be as for Field; delays and the start of the
  /// excitation are at most 1e12 of its periods. In a medium that attenuates, an excitation has at
  /// most 100,000 samples.
  Pulse(std::vector<DelayedPiston> pistons, const Medium& medium, Excitation excitation);

  /// Returns the time axis that has the first wave and the last wave at any of the points: from the
  /// last multiple of 1/rate before the first wave to the first after the last. Waves are taken to
  /// travel at medium.speed: in a medium that attenuates, tails before and after them, and what
  /// dispersion makes earlier or later, are outside of the axis.
  TimeAxis times(const Position* points, std::size_t count, double rate) const;
  TimeAxis times(const std::vector<Position>& points, double rate) const;

  /// Returns the pressures: that of point n at the time m is number m + times.count·n. A point that
  /// is not finite gets NaN. The tolerance is relative to the largest pressure at the points at any
  /// time, also at one that the axis does not have. Throws a FieldError if an option is invalid, if
  /// a point is too far, if the tolerance cannot be kept, if there is too little memory, or, in a
  /// medium that attenuates, if a point is straight behind a piston.
  std::vector<double> at(const Position* points, std::size_t count, const TimeAxis& times,
                         const PulseOptions& options = {}, PulseReport* report = nullptr) const;
  std::vector<double> at(const std::vector<Position>& points, const TimeAxis& times,
                         const PulseOptions& options = {}, PulseReport* report = nullptr) const;

 private:
  std::vector<DelayedPiston> pistons_;
  Medium medium_;
  Excitation excitation_;
  double wavelengths_ = 0;  // per unit of length, at the excitation's centre of energy
};

}  // namespace pistonfield
