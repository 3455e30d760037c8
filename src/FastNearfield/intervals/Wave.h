#pragma once

namespace pistonfield {

/// Waves in a medium, with lengths in wavelengths: k = 2π − i·decay.
struct Wave {
  float decay = 0;                     ///< of a wave, in nepers a wavelength
  float waveNumber = 2 * 3.14159265f;  ///< the magnitude of k
};

/// Behind a piston its wave grows: by at most so many nepers, so that it is a float.
constexpr double mostGrowth = 60;

}  // namespace pistonfield
