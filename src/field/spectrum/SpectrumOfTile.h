#pragma once

#include <complex>
#include <vector>

#include "field/filter/RowFilter.h"
#include "field/spectrum/Paths.h"
#include "field/spectrum/SpectrumEvaluation.h"

namespace pistonfield {

/// Of the tolerance: what the interpolation between wave numbers may take, and its rounding.
constexpr double interpolationShare = 0.004, roundingShare = 0.1,
                 nodeShare = 1 - interpolationShare - roundingShare;

/// The error of interpolation that a wave of magnitude 1 may have.
double errorOfWave(const PistonsTogether& group);

/// The largest number of points that are evaluated together.
constexpr std::size_t pointsOfTile = 128;

/// Adds the spectra of some points.
class SpectrumOfTile {
 public:
  /// For the points first ... first + count − 1.
  SpectrumOfTile(SpectrumEvaluation& evaluation, const std::vector<std::size_t>& indices,
                 std::complex<double>* pressures, std::size_t first, std::size_t count, Used& used);

  /// Adds those of a group at the wave numbers begin ... end − 1.
  void add(const PistonsTogether& group, std::size_t begin, std::size_t end);

 private:
  /// `count` of them from `first` on, of which the last `added` are added.
  struct Band {
    std::size_t first, count, added;
  };

  void addOneByOne(const PistonsTogether& group, std::size_t begin, std::size_t end);
  bool addInterpolated(const PistonsTogether& group, const BandInterpolation& interpolation,
                       const Band& band);
  template <class Real>
  void interpolate(const BandInterpolation& interpolation, const Band& band,
                   AddFiltered<Real>* addColumn);
  void evaluate(const PistonsTogether& group, double k, double tolerance, Used& used);
  template <class Value>
  void addRows(std::size_t begin, std::size_t end, std::size_t firstPoint, std::size_t points,
               const Value& value);

  SpectrumEvaluation& evaluation_;
  const std::vector<std::size_t>& indices_;
  std::complex<double>* pressures_;
  std::size_t first_, count_;
  Used& used_;
  const AddFilteredInPacks filters_;
  Paths paths_;
  std::vector<std::complex<double>> values_;  ///< of a wave number at all points
  std::vector<double> re_, im_;               ///< the nodes' columns, of rowsTogether points each
  std::vector<double> turns_, cosines_, sines_;
};

}  // namespace pistonfield
