#pragma once

#include <optional>

namespace pistonfield {

/// How densely a field is sampled along a row, and from how many samples it is interpolated: the
/// value at x is
///
///     Σ samples[n]·L(x − n),   L(t) = sin(πt)/(πt)·sinh(αs)/(s·sinh α),   s = √(1 − (t/T)²),
///
/// over |x − n| < T, with x in units of the samples' distance h. For a wave exp(iκx) of
/// κh ≤ π − α/T the error is at most 1.1·exp(−α). At the distance z from the plane of a piston, the
/// waves of κ > κ₁ in its field decay at least by exp(−√(κ₁² − k²)·z). Both together: with
///
///     α = ln(2/ε),   κ₁² = k² + (ln(4/ε)/z)²,   h = (π − α/T)/κ₁
///
/// the error is below ε where 1 is the pressure of the plane wave (measured: docs/theory.md).
struct Lattice {
  /// `samples` samples are as long as `steps` steps of the row, with no common factor.
  int samples = 1, steps = 1;
  /// T. 0: only samples themselves are used.
  int halfTaps = 0;
  // Initially a sample a step, without interpolation.

  bool operator==(const Lattice& other) const {
    return samples == other.samples && steps == other.steps && halfTaps == other.halfTaps;
  }
};

/// The kernel L for interpolations with an error of at most `error`.
class InterpolationKernel {
 public:
  explicit InterpolationKernel(double error);

  /// Writes L(t − n) to factors[n + halfTaps − 1], for −halfTaps < n ≤ halfTaps and 0 ≤ t < 1.
  void factors(double t, int halfTaps, double* factors) const;

 private:
  double alpha_;
};

constexpr int mostHalfTaps = 24;

/// Returns the lattice with the fewest samples of this T, for rows at the distance z > 0 from the
/// piston's plane; nothing if that is more than 32 samples a step.
std::optional<Lattice> latticeFor(double step, double z, double k, double error, int halfTaps);

}  // namespace pistonfield
