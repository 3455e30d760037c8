#pragma once

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
double attenuation(double coefficient, double frequency, double exponent = 1);

/// A fluid or tissue, in which waves travel and may lose energy. Units are metres and seconds if it
/// attenuates; otherwise any.
struct Medium {
  double speed = 0;        ///< of sound, above 0
  double attenuation = 0;  ///< in dB/(cm·MHz^exponent), at least 0
  double exponent = 1;     ///< of the attenuation's power law, from 0 to 3
  /// If above 0, the frequency in Hz at which waves have the speed above: at others it differs as
  /// causality requires for the power law (Kramers and Kronig), by
  ///
  ///     1/c(ω) = 1/speed + α₀·tan(π·exponent/2)·(ω^(exponent − 1) − ω₀^(exponent − 1))
  ///     1/c(ω) = 1/speed − 2/π·α₀·ln(ω/ω₀)       for the exponent 1
  ///
  /// where α₀·ω^exponent is the attenuation in Np/m. The exponent is then below 3. If 0, there is
  /// no dispersion.
  double reference = 0;

  /// k − iα at the frequency f = ω/2π, in 1/m. Throws a FieldError unless f is positive and finite,
  /// the members are in range, and the speed at f is positive.
  std::complex<double> waveNumber(double frequency) const;
};

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
