#include "field/ExactPressure.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <complex>
#include <cstddef>

#include "support/ReferenceField.h"

// The reference itself, against values of 18 digits from elsewhere. ProductRuleTest compares it
// with the integral over the piston, also far away and for small pistons, where the terms of the
// edges cancel.

using Piston = pistonfield::Field::Piston;

namespace {

TEST(ExactPressureTest, EqualsReferenceValues) {
  double worst = 0;
  for (const support::ReferenceField& field : support::readReferenceFields("exact.txt")) {
    Piston piston;
    piston.width = field.s;
    piston.height = field.l;
    for (std::size_t n = 0; n < field.points.size(); ++n) {
      const auto [x, y, z] = field.points[n];
      const auto error = std::abs(exactPressure(piston, field.k, {x, y, z}) -
                                  std::complex<long double>(field.pressure[n]));
      worst = std::max(worst, static_cast<double>(error));
    }
  }
  EXPECT_LT(worst, 1e-15);
}

}  // namespace
