#pragma once

#include <optional>
#include <vector>

#include "FastNearfield/intervals/PistonOnPoints.h"
#include "field/Points.h"
#include "field/Work.h"

namespace pistonfield {

/// The sum of pistons' pressures at points, for an absolute tolerance. It is computed tile by tile,
/// on all cores: a tile's sum stays in the cache while the pistons are added to it.
class Evaluation {
 public:
  /// Sides and weights are not 0. `shift` is how far points may be from where they should be, which
  /// is charged to the tolerance. If `order` is
  /// above 0, it is the order of every integral, and the tolerance is ignored.
  Evaluation(const std::vector<Field::Piston>& pistons, std::complex<double> k, double tolerance,
             double shift, int order = 0);
  Evaluation(Evaluation&&) = default;

  /// Writes the pressure at each point, or NaN if the point is not finite. Where a point is too
  /// far, `used().excess` is infinite afterwards.
  void run(const Points& points, std::complex<double>* pressures, Work& work);

  /// The same for `count` points from `first` on, on the calling thread alone. Adds what it used to
  /// `used`. Any number of threads may call it at once.
  void runHere(const Points& points, std::size_t first, std::size_t count,
               std::complex<double>* pressures, Used& used) const;

  /// The same as `run`, on the device. `run` does it where a GPU is faster. There are pistons, and
  /// k is not 0.
  void runOnDevice(const Points& points, std::complex<double>* pressures, Work& work);

  /// The pistons as kernels take them.
  const std::vector<WeightedPiston>& pistons() const { return pistons_; }

  /// What all calls of `run` used.
  const Used& used() const { return used_; }

 private:
  void evaluateTile(const Points& points, std::size_t first, std::size_t count,
                    std::complex<double>* pressures, Used& used) const;
  const GaussRules<float>& rules() const;
  const GaussRules<double>& preciseRules() const;

  std::vector<WeightedPiston> pistons_;
  double tolerance_;
  bool isNegative_;  // k
  double mostCoordinate_;
  std::optional<GaussRules<float>> rule_;  // of a given order
  std::optional<GaussRules<double>> preciseRule_;
  AddPiston* add_;
  Used used_;
};

/// An empty record, and the union of two.
Used nothingUsed();
Used bothUsed(const Used& one, const Used& other);

}  // namespace pistonfield
