#pragma once

#include <array>
#include <complex>
#include <cstddef>
#include <vector>

#include "field/field.h"

namespace rayleigh {

/// Points in wavelengths, as the sum reads them, padded to whole tiles.
struct Points {
  /// Lengths are multiplied by k/2π.
  Points(const std::vector<pistonfield::Position>& positions, double k);

  std::size_t count;
  std::vector<float> x, y, z;
};

/// How many classes of the distance from an element the rules are chosen by: two an octave of the
/// squared distance.
constexpr int distanceClasses = 48;

/// A product rule on an element: abscissas in wavelengths, and weights.
struct ProductRule {
  std::vector<float> x, xWeights, y, yWeights;
};

struct Element {
  std::array<float, 3> centre;  // in wavelengths
  std::array<std::array<float, 3>, 3> axes;
  bool turned;
  float halfWidth, halfHeight;
  std::complex<float> factor;
  std::array<ProductRule, distanceClasses> rules;
};

/// The class of a squared distance, from the bits of a float.
inline int distanceClass(float squared) {
  constexpr int least = 119 * 2;  // 1/256
  int bits = 0;
  static_assert(sizeof bits == sizeof squared);
  __builtin_memcpy(&bits, &squared, sizeof bits);
  const int at = (bits >> 22) - least;
  return at < 0 ? 0 : at < distanceClasses ? at : distanceClasses - 1;
}

/// The Rayleigh integral of pistons as a double sum: single precision, its own sine and cosine,
/// points in packs, on all cores. Each pack of points uses the product of two Gauss rules that its
/// distance from an element needs.
class RayleighSum {
 public:
  /// If `halvesElements`, only one half of each element is summed: all points and the centres of
  /// all pistons must have y = 0, and no piston may be turned.
  RayleighSum(const std::vector<pistonfield::Field::Piston>& pistons, double k,
              bool halvesElements);

  /// Chooses the rules: the fewest nodes with which the largest error at `points` is at most
  /// `tolerance` relative to `peak`. Returns that error.
  double tune(const std::vector<pistonfield::Position>& points,
              const std::vector<std::complex<double>>& pressures, double peak, double tolerance);

  /// Chooses the same rule for all distances and both directions instead.
  void useOrder(std::size_t order);

  std::vector<std::complex<float>> at(const Points& points) const;

 private:
  using Errors = std::vector<std::array<float, distanceClasses>>;  // by candidate order
  void measureErrors(const std::vector<pistonfield::Position>& points);
  void chooseRules(double xError, double yError);
  void setRule(Element& element, std::size_t distance, std::size_t xOrder,
               std::size_t yOrder) const;

  double k_;
  bool halves_;
  std::vector<Element> elements_;
  std::vector<Errors> xErrors_, yErrors_;
};

}  // namespace rayleigh
