#pragma once

#include <complex>
#include <cstddef>
#include <vector>

namespace pistonfield {

/// Replaces the values by Σ values[n]·exp(sign·2πi·n·m/N) for all m; their number N is a power
/// of 2.
void transform(std::vector<std::complex<double>>& values, int sign);

/// Σ samples[m]·exp(−2πi·n·m/steps) for n = 1 … count.
std::vector<std::complex<double>> spectrumOf(const std::vector<double>& samples, std::size_t steps,
                                             std::size_t count);

/// The spectrum of the cubic B-spline on integers: (sin(ω/2)/(ω/2))⁴.
double splineSpectrum(double omega);

}  // namespace pistonfield
