#pragma once

#include "field/bins/PulseOnPoints.h"
#include "field/pulse/PulseSpectrum.h"

namespace pistonfield {

/// The orders for a spectrum and bins of a length. The error of the rule of order n for exp(iωt) on
/// [−1, 1] is below exp(ω·sinh ξ − 2nξ) for every ξ > 0. The spectrum is divided into ranges with
/// half of the mass that is left, and the error of each is bounded by that at its upper end; so the
/// few components at high frequencies need not be integrated as precisely as the others.
PulseOrders pulseOrders(const PulseSpectrum& spectrum, double step);

}  // namespace pistonfield
