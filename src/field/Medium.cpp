#include "field/medium.h"

#include <cmath>

#include "field/Checks.h"
#include "field/Powers.h"
#include "field/WaveNumber.h"

namespace pistonfield {
namespace {

constexpr double pi = 3.14159265358979323846;

/// How much 1/c at a frequency differs from that at the medium's reference.
double dispersion(const Medium& medium, double frequency) {
  if (medium.reference == 0 || medium.attenuation == 0) return 0;
  // α₀·ω₀^(y − 1)·tan(πy/2)·((ω/ω₀)^(y − 1) − 1), and tan(πy/2) = −1/tan(π(y − 1)/2)
  const double beyond = medium.exponent - 1, ratio = logarithm(frequency / medium.reference);
  const double scale = attenuation(medium.attenuation, medium.reference, medium.exponent) /
                       (2 * pi * medium.reference);
  const double change =
      beyond != 0 ? std::expm1(beyond * ratio) / std::tan(pi / 2 * beyond) : 2 / pi * ratio;
  return -scale * change;
}

}  // namespace

double attenuation(double coefficient, double frequency, double exponent) {
  if (!(coefficient >= 0) || !std::isfinite(coefficient))
    throw FieldError("coefficient must be a finite real number, at least 0.");
  if (!(frequency > 0) || !std::isfinite(frequency))
    throw FieldError("frequency must be positive and finite.");
  if (!(exponent >= 0 && exponent <= 3)) throw FieldError("exponent must be from 0 to 3.");
  constexpr double nepersPerMetre = 100 * 2.302585092994046 / 20;  // of 1 dB/cm
  return coefficient * power(frequency / 1e6, exponent) * nepersPerMetre;
}

void check(const Medium& medium) {
  if (!(medium.speed > 0) || !std::isfinite(medium.speed))
    throw FieldError("The speed of sound in the medium must be positive and finite.");
  if (!(medium.attenuation >= 0) || !std::isfinite(medium.attenuation))
    throw FieldError("The attenuation of the medium must be finite and at least 0.");
  if (!(medium.exponent >= 0 && medium.exponent <= 3))
    throw FieldError("The exponent of the medium's attenuation must be from 0 to 3.");
  if (!(medium.reference >= 0) || !std::isfinite(medium.reference))
    throw FieldError("The reference frequency of the medium must be finite and at least 0.");
  if (medium.reference > 0 && medium.attenuation > 0 && medium.exponent == 3)
    throw FieldError(
        "For the exponent 3 causality gives no dispersion that is finite. Pass the reference "
        "frequency 0, which is without dispersion, or another exponent.");
}

std::complex<double> waveNumberOf(const Medium& medium, double frequency) {
  const double slowness = 1 / medium.speed + dispersion(medium, frequency);
  return {2 * pi * frequency * slowness,
          -attenuation(medium.attenuation, frequency, medium.exponent)};
}

std::complex<double> Medium::waveNumber(double frequency) const {
  check(*this);
  const std::complex<double> k = waveNumberOf(*this, frequency);
  if (!(k.real() > 0))
    throw FieldError(
        "At the frequency, the dispersion of the medium leaves no positive speed of sound. Give "
        "the speed at a reference frequency that is nearer, or less attenuation.");
  return k;
}

}  // namespace pistonfield
