#pragma once

#include <cmath>
#include <complex>

#include "field.h"

// Attenuation in a medium, and pressures and intensities in units:
//
//     #include <pistonfield/medium.h>
//
//     using namespace pistonfield;
//     const double alpha = attenuation(0.5, 5e6);              // Np/m: tissue at 5 MHz
//     const std::complex<double> P = pascals(p, 0.05, 1000, 1540);
//     const double I = intensity(P, 1000, 1540);               // W/m²
//
// attenuation throws a FieldError, which names the argument, unless every argument is in its range.
// pascals and intensity are formulas only.

namespace pistonfield {

/// Returns the attenuation in nepers per metre,
///
///     α = coefficient·(f/1 MHz)^exponent·100·ln(10)/20
///
/// With it, the wave number of the medium is k = 2πf/c − iα, in 1/m.
///
/// @param coefficient  in dB/(cm·MHz^exponent), at least 0 and finite
/// @param frequency    f in Hz, above 0 and finite
/// @param exponent     from 0 to 3; that of soft tissue is about 1, that of water 2
inline double attenuation(double coefficient, double frequency, double exponent = 1) {
  if (!(coefficient >= 0) || !std::isfinite(coefficient))
    throw FieldError("coefficient must be a finite real number, at least 0.");
  if (!(frequency > 0) || !std::isfinite(frequency))
    throw FieldError("frequency must be positive and finite.");
  if (!(exponent >= 0 && exponent <= 3)) throw FieldError("exponent must be from 0 to 3.");
  constexpr double nepersPerMetre = 100 * 2.302585092994046 / 20;  // of 1 dB/cm
  return coefficient * std::pow(frequency / 1e6, exponent) * nepersPerMetre;
}

/// Returns the pressure in pascals, P = iρcv·p, of a pressure whose plane wave has magnitude 1.
///
/// @param velocity  v, the amplitude of the piston's velocity, in m/s
/// @param density   ρ, in kg/m³
/// @param speed     c, in m/s; in a lossy medium ω/k, which is complex
inline std::complex<double> pascals(std::complex<double> p, std::complex<double> velocity,
                                    double density, std::complex<double> speed) {
  return std::complex<double>(0, 1) * (density * speed * velocity) * p;
}

/// Returns the time-averaged intensity |P|²/(2ρc), in W/m², of a plane wave with the pressure
/// amplitude P in Pa. Elsewhere, for example next to the piston, the intensity also depends on how
/// pressure and velocity differ in phase.
///
/// @param density  ρ, in kg/m³
/// @param speed    c, in m/s; in a lossy medium ω/Re(k)
inline double intensity(std::complex<double> pressure, double density, double speed) {
  return (pressure.real() * pressure.real() + pressure.imag() * pressure.imag()) /
         (2 * density * speed);
}

}  // namespace pistonfield
