#pragma once

#include <complex>

#include "field/medium.h"

namespace pistonfield {

/// Medium::waveNumber of a medium that has been checked. Where dispersion leaves no positive speed,
/// the real part is not positive.
std::complex<double> waveNumberOf(const Medium& medium, double frequency);

}  // namespace pistonfield
