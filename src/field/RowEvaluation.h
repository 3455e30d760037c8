#pragma once

#include <complex>
#include <memory>
#include <mutex>
#include <vector>

#include "field/EqualPistons.h"
#include "field/Evaluation.h"
#include "field/Lattice.h"

namespace pistonfield {

/// The sum of pistons' pressures on a grid, row by row. The field of equal pistons is sampled once
/// in a row, no more densely than its interpolation needs. All copies of it and the interpolation
/// are one filter of the samples. Where that takes longer, pistons are evaluated one by one.
class RowEvaluation {
 public:
  /// Estimated times for all pressures of a group, in units of one piston at one point.
  struct Cost {
    double byRows;  ///< with the best plan for each row; some may be evaluated one by one
    double oneByOne;
  };
  /// From at most `most` rows.
  static Cost cost(const EqualPistons& group, const Rows& rows, const Points& points,
                   std::complex<double> k, double tolerance, std::size_t most);

  RowEvaluation(std::vector<EqualPistons> groups, const Rows& rows, const Points& points,
                std::complex<double> k, double tolerance, double shift);

  RowEvaluation(const RowEvaluation&) = delete;
  RowEvaluation& operator=(const RowEvaluation&) = delete;
  ~RowEvaluation();

  /// Adds the pressures. Ends early if the rounding takes more than the tolerance, as used() says.
  void run(std::complex<double>* pressures, Work& work);

  /// What all runs used.
  const Used& used() const { return used_; }

 private:
  class Batch;
  struct Filter;
  struct Group;

  const Filter& filterOf(Group& group, const Lattice& lattice);

  const Rows rows_;
  const Points& points_;
  const std::complex<double> k_;
  const double shift_;
  std::vector<std::unique_ptr<Group>> groups_;
  std::size_t segment_ = 0;  ///< how many points of a row are evaluated together, at most
  Used used_;
};

}  // namespace pistonfield
