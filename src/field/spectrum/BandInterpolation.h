#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "field/filter/RowFilter.h"

// Pressures at equally spaced wave numbers from those at a few.
//
// The pressure of a piston at a point is a sum of waves exp(−ikR), whose weights' magnitudes add up
// to at most mostOfWaves; R are the lengths of paths from the piston to the point. If they are
// within c/κ of a length r, then p·exp(ikr) is interpolated over a band of wave numbers, within κ
// of its middle, by the polynomial through its values at n Chebyshev nodes. For a wave the error is
// at most 4·Σ |J_j(c)|, j ≥ n: c + a few nodes suffice, however many wave numbers the band has.

namespace pistonfield {

/// Of a piston of weight 1: 2 in front of it (one of the plane wave, one of the edges), and 2 more
/// of the wave behind it.
constexpr double mostOfWaves = 4;

/// The polynomial through the values at `nodes` Chebyshev nodes, at `length` ≥ 2 equally spaced
/// places.
class BandInterpolation {
 public:
  BandInterpolation(std::size_t nodes, std::size_t length);

  /// In steps, from the first place on.
  const std::vector<double>& nodes() const { return nodes_; }

  /// The largest sum of the magnitudes of a place's factors.
  double factorSum() const { return factorSum_; }

  /// The value at a place from columns of the nodes' values.
  template <class Real>
  RowFilter<Real> filter(std::size_t place) const {
    const Real* factors = nullptr;
    if constexpr (sizeof(Real) == sizeof(float))
      factors = single_.data();
    else
      factors = factors_.data();
    return {static_cast<int>(nodes_.size()), columns_.data(), factors + place * nodes_.size(),
            nullptr};
  }

 private:
  std::vector<double> nodes_, factors_;
  std::vector<float> single_;
  std::vector<int> columns_;
  double factorSum_ = 0;
};

/// How a band of equally spaced wave numbers is evaluated.
struct BandPlan {
  std::size_t length;  ///< how many of them are interpolated together
  std::size_t nodes;   ///< from so many values; 0: each is evaluated
  double cost;         ///< in evaluations of one piston at one point
};

/// The fastest plan for `count` wave numbers whose phases along the paths of `pistons` pistons
/// differ by up to `phaseStep` more from each to the next, with an error of at most `error` for a
/// wave of magnitude 1.
BandPlan bandPlan(std::size_t count, double phaseStep, std::size_t pistons, double error);

}  // namespace pistonfield
