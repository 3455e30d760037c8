#pragma once

#include <complex>
#include <cstddef>
#include <functional>
#include <vector>

#include "field.h"

// The pressure of rectangular pistons at many wave numbers, in a fraction of the time that they
// take one by one:
//
//     #include <pistonfield/spectrum.h>
//
//     const double pi = 3.14159265358979323846, speed = 1540;            // m/s
//     const pistonfield::WaveNumbers k = {2 * pi * 2e6 / speed, 2 * pi * 20e3 / speed, 256};
//     const std::vector<std::complex<double>> p =
//         pistonfield::spectrum({{5e-3, 7.5e-3}}, k, {{0, 0, 20e-3}, {1e-3, 0, 20e-3}});
//     p[m + k.count * n];                                // of point n, at 2 MHz + m·20 kHz
//
// Units, scale and time factor are those of field.h: the pressure of point n at k_m is that of
// Field(pistons, k_m),
//
//     p = Σ w·k_m/2π ∬ exp(−ik_m·R)/R dS,   k_m = first + m·step
//
// over the face of each piston with the weight w, in front of it. There is no loss.
//
// The more wave numbers, the less time each takes: they are interpolated where the paths from a
// piston to a point, which differ by up to its diagonal, make the pressure change little from one
// to the next. All of it is computed on the cores of the CPU, also in a build for CUDA. Any number
// of threads may call this at once. Nothing is printed, and nothing outside of the arguments is
// read or written.

namespace pistonfield {

/// The real wave numbers k_m = first + m·step, 0 ≤ m < count, in 1 per unit of length.
struct WaveNumbers {
  double first = 0;
  double step = 0;  ///< may be negative
  std::size_t count = 1;
};

struct SpectrumOptions {
  /// The largest error of a pressure, relative to the largest magnitude among all points and wave
  /// numbers of the call: from 1e-12 to below 1.
  double tolerance = 1e-4;

  /// As FieldOptions::progress.
  std::function<void(double fraction)> progress;
};

/// Returns the pressure of each point at each wave number: that of point n at k_m is number
/// m + waveNumbers.count·n. A point that is not finite gets NaN.
///
/// @param pistons      as for Field; the weights are the same for all wave numbers. Sides must be 0
///                     or from 1e-9 to 1e6 of the wavelength 2π/k, and centres within 1e9
///                     wavelengths of the origin, for the k of the largest magnitude
/// @param waveNumbers  finite; the first and the last must be 0, or from 1e-99 to 1e99 in magnitude
/// @param report       what the call used, unless it is a null pointer. The bound is that of each
///                     pressure's absolute error
///
/// Throws a FieldError if an argument is invalid, if a point is farther than 1e9 wavelengths from
/// the origin, if the tolerance cannot be kept, or if there is too little memory.
std::vector<std::complex<double>> spectrum(const std::vector<Field::Piston>& pistons,
                                           const WaveNumbers& waveNumbers,
                                           const std::vector<Position>& points,
                                           const SpectrumOptions& options = {},
                                           FieldReport* report = nullptr);

/// The same for `count` points in an array, of which no copy is made.
std::vector<std::complex<double>> spectrum(const std::vector<Field::Piston>& pistons,
                                           const WaveNumbers& waveNumbers, const Position* points,
                                           std::size_t count, const SpectrumOptions& options = {},
                                           FieldReport* report = nullptr);

}  // namespace pistonfield
