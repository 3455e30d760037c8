#pragma once

#include <vector>

#include "field/pulse.h"

/// The pressure of pistons at a point and a time by the Rayleigh integral against time, in polar
/// coordinates around the point's foot:
///
///     p = Σ weight/(2πc) ∫ v'(t − delay − R/c)·Ω(R) dR
///
/// Ω(R) is the angle of the arc that is at the distance R from the point and on the piston. The
/// integral is divided where v' or Ω have kinks, and a Gauss rule is applied to each part with a
/// substitution that smooths the roots at its ends. The error is some 1e-12. Behind a piston its
/// plane wave continues.
class ExactPulse {
 public:
  ExactPulse(std::vector<pistonfield::DelayedPiston> pistons, double speed,
             const pistonfield::Excitation& excitation);

  double at(const pistonfield::Position& point, double t) const;

  /// v(t) and v'(t).
  double velocity(double t) const;
  double acceleration(double t) const;

 private:
  double pressureOf(const pistonfield::Field::Piston& piston, const pistonfield::Position& point,
                    double t) const;

  std::vector<pistonfield::DelayedPiston> pistons_;
  double speed_;
  pistonfield::Excitation excitation_;
  std::vector<double> coefficients_;
};
