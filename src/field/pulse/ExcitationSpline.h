#pragma once

#include <complex>
#include <vector>

#include "field/pulse.h"

namespace pistonfield {

/// The velocity that an excitation stands for, and its spectrum.
class ExcitationSpline {
 public:
  /// Throws a FieldError if the excitation is invalid.
  explicit ExcitationSpline(const Excitation& excitation);

  /// Where it is not 0.
  double begin() const { return start_ - 2 / rate_; }
  double end() const { return start_ + (static_cast<double>(coefficients_.size()) + 1) / rate_; }

  /// v(t).
  double at(double t) const;

  /// V(ω) = ∫ v(t)·exp(−iω(t − start)) dt, of which the caller adds the phase of the start.
  std::complex<double> spectrum(double omega) const;

  double start() const { return start_; }
  double rate() const { return rate_; }

  /// c_n.
  const std::vector<double>& coefficients() const { return coefficients_; }

 private:
  double start_, rate_;
  std::vector<double> coefficients_;
};

}  // namespace pistonfield
