#pragma once

#include <optional>

namespace pistonfield {

/// Samples of a field along a row, from which it is interpolated: the value at x is
///
///     Σ samples[n]·L(x − n),   L(t) = sinc(t)·I₀(α√(1 − (t/T)²))/I₀(α)   for |t| < T,
///
/// with x in units of the samples' distance h. For a wave exp(iκx) of κh ≤ π − α/T the error is at
/// most 0.8·exp(−α). At the distance z from the plane of a piston, the waves of κ > κ₁ in its field
/// decay at least by exp(−√(κ₁² − k²)·z). Both together: with
///
///     α = ln(2/ε),   κ₁² = k² + (ln(4/ε)/z)²,   h = (π − α/T)/κ₁
///
/// the error is below ε where 1 is the pressure of the plane wave (measured: docs/theory.md).
struct Lattice {
  /// One of them is 1: the samples are a step of the rows over samplesAStep apart, or
  /// stepsASample steps.
  int samplesAStep = 1, stepsASample = 1;
  /// T. 0: only samples themselves are used.
  int halfTaps = 0;

  bool operator==(const Lattice& other) const {
    return samplesAStep == other.samplesAStep && stepsASample == other.stepsASample &&
           halfTaps == other.halfTaps;
  }
};

/// The kernel L for interpolations with an error of at most `error`.
class InterpolationKernel {
 public:
  explicit InterpolationKernel(double error);
  double operator()(double t, int halfTaps) const;
  double alpha() const { return alpha_; }

 private:
  double alpha_, atZero_;
};

/// Returns the lattice with the fewest samples of this T, for rows at the distance z > 0 from the
/// piston's plane; nothing if that is more than 32 samples a step.
std::optional<Lattice> latticeFor(double step, double z, double k, double error, int halfTaps);

}  // namespace pistonfield
