#include "field/ExactPressure.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <iterator>
#include <string>
#include <vector>

#include "support/ReferenceField.h"

// The reference itself: against values of 18 digits from elsewhere, and against the definition of
// the pressure.

using Piston = pistonfield::Field::Piston;
using pistonfield::Position;

namespace {

using Real = long double;
using Pressure = std::complex<Real>;

TEST(ExactPressureTest, EqualsReferenceValues) {
  double worst = 0;
  for (const support::ReferenceField& field : support::readReferenceFields("exact.txt")) {
    Piston piston;
    piston.width = field.s;
    piston.height = field.l;
    for (std::size_t n = 0; n < field.points.size(); ++n) {
      const auto [x, y, z] = field.points[n];
      const auto error =
          std::abs(exactPressure(piston, field.k, {x, y, z}) - Pressure(field.pressure[n]));
      worst = std::max(worst, static_cast<double>(error));
    }
  }
  EXPECT_LT(worst, 1e-15);
  RecordProperty("measured", std::to_string(worst));
}

/// The non-negative half of the Gauss–Legendre rule of eight nodes.
constexpr Real nodes[] = {0.18343464249564980493947614L, 0.52553240991632898581773904L,
                          0.79666647741362673959155393L, 0.96028985649753623168356086L};
constexpr Real weights[] = {0.36268378337836198296515044L, 0.31370664587788728733796220L,
                            0.22238103445337447054435599L, 0.10122853629037625915253135L};

/// (k/2π)·∬ exp(−ikR)/R dS for z > 0, by a product rule of `parts` × `parts` parts.
Pressure rayleighIntegral(const Piston& piston, Real k, const Position& p, int parts) {
  struct Node {
    Real at, weight;
  };
  const auto along = [parts](Real side) {
    const Real half = side / (2 * static_cast<Real>(parts));
    std::vector<Node> all;
    for (int part = 0; part < parts; ++part)
      for (std::size_t n = 0; n < std::size(nodes); ++n)
        for (const Real sign : {-1, 1})
          all.push_back({half * (static_cast<Real>(2 * part + 1 - parts) + sign * nodes[n]),
                         half * weights[n]});
    return all;
  };
  Pressure sum = 0;
  for (const Node& x : along(piston.width))
    for (const Node& y : along(piston.height)) {
      const Real R = std::hypot(p[0] - x.at, p[1] - y.at, static_cast<Real>(p[2]));
      sum += x.weight * y.weight * std::polar(1 / R, -k * R);
    }
  return sum * k / (2 * std::acos(Real(-1)));
}

TEST(ExactPressureTest, EqualsTheIntegralOverThePiston) {
  const Real k = 2 * std::acos(Real(-1));
  struct Case {
    double width, height;
    Position point;
  };
  for (const auto& [width, height, point] : {
           Case{5, 7.5, {0, 0, 20}},
           Case{5, 7.5, {2.5, 3.75, 2}},  // above a corner
           Case{5, 7.5, {2.5, 1, 2}},     // above an edge
           Case{5, 7.5, {-4, 9, 3}},
           Case{0.1, 12, {3, -2, 1.5}},
           Case{0.1, 0.1, {1, 2, 1e5}},
           Case{0.1, 0.1, {1e5, 3e4, 2e4}},  // where the terms of the edges cancel
           Case{20, 30, {7e4, 1e4, 7e4}},
       }) {
    Piston piston;
    piston.width = width;
    piston.height = height;
    const Pressure expected = rayleighIntegral(piston, k, point, 40);
    const Real R = std::hypot(point[0], point[1], point[2]);
    const Real magnitude =
        k * piston.width * piston.height / (2 * std::acos(Real(-1)) * R);  // of the integrand
    const Real bound = (1e-13L + 1e-17L * k * R) * std::max(std::abs(expected), magnitude * 1e-3L);
    EXPECT_LT(std::abs(expected - rayleighIntegral(piston, k, point, 30)), bound);
    EXPECT_LT(std::abs(exactPressure(piston, k, point) - expected), bound)
        << width << " x " << height << " at " << point[0] << ", " << point[1] << ", " << point[2];
  }
}

}  // namespace
