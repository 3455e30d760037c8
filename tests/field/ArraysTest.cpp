#include "field/arrays.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "field/Pistons.h"

// What a program that includes <pistonfield/arrays.h> may rely on. Positions, windows and phases
// are derived here in another way than in the library.

using pistonfield::apodization;
using pistonfield::convexArray;
using pistonfield::Field;
using pistonfield::FieldError;
using pistonfield::focused;
using pistonfield::linearArray;
using pistonfield::matrixArray;
using pistonfield::Position;
using pistonfield::steered;
using pistonfield::weighted;
using Pistons = std::vector<Field::Piston>;

namespace {

constexpr double pi = 3.14159265358979323846, nan = std::numeric_limits<double>::quiet_NaN(),
                 infinity = std::numeric_limits<double>::infinity();

double distance(const Position& p, const Position& q) {
  const Position d = {p[0] - q[0], p[1] - q[1], p[2] - q[2]};
  return std::sqrt(dot(d, d));
}

void expectNear(const Position& actual, const Position& expected, double tolerance) {
  for (std::size_t n = 0; n < 3; ++n) EXPECT_NEAR(actual[n], expected[n], tolerance);
}

/// The points of a circle about the origin in the plane y = 0, by their angles from z.
std::vector<Position> circle(double radius, const std::vector<double>& degrees) {
  std::vector<Position> points;
  for (const double angle : degrees)
    points.push_back({radius * std::sin(angle * pi / 180), 0, radius * std::cos(angle * pi / 180)});
  return points;
}

std::size_t loudest(const std::vector<std::complex<double>>& p) {
  std::size_t best = 0;
  for (std::size_t n = 0; n < p.size(); ++n)
    if (std::abs(p[n]) > std::abs(p[best])) best = n;
  return best;
}

// Rows and matrices.

TEST(ArraysTest, NeighboursInARowAreOnePitchApartAndTheOriginIsInTheMiddle) {
  for (const std::size_t count : {1u, 2u, 5u, 128u}) {
    const Pistons array = linearArray(count, 0.5, 0.375, 7);
    ASSERT_EQ(array.size(), count);
    EXPECT_EQ(array.front().centre[0], -array.back().centre[0]);
    for (std::size_t n = 0; n < count; ++n) {
      EXPECT_EQ(array[n].centre[0] - array[0].centre[0], 0.5 * static_cast<double>(n));
      EXPECT_EQ(array[n].centre[1], 0);
      EXPECT_EQ(array[n].centre[2], 0);
      EXPECT_EQ(array[n].width, 0.375);
      EXPECT_EQ(array[n].height, 7);
      EXPECT_EQ(array[n].weight, 1.0);
      EXPECT_EQ(array[n].axes, Field::Piston().axes);
    }
  }
}

TEST(ArraysTest, AMatrixHasARowAlongEachAxisAndXVariesFirst) {
  const Pistons array = matrixArray({3, 4}, {0.5, 1.25}, 0.25, 1);
  const Pistons alongX = linearArray(3, 0.5, 0.25, 1), alongY = linearArray(4, 1.25, 1, 1);
  ASSERT_EQ(array.size(), 12U);
  std::size_t n = 0;
  for (const Field::Piston& y : alongY)
    for (const Field::Piston& x : alongX)
      expectNear(array[n++].centre, {x.centre[0], y.centre[0], 0}, 0);
}

TEST(ArraysTest, WithoutGapsAMatrixIsOneLargePiston) {
  Field::Piston whole;
  whole.width = 4;
  whole.height = 5;
  const std::vector<Position> points = {{-9, 0, 5}, {0.1, -1, 20}, {2.3, 1.4, 0.5}, {6, 5, 60}};
  const auto expected = Field({whole}, 2 * pi).at(points, {1e-9, 0, nullptr});
  const auto p = Field(matrixArray({8, 4}, {0.5, 1.25}, 0.5, 1.25), 2 * pi).at(points);
  for (std::size_t n = 0; n < points.size(); ++n) EXPECT_LT(std::abs(p[n] - expected[n]), 3e-4);
}

TEST(ArraysTest, SidesThatAreOnePitchButForRoundingFit) {
  EXPECT_EQ(linearArray(128, static_cast<float>(0.3e-3), 0.3e-3, 5e-3).size(), 128U);
  EXPECT_EQ(linearArray(128, 0.3e-3, static_cast<float>(0.3e-3), 5e-3).size(), 128U);
  EXPECT_EQ(linearArray(1, 1, 3, 3).size(), 1U);  // has no neighbours
  EXPECT_EQ(matrixArray({1, 2}, {1, 1}, 3, 1).size(), 2U);
}

// Arcs.

TEST(ArraysTest, ElementsOfAnArcAreOnACircleOnePitchApart) {
  for (const double radius : {50.0, -50.0})
    for (const std::size_t count : {1u, 2u, 95u, 628u}) {
      const Pistons array = convexArray(count, 0.5, radius, 0.375, 12);
      const Position curvature = {0, 0, -radius};
      ASSERT_EQ(array.size(), count);
      double sum = 0;
      for (std::size_t n = 0; n < count; ++n) {
        EXPECT_NEAR(distance(array[n].centre, curvature), 50, 1e-12);
        EXPECT_EQ(array[n].centre[1], 0);
        EXPECT_LE(radius * array[n].centre[2], 0);
        sum += array[n].centre[0];
        if (n > 0) {
          const double chord = distance(array[n].centre, array[n - 1].centre);
          EXPECT_NEAR(2 * 50 * std::asin(chord / (2 * 50)), 0.5, 1e-12);
        }
      }
      EXPECT_NEAR(sum, 0, 1e-9);
      EXPECT_EQ(array.front().centre[0], -array.back().centre[0]);
      EXPECT_EQ(array.front().centre[2], array.back().centre[2]);
      EXPECT_LE(array.front().centre[0], 0);
    }
}

TEST(ArraysTest, NormalsOfAnArcPassThroughItsCentreOfCurvature) {
  for (const double radius : {50.0, -50.0})
    for (const Field::Piston& element : convexArray(96, 0.5, radius, 0.375, 12)) {
      const auto& [x, y, z] = element.axes;
      const Position& c = element.centre;
      expectNear({c[0] - radius * z[0], c[1] - radius * z[1], c[2] - radius * z[2]},
                 {0, 0, -radius}, 1e-12);
      expectNear(y, {0, 1, 0}, 0);
      expectNear({y[1] * z[2] - y[2] * z[1], y[2] * z[0] - y[0] * z[2], y[0] * z[1] - y[1] * z[0]},
                 x, 1e-15);
      EXPECT_NEAR(dot(z, z), 1, 1e-15);
      EXPECT_GT(z[2], 0);  // both kinds radiate forward here
    }
}

TEST(ArraysTest, AConcaveArrayIsLoudestAtItsCentreOfCurvature) {
  const Field field(convexArray(40, 0.6, -25, 0.5, 8), 2 * pi);
  std::vector<Position> points = {{0, 0, 25}};
  for (const double away : {2.0, 4.0, 6.0}) {
    points.push_back({away, 0, 25});
    points.push_back({-away, 0, 25});
  }
  EXPECT_EQ(loudest(field.at(points)), 0U);
}

TEST(ArraysTest, AnArcOfAHugeRadiusIsARow) {
  const Pistons row = linearArray(16, 1, 0.9, 5), arc = convexArray(16, 1, 1e12, 0.9, 5);
  for (std::size_t n = 0; n < row.size(); ++n) {
    expectNear(arc[n].centre, row[n].centre, 1e-9);
    for (std::size_t axis = 0; axis < 3; ++axis)
      expectNear(arc[n].axes[axis], row[n].axes[axis], 1e-10);
  }
}

TEST(ArraysTest, AWholeCircleFitsButForRounding) {
  for (std::size_t count = 3; count < 60; ++count) {
    const auto radius = static_cast<float>(static_cast<double>(count) / (2 * pi));
    EXPECT_EQ(convexArray(count, 1, radius, 1, 1).size(), count);
  }
}

// Windows.

const std::vector<std::string> names = {"rectangular", "hann", "hamming", "tukey", "gauss"};

/// The windows by formulas of their own, at x = 0 ... 1 across the aperture.
double windowAt(const std::string& name, double x, double parameter) {
  const double raisedSine = std::pow(std::sin(pi * x), 2), u = 2 * x - 1;
  if (name == "hann") return raisedSine;
  if (name == "hamming") return 0.08 + 0.92 * raisedSine;
  if (name == "gauss") return std::exp(-parameter * parameter * u * u / 2);
  if (name == "tukey") {
    const double fromEdge = std::min(x, 1 - x);
    return fromEdge < parameter / 2 ? (1 - std::cos(2 * pi * fromEdge / parameter)) / 2 : 1;
  }
  return 1;
}

TEST(ArraysTest, WindowsAreSampledAtTheMiddlesOfEqualPartsOfTheAperture) {
  for (const std::string& name : names)
    for (const std::size_t count : {1u, 2u, 9u, 128u}) {
      const std::vector<double> weights = apodization(name, {count});
      ASSERT_EQ(weights.size(), count);
      for (std::size_t n = 0; n < count; ++n) {
        const double x = (static_cast<double>(n) + 0.5) / static_cast<double>(count);
        EXPECT_NEAR(weights[n], windowAt(name, x, name == "gauss" ? 2.5 : 0.5), 2e-15)
            << name << " " << n << " of " << count;
        EXPECT_EQ(weights[n], weights[count - 1 - n]);
        EXPECT_GT(weights[n], 0);
        EXPECT_LE(weights[n], 1);
      }
      if (count % 2 == 1) {
        EXPECT_EQ(weights[count / 2], 1);
      }
    }
}

TEST(ArraysTest, ParametersShapeTheirWindows) {
  for (const double parameter : {0.0, 0.2, 0.7, 1.0}) {
    const std::vector<double> tukey = apodization("tukey", {64}, parameter),
                              gauss = apodization("gauss", {64}, 10 * parameter);
    for (std::size_t n = 0; n < 64; ++n) {
      const double x = (static_cast<double>(n) + 0.5) / 64;
      EXPECT_NEAR(tukey[n], windowAt("tukey", x, parameter), 2e-15);
      const double expected = windowAt("gauss", x, 10 * parameter);  // down to exp(−48)
      EXPECT_NEAR(gauss[n], expected, 1e-14 * expected);
    }
  }
}

TEST(ArraysTest, TheWeightsOfAMatrixAreProductsInTheOrderOfItsElements) {
  for (const std::string& name : names) {
    const std::vector<double> weights = apodization(name, {5, 8}), alongX = apodization(name, {5}),
                              alongY = apodization(name, {8});
    ASSERT_EQ(weights.size(), 40U);
    for (std::size_t n = 0; n < 40; ++n) EXPECT_EQ(weights[n], alongX[n % 5] * alongY[n / 5]);
    EXPECT_EQ(apodization(name, {5, 1}), alongX);
  }
}

TEST(ArraysTest, NamesOfWindowsMayBeInUpperCase) {
  EXPECT_EQ(apodization("Hann", {7}), apodization("hann", {7}));
  EXPECT_EQ(apodization("GAUSS", {7}, 3), apodization("gauss", {7}, 3));
}

// Weights of pistons.

TEST(ArraysTest, WeightsAreMultiplied) {
  Pistons array = linearArray(3, 1, 0.5, 2);
  array[1].weight = {2, 1};
  const Pistons result = weighted(array, {0.5, 3, -1});
  EXPECT_EQ(result[0].weight, 0.5);
  EXPECT_EQ(result[1].weight, std::complex<double>(6, 3));
  EXPECT_EQ(result[2].weight, -1.0);
  EXPECT_EQ(result[2].centre, array[2].centre);
  EXPECT_EQ(result[2].width, array[2].width);
}

TEST(ArraysTest, WavesFromAllCentresArriveAtTheFocusInPhase) {
  const double k = 7;
  Pistons array = convexArray(31, 0.8, 30, 0.5, 2);
  array[0].weight = 2;
  for (const Position& focus : {Position{5, 1, 40}, Position{0, 0, 3}, Position{-90, 20, 10},
                                Position{0, 0, 0}, array[3].centre}) {
    const Pistons aimed = focused(array, focus, k);
    EXPECT_EQ(aimed[15].weight, 1.0);  // at the origin
    const std::complex<double> fromOrigin = std::polar(1.0, -k * distance(focus, {0, 0, 0}));
    for (std::size_t m = 0; m < array.size(); ++m) {
      const std::complex<double> arriving =
          aimed[m].weight * std::polar(1.0, -k * distance(focus, aimed[m].centre));
      EXPECT_LT(std::abs(arriving - array[m].weight * fromOrigin), 1e-12);
      EXPECT_EQ(aimed[m].axes, array[m].axes);
    }
  }
}

TEST(ArraysTest, AtTheFocusTheFieldIsNearlyTheSumOfMagnitudes) {
  const Position focus = {10, 0, 30};
  const Pistons array = focused(linearArray(32, 0.5, 0.25, 0.25), focus, 2 * pi);
  double sum = 0;
  for (const Field::Piston& element : array)
    sum += std::abs(Field({element}, 2 * pi).at({focus})[0]);
  const double together = std::abs(Field(array, 2 * pi).at({focus})[0]);
  EXPECT_GT(together, 0.9999 * sum);
  const double straight =
      std::abs(Field(linearArray(32, 0.5, 0.25, 0.25), 2 * pi).at({focus, {0, 0, 30}})[0]);
  EXPECT_LT(straight, 0.3 * sum);
}

TEST(ArraysTest, AFocusFarAwayIsADirection) {
  const Pistons array = convexArray(31, 0.8, 30, 0.5, 2);
  for (const double far : {1e9, 1e15, 1e100}) {
    const Pistons atFocus = focused(array, {far, far / 2, 2 * far}, 7),
                  steeredThere = steered(array, {1, 0.5, 2}, 7);
    for (std::size_t m = 0; m < array.size(); ++m)
      EXPECT_LT(std::abs(atFocus[m].weight - steeredThere[m].weight), 7 * 15. * 15 / far + 1e-13);
  }
}

TEST(ArraysTest, AFarFieldIsLargestInTheDirectionOfSteering) {
  std::vector<double> degrees;
  for (int n = -120; n <= 120; ++n) degrees.push_back(n * 0.5);
  for (const double angle : {-30.0, 0.0, 25.0}) {
    const Position direction = circle(3, {angle})[0];
    const Field field(steered(linearArray(32, 0.5, 0.1, 0.1), direction, 2 * pi), 2 * pi);
    const std::size_t best = loudest(field.at(circle(1e5, degrees)));
    EXPECT_NEAR(degrees[best], angle, 0.5);
  }
}

TEST(ArraysTest, ASteeredArraySendsAPlaneWave) {
  const Position d = {0.48, 0.6, 0.64};
  const Pistons array = matrixArray({5, 4}, {0.7, 0.9}, 0.5, 0.5);
  const Pistons aimed = steered(array, d, 7);
  for (std::size_t m = 0; m < array.size(); ++m)
    EXPECT_LT(std::abs(aimed[m].weight - std::polar(1.0, -7 * dot(array[m].centre, d))), 1e-14);
  for (const double scale : {1e-320, 1e-200, 5.0, 1.5e308}) {
    const Pistons same = steered(array, {0, scale, scale}, 7);
    const Pistons unscaled = steered(array, {0, 1, 1}, 7);
    for (std::size_t m = 0; m < array.size(); ++m)
      EXPECT_LT(std::abs(same[m].weight - unscaled[m].weight), 1e-14);
  }
}

// Errors.

TEST(ArraysTest, ErrorsNameTheArgument) {
  using Strings = std::vector<std::string>;
  const auto row = [](std::size_t count, double pitch, double width, double height) {
    return errorOf([=] { linearArray(count, pitch, width, height); });
  };
  const auto matrix = [](std::size_t nx, std::size_t ny, double px, double py, double width,
                         double height) {
    return errorOf([=] { matrixArray({nx, ny}, {px, py}, width, height); });
  };
  const auto arc = [](std::size_t count, double pitch, double radius, double width, double height) {
    return errorOf([=] { convexArray(count, pitch, radius, width, height); });
  };
  const std::string count = "count must be an integer from 1 to 1e6.",
                    counts =
                        "counts must be two integers from 1, along x and along y, with a product "
                        "of at most 1e6.",
                    overlap =
                        " must be at most the pitch in its direction: elements must not overlap.",
                    circumference =
                        "radius must be at least count * pitch / (2 pi) in magnitude: the elements "
                        "must fit on the circle.",
                    finite = " must be a finite real number.", positive = " must be positive.";
  EXPECT_EQ((Strings{row(0, 1, 1, 1), row(1'000'001, 1, 1, 1), arc(0, 1, 9, 1, 1),
                     row(std::numeric_limits<std::size_t>::max(), 1, 1, 1)}),
            (Strings{count, count, count, count}));
  EXPECT_EQ(
      (Strings{row(4, nan, 1, 1), row(4, 0, 1, 1), arc(4, infinity, 9, 1, 1), arc(4, -1, 9, 1, 1)}),
      (Strings{"pitch" + finite, "pitch" + positive, "pitch" + finite, "pitch" + positive}));
  EXPECT_EQ((Strings{row(4, 1, infinity, 1), row(4, 1, 0, 1), row(4, 1, 1.00001, 1),
                     arc(4, 1, 9, nan, 1), arc(4, 1, 9, 1.00001, 1), matrix(4, 4, 1, 2, 1.1, 1)}),
            (Strings{"width" + finite, "width" + positive, "width" + overlap, "width" + finite,
                     "width" + overlap, "width" + overlap}));
  EXPECT_EQ((Strings{row(4, 1, 1, nan), row(4, 1, 1, -1), matrix(4, 4, 2, 1, 1, 1.1)}),
            (Strings{"height" + finite, "height" + positive, "height" + overlap}));
  EXPECT_EQ(
      (Strings{matrix(0, 1, 1, 1, 1, 1), matrix(1, 0, 1, 1, 1, 1), matrix(1001, 1000, 1, 1, 1, 1),
               matrix(std::size_t{1} << 32, std::size_t{1} << 32, 1, 1, 1, 1)}),
      (Strings{counts, counts, counts, counts}));
  EXPECT_EQ((Strings{matrix(2, 2, nan, 1, 1, 1), matrix(2, 2, 1, 0, 1, 1)}),
            (Strings{"pitches" + finite, "pitches" + positive}));
  EXPECT_EQ((Strings{arc(4, 1, nan, 1, 1), arc(4, 1, 0, 1, 1), arc(63, 1, 10, 1, 1),
                     arc(63, 1, -10, 1, 1), arc(62, 1, 10, 1, 1)}),
            (Strings{"radius" + finite, circumference, circumference, circumference, ""}));
  EXPECT_EQ(row(1'000'000, 1, 1, 1), "");
}

TEST(ArraysTest, ErrorsOfWindowsNameTheArgument) {
  const auto window = [](const std::string& name, const std::vector<std::size_t>& counts,
                         std::optional<double> parameter = std::nullopt) {
    return errorOf([&] { apodization(name, counts, parameter); });
  };
  for (const char* const name : {"", "square", "hann ", "han"})
    EXPECT_EQ(window(name, {4}),
              "name must be 'rectangular', 'hann', 'hamming', 'tukey' or 'gauss'.");
  for (const std::vector<std::size_t>& counts :
       std::vector<std::vector<std::size_t>>{{}, {0}, {4, 0}, {2, 2, 2}, {1'000'001}, {1001, 1000}})
    EXPECT_EQ(window("hann", counts),
              "counts must be one integer from 1, or two, along x and along y, with a product of "
              "at most 1e6.");
  EXPECT_EQ(window("hann", {1'000'000}), "");
  for (const char* const name : {"rectangular", "hann", "hamming"})
    EXPECT_EQ(window(name, {4}, 0.5),
              "parameter must be omitted: only 'tukey' and 'gauss' have one.");
  EXPECT_EQ(window("tukey", {4}, 1.1), "parameter must be from 0 to 1.");
  EXPECT_EQ(window("tukey", {4}, -0.1), "parameter must be from 0 to 1.");
  EXPECT_EQ(window("gauss", {4}, 10.1), "parameter must be from 0 to 10.");
  EXPECT_EQ(window("gauss", {4}, nan), "parameter must be a finite real number.");
}

TEST(ArraysTest, ErrorsOfWeightsNameTheArgument) {
  const Pistons array = linearArray(3, 1, 0.5, 2);
  EXPECT_EQ(errorOf([&] {
              weighted(array, {1, 2});
            }),
            "weights must be one number for each piston.");
  EXPECT_EQ(errorOf([&] { steered(array, {0, 0, 0}, 1); }), "direction must be a nonzero vector.");
  EXPECT_EQ(errorOf([&] {
              steered(array, {0, nan, 1}, 1);
            }),
            "direction must be three finite real numbers.");
  EXPECT_EQ(errorOf([&] {
              focused(array, {0, 0, infinity}, 1);
            }),
            "focus must be three finite real numbers.");
  EXPECT_EQ(errorOf([&] { focused(array, {0, 0, 1}, nan); }), "k must be a finite number.");
  EXPECT_EQ(errorOf([&] { steered(array, {0, 0, 1}, infinity); }), "k must be a finite number.");
}

}  // namespace
