#pragma once

#include <vector>

#include "field/pulse/ExcitationSpline.h"

namespace pistonfield {

/// Upper bounds of how much of a velocity lies at which frequencies: with them a time sum's error
/// follows from its error at each frequency. They are those of the spline's own spectrum, which
/// falls as 1/ω⁴ and has images of the samples' spectrum around multiples of the rate.
class PulseSpectrum {
 public:
  explicit PulseSpectrum(const ExcitationSpline& spline);

  /// A range of ω.
  struct Part {
    double omega;  ///< its upper end; infinite for the last part
    double mass;   ///< 1/π ∫|V(ω)| dω
    double slope;  ///< 1/π ∫|V(ω)|·ω dω
  };

  /// Ascending.
  const std::vector<Part>& parts() const { return parts_; }

  /// The integrals over all ω: bounds of |v| and |v'|.
  double mass() const { return mass_; }
  double slope() const { return slope_; }

  /// ω at the centre of energy, ∫|V|²ω dω / ∫|V|² dω; 0 if v is 0.
  double centre() const { return centre_; }

 private:
  std::vector<Part> parts_;
  double mass_ = 0, slope_ = 0, centre_ = 0;
};

}  // namespace pistonfield
