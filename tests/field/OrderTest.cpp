#include "field/order.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <functional>
#include <random>
#include <stdexcept>
#include <vector>

#include "field/ExactPressure.h"

using pistonfield::Field;
using pistonfield::FieldError;
using pistonfield::FieldOptions;
using pistonfield::Position;
using pistonfield::SufficientOrder;
using pistonfield::sufficientOrder;

namespace {

constexpr double pi = 3.14159265358979323846;

Field fieldOf(double width, double height, double k = 2 * pi) {
  Field::Piston piston;
  piston.width = width;
  piston.height = height;
  return Field({piston}, k);
}

std::vector<Position> pointsBefore(double size) {
  std::mt19937 random(3);
  std::uniform_real_distribution<double> across(-size, size), away(0.05 * size, 5 * size);
  std::vector<Position> points(200);
  for (Position& p : points) p = {across(random), across(random), away(random)};
  return points;
}

SufficientOrder orderFor(const Field& field, const std::vector<Position>& points,
                         double tolerance) {
  return sufficientOrder(field, points.data(), points.size(), tolerance);
}

/// The error of an order against a field that was computed for a tolerance of 1e-9.
double errorOf(const Field& field, const std::vector<Position>& points, int order) {
  FieldOptions exactly, options;
  exactly.tolerance = 1e-9;
  options.order = order;
  const auto exact = field.at(points, exactly), p = field.at(points, options);
  double largest = 0, peak = 0;
  for (std::size_t n = 0; n < points.size(); ++n) {
    largest = std::max(largest, std::abs(p[n] - exact[n]));
    peak = std::max(peak, std::abs(exact[n]));
  }
  return largest / peak;
}

}  // namespace

TEST(OrderTest, TheOrderIsTheLowestFromWhichOnErrorsAreBelowTheTolerance) {
  for (const double size : {0.5, 5.0, 20.0}) {
    const Field field = fieldOf(size, 1.5 * size);
    const std::vector<Position> points = pointsBefore(size);
    for (const double tolerance : {1e-2, 1e-3, 1e-5}) {
      const SufficientOrder found = orderFor(field, points, tolerance);
      EXPECT_NEAR(found.error, errorOf(field, points, found.order), tolerance / 50);
      for (int order = found.order; order < found.order + 20; ++order)
        EXPECT_LT(errorOf(field, points, order), 1.02 * tolerance) << size << " " << order;
      EXPECT_GT(errorOf(field, points, found.order - 1), 0.98 * tolerance) << size;
    }
  }
}

TEST(OrderTest, OrdersAreSufficientAlsoWhereErrorsGoUpAgain) {
  const Field field = fieldOf(51, 5);
  std::vector<Position> points;
  for (int n = 0; n < 6; ++n) points.push_back({-10 + 4.0 * n, 5 - 3.0 * n, 0.5 + 1.9 * n});
  int last = 0;  // the highest order that is too low
  for (int order = 1; order < 200; ++order)
    if (errorOf(field, points, order) >= 0.1) last = order;
  ASSERT_LT(errorOf(field, points, 16), 0.1);
  ASSERT_GT(last, 16);
  const SufficientOrder found = orderFor(field, points, 0.1);
  EXPECT_GT(found.order, 16);
  EXPECT_LT(errorOf(field, points, found.order), 0.1);
}

TEST(OrderTest, OrderOneIsSufficientForZerosAndForNoPoints) {
  EXPECT_EQ(orderFor(fieldOf(0, 1), {{0, 0, 1}}, 1e-3).order, 1);
  EXPECT_EQ(orderFor(fieldOf(1, 1, 0), {{0, 0, 1}}, 1e-3).order, 1);
  EXPECT_EQ(orderFor(fieldOf(1, 1), {}, 1e-3).order, 1);
  EXPECT_EQ(orderFor(fieldOf(1e-3, 1e-3), {{0, 0, 1}}, 0.5).order, 1);
}

TEST(OrderTest, PointsThatAreNotFiniteDoNotCount) {
  const std::vector<Position> points = {{0, 0, 1}, {NAN, 0, 1}};
  const SufficientOrder found = orderFor(fieldOf(2, 3), points, 1e-3);
  EXPECT_EQ(found.order, orderFor(fieldOf(2, 3), {points[0]}, 1e-3).order);
  EXPECT_LT(found.error, 1e-3);
}

TEST(OrderTest, AToleranceOutOfRangeAndOneThatNoOrderKeepsAreErrors) {
  for (const double tolerance : {0.9e-6, 0.0, -1.0, 1.0, static_cast<double>(NAN)})
    EXPECT_THROW(orderFor(fieldOf(1, 1), {{0, 0, 1}}, tolerance), FieldError) << tolerance;
  EXPECT_THROW(orderFor(fieldOf(3000, 3000), {{1499, 1400, 0.1}, {0, 0, 1}}, 1e-3), FieldError);
}

TEST(OrderTest, ProgressEndsTheSearch) {
  struct Stopped : std::runtime_error {
    using std::runtime_error::runtime_error;
  };
  const std::vector<Position> points = {{0, 0, 1}};
  EXPECT_THROW(
      sufficientOrder(fieldOf(1, 1), points.data(), 1, 1e-3, [](double) { throw Stopped("now"); }),
      Stopped);
}
