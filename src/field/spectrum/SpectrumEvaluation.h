#pragma once

#include <complex>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "field/Evaluation.h"
#include "field/Points.h"
#include "field/Work.h"
#include "field/spectrum.h"
#include "field/spectrum/BandInterpolation.h"

namespace pistonfield {

/// Pistons that follow each other in a list, whose sum is interpolated.
struct PistonsTogether {
  std::vector<Field::Piston> pistons;
  double tolerance;  ///< of their sum
  double weight;     ///< the sum of their weights' magnitudes
};

/// The sum of pistons' pressures at points and wave numbers, for an absolute tolerance. It is
/// computed on all cores, some points at a time.
class SpectrumEvaluation {
 public:
  /// There are pistons, and none has the side or the weight 0.
  SpectrumEvaluation(const std::vector<Field::Piston>& pistons, const WaveNumbers& waveNumbers,
                     const Points& points, double tolerance);

  /// Adds the pressure of point n at wave number m to number m + count·indices[n] of `pressures`.
  void run(const std::vector<std::size_t>& indices, std::complex<double>* pressures, Work& work);

  /// What all runs used.
  const Used& used() const { return used_; }

 private:
  friend class SpectrumOfTile;

  const BandInterpolation& interpolation(const BandPlan& plan);

  const WaveNumbers waves_;
  const Points& points_;
  double mostWaveNumber_;
  std::vector<PistonsTogether> groups_;
  std::size_t mostTogether_ = 1;
  std::map<std::pair<std::size_t, std::size_t>, std::unique_ptr<const BandInterpolation>>
      interpolations_;
  std::mutex mutex_;
  Used used_;
};

/// k_m, for any number m. Where it is nothing but a rounding error, 0.
double waveNumberAt(const WaveNumbers& waves, double m);

/// The largest magnitude.
double mostOf(const WaveNumbers& waves);

}  // namespace pistonfield
